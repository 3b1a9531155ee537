// Forwarding wrappers over the seams of a host: they count every operation and fail the one that
// they are told to. What they wrap needs no change.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "model/memory/host.hpp"

namespace tavrenix::test {

enum class Operation : std::size_t {
  kFindServiceByEntryID,
  kFindServicesByEntryID,
  kFindServicesByClass,
  kCopyProperties,
  kCopyProperty,
  kSearchProperty,
  kSetProperty,
  kCreateIterator,
  kIteratorNext,
  kConformsTo,
  kGetEntryID,
  kCreateNotificationPort,
  kGetRunLoopSource,
  kClassMatching,
  kAddMatchingNotification,
  kRelease,  // counted, never failed
  kTunable,
  kDescribe,
  kCount,
};

inline constexpr KernelStatus kInjectedStatus = -536870212;

// Counts operations and decides which fails. Any thread.
class Watch {
 public:
  using Counts = std::array<std::size_t, static_cast<std::size_t>(Operation::kCount)>;

  // Fails the operation at that position, counted from 0 over all operations that can fail.
  void failAt(std::size_t position);
  // Fails every operation of that kind.
  void failAll(Operation operation);
  // Lets every operation of that kind run out of memory.
  void exhaustAll(Operation operation);
  // Fails nothing and starts the counts anew.
  void reset();

  bool fails(Operation operation);
  std::size_t count(Operation operation) const;
  // Registry operations, release and the neighbouring seams left out.
  std::size_t registryOperations() const;
  // All that failAt can reach.
  std::size_t failable() const;

  // Answers the tunable in place of the driver, if set: room, its size, request and its size.
  std::function<int(void*, std::size_t*, const void*, std::size_t)> answerTunable;
  // Asked for each operation that is not failed otherwise, if set: whether it fails. It may throw
  // std::bad_alloc, for one that runs out of memory. Set while nobody uses the host.
  std::function<bool(Operation)> alsoFails;
  // Called by each release, after it, if set.
  std::function<void()> onRelease;

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  mutable std::mutex mutex_;
  Counts counts_{};
  std::size_t position_ = 0;
  std::size_t failAt_ = kNone;
  Operation failAll_ = Operation::kCount;
  Operation exhaustAll_ = Operation::kCount;
};

// Another host with every seam watched.
class WatchedSeams : public MPIOHost {
 public:
  explicit WatchedSeams(MPIOHost& inner);
  Watch watch;

  MPIODeviceRegistry& registry() override { return *registry_; }
  MPIOKernelTunable& tunable() override { return *tunable_; }
  MPIODiskDescriptions& disks() override { return *disks_; }
  std::uint32_t effectiveUser() override { return inner_.effectiveUser(); }

 private:
  MPIOHost& inner_;
  std::unique_ptr<MPIODeviceRegistry> registry_;
  std::unique_ptr<MPIOKernelTunable> tunable_;
  std::unique_ptr<MPIODiskDescriptions> disks_;
};

// There before the seams are put around it.
struct HeldMemory {
  memory::MemoryHost memory;
};

// A host in memory with every seam watched.
class WatchedHost final : public HeldMemory, public WatchedSeams {
 public:
  WatchedHost() : WatchedSeams(memory) {}
};

}  // namespace tavrenix::test
