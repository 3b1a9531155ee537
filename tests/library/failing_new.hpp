// An operator new that counts allocations, and fails on request of the calling thread. It replaces
// the program's operator new, so exactly one source of a program includes this header.
#pragma once

#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

// With clang's thread sanitizer, which has an operator new of its own, no allocation fails.
#ifdef __has_feature
#define TAVRENIX_REPLACES_NEW !__has_feature(thread_sanitizer)
#else
#define TAVRENIX_REPLACES_NEW 1
#endif

namespace tavrenix::test {

inline constexpr bool kAllocationsCanFail = TAVRENIX_REPLACES_NEW;
inline constexpr std::size_t kAllSucceed = static_cast<std::size_t>(-1);
// The number of allocations of this thread that succeed before one fails. All others succeed.
inline thread_local std::size_t allocationsUntilFailure = kAllSucceed;
// The number of allocations, of all threads, that have not been freed.
inline constinit std::atomic<std::size_t> liveAllocations{0};

// Ends the request for a failure. Returns true if an allocation has failed.
inline bool allocationFailed() noexcept {
  return std::exchange(allocationsUntilFailure, kAllSucceed) == kAllSucceed && kAllocationsCanFail;
}

}  // namespace tavrenix::test

#if TAVRENIX_REPLACES_NEW
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  using namespace tavrenix::test;
  // At 0 the decrement makes the count kAllSucceed.
  if (allocationsUntilFailure != kAllSucceed && allocationsUntilFailure-- == 0) return nullptr;
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory != nullptr) liveAllocations.fetch_add(1, std::memory_order_relaxed);
  return memory;
}
void* operator new(std::size_t size) {
  if (void* memory = operator new(size, std::nothrow)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  if (memory != nullptr) tavrenix::test::liveAllocations.fetch_sub(1, std::memory_order_relaxed);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
#endif
