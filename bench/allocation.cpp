#include "bench/allocation.hpp"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// The allocator keeps a size word beside each block.
constexpr std::int64_t kOverhead = sizeof(std::size_t);
std::atomic<std::int64_t> allocated{0};

}  // namespace

std::int64_t tavrenix::bench::allocatedBytes() noexcept {
  return allocated.load();
}

void* operator new(std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  allocated.fetch_add(static_cast<std::int64_t>(malloc_usable_size(memory)) + kOverhead,
                      std::memory_order_relaxed);
  return memory;
}

void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  allocated.fetch_sub(static_cast<std::int64_t>(malloc_usable_size(memory)) + kOverhead,
                      std::memory_order_relaxed);
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
