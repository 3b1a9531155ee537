#include "tests/library/failing_new.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kNever = static_cast<std::size_t>(-1);
thread_local std::size_t remaining = kNever;
constinit std::atomic<std::size_t> live{0};

}  // namespace

namespace tavrenix::test {

void failAllocationAfter(std::size_t successes) noexcept {
  remaining = successes;
}

bool allocationFailed() noexcept {
  const bool failed = remaining == kNever;
  remaining = kNever;
  return failed;
}

std::size_t liveAllocations() noexcept {
  return live.load(std::memory_order_relaxed);
}

}  // namespace tavrenix::test

void* operator new(std::size_t size) {
  if (remaining != kNever && remaining-- == 0) throw std::bad_alloc();  // 0 becomes kNever
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  live.fetch_add(1, std::memory_order_relaxed);
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void operator delete(void* memory) noexcept {
  if (memory != nullptr) live.fetch_sub(1, std::memory_order_relaxed);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
