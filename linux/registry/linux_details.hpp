// What a Linux machine knows of its units and paths beyond the registry.
//
// States and counters are read at each call, since no event announces them.
#pragma once

#include "host/storage_details.hpp"
#include "linux/topology/machine.hpp"

namespace tavrenix::sys {

class LinuxDetails final : public MPIODetails {
 public:
  // machine: borrowed and outlives this object. permitted: the caller may ask the driver.
  LinuxDetails(Machine& machine, bool permitted) : machine_(machine), permitted_(permitted) {}

  ob::Ref<const ob::Dictionary> ofLogicalUnit(EntryID unit) override;
  ob::Ref<const ob::Dictionary> ofPath(EntryID unit, EntryID path) override;
  ob::Ref<const ob::Dictionary> ofHost() override;

 private:
  Machine& machine_;
  bool permitted_;
};

}  // namespace tavrenix::sys
