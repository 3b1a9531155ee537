// The driver's tunable on Linux: its records are made from the kernel's counters and states.
#pragma once

#include "host/tunable.hpp"
#include "linux/registry/linux_backing.hpp"

namespace tavrenix::sys {

// States and counters are read at the call or, within a look, once in the look.
class LinuxTunable final : public StatisticsTunable {
 public:
  // permitted: the caller may ask the driver. If not, the generation is 0 and the machine is not
  // read.
  LinuxTunable(Machine& machine, LinuxBacking& backing, bool permitted)
      : machine_(machine), backing_(backing), permitted_(permitted) {}

 private:
  std::uint32_t generation() override { return permitted_ ? backing_.generation() : 0; }
  std::optional<SCSILogicalUnitStatistics> unitRecord(EntryID unit) override;
  std::optional<SCSIPathStatistics> pathRecord(EntryID unit, EntryID path) override;

  Machine& machine_;
  LinuxBacking& backing_;
  bool permitted_;
};

}  // namespace tavrenix::sys
