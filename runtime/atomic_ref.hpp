// A reference that one thread may replace while others read it. A reader gets the old object or the
// new one, retained in either case.
#pragma once

#include <cstdint>
#include <thread>

#include "runtime/object.hpp"

namespace ob {

template <class T>
class AtomicRef {
 public:
  AtomicRef() noexcept = default;
  AtomicRef(const AtomicRef&) = delete;
  AtomicRef& operator=(const AtomicRef&) = delete;
  ~AtomicRef() { store(nullptr); }

  // Returns a new reference to the current object, or none.
  Ref<T> load() const noexcept {
    const std::uintptr_t held = lock();
    Ref<T> ref = Ref<T>::retain(pointer(held));
    word_.store(held, std::memory_order_release);
    return ref;
  }

  void store(Ref<T> object) noexcept {
    const std::uintptr_t old = lock();
    word_.store(reinterpret_cast<std::uintptr_t>(object.detach()), std::memory_order_release);
    Ref<T>::adopt(pointer(old));  // releases the old object, outside the lock
  }

 private:
  // Bit 0 of the pointer is the lock. It is free because objects are aligned, and no thread holds
  // the lock for more than a few instructions.
  static constexpr std::uintptr_t kLocked = 1;

  static T* pointer(std::uintptr_t word) noexcept {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the word is the pointer
    return reinterpret_cast<T*>(word);
  }

  std::uintptr_t lock() const noexcept {
    std::uintptr_t word = word_.fetch_or(kLocked, std::memory_order_acquire);
    while ((word & kLocked) != 0) {
      std::this_thread::yield();
      word = word_.fetch_or(kLocked, std::memory_order_acquire);
    }
    return word;
  }

  mutable std::atomic<std::uintptr_t> word_{0};
};

}  // namespace ob
