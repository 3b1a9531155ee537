#include "tests/library/failing_new.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kNever = static_cast<std::size_t>(-1);
thread_local std::size_t remaining = kNever;
std::atomic<std::size_t> live{0};

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
  return live;
}

}  // namespace tavrenix::test

void* operator new(std::size_t size) {
  if (remaining != kNever && remaining-- == 0) throw std::bad_alloc();  // 0 becomes kNever
  if (void* memory = std::malloc(size == 0 ? 1 : size)) {
    ++live;
    return memory;
  }
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void operator delete(void* memory) noexcept {
  if (memory != nullptr) --live;
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
