// The driver's tunable on Linux: its records are made from the kernel's counters and states.
#pragma once

#include "linux/machine.hpp"
#include "linux/notifications.hpp"
#include "model/tunable.hpp"

namespace tavrenix::sys {

// Failures are -1 with errno set, as the system call's: EINVAL for a request that is not one,
// ENOMEM for too little room, ENXIO where the entry is gone. States are read at each call,
// counters too or, where many are asked for at once, for all of them together.
class LinuxTunable final : public MPIOKernelTunable {
 public:
  // Without permission to read the driver the generation is 0, and the machine is not asked for it.
  LinuxTunable(Machine& machine, Notifications& notifications, bool permitted)
      : machine_(machine), notifications_(notifications), permitted_(permitted) {}
  int sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength, const void* newValue,
                   std::size_t newLength) override;

 private:
  std::uint32_t generation();
  std::optional<SCSILogicalUnitStatistics> unitRecord(EntryID unit);
  std::optional<SCSIPathStatistics> pathRecord(EntryID unit, EntryID path);

  Machine& machine_;
  Notifications& notifications_;
  bool permitted_;
};

}  // namespace tavrenix::sys
