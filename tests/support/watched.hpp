// The fault injector: a host in memory that counts the operations on it and fails those that a test
// chooses.
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "host/memory/memory_host.hpp"

namespace tavrenix::test {

// Thread safety: every function may be called on any thread. A test sets the std::function members
// before it uses the host.
class Watch {
 public:
  // Fails the operation at that position, counted from 0 over all operations that can fail.
  void failAt(std::size_t position) { failAt_ = position; }
  // Fails nothing, and counts from 0 again.
  void reset() {
    failAt_ = kNone;
    position_ = 0;
  }
  // Returns the number of operations that could have failed.
  std::size_t failable() const { return position_; }
  bool fails() {
    if (position_++ == failAt_) return throws ? throw std::bad_alloc() : true;
    return alsoFails && alsoFails();
  }

  bool throws = false;  // the operation at that position throws, as if it found no memory

  // If set, answers the tunable in place of the driver. The arguments are the room for the answer
  // and its size, and the request and its size.
  std::function<int(void*, std::size_t*, const void*, std::size_t)> answerTunable;
  // If set, decides whether an operation fails that does not fail anyway. May throw std::bad_alloc.
  std::function<bool()> alsoFails;
  // Called after each release, which cannot fail.
  std::function<void()> onRelease;

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::atomic<std::size_t> position_ = 0;
  std::atomic<std::size_t> failAt_ = kNone;
};

// Calls `attempt` while its first operation fails, then while its second fails and so on, until
// none fails. After each attempt, calls `check`, with no operation failing. Returns the number of
// operations that can fail.
template <class Attempt, class Check>
std::size_t failEveryOperation(Watch& watch, Attempt attempt, Check check) {
  for (std::size_t site = 0;; ++site) {
    SCOPED_TRACE(site);
    watch.reset();
    watch.failAt(site);
    testing::internal::CaptureStderr();
    attempt();
    testing::internal::GetCapturedStderr();
    const bool failed = watch.failable() > site;
    watch.reset();
    check();
    if (!failed) return site;
  }
}

class WatchedHost final : public MPIOHost, MPIOKernelTunable, MPIODiskDescriptions {
 public:
  WatchedHost();
  MPIODeviceRegistry& registry() override { return memory.registry(); }
  MPIOKernelTunable& tunable() override { return *this; }
  MPIODiskDescriptions& disks() override { return *this; }
  std::uint32_t effectiveUser() override { return memory.effectiveUser(); }

  Watch watch;
  memory::MemoryHost memory;

 private:
  int sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength, const void* newValue,
                   std::size_t newLength) override;
  std::optional<DiskDescription> describe(RegistryHandle media) override;
};

}  // namespace tavrenix::test
