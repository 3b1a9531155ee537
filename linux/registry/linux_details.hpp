// What a Linux machine knows of its units and paths beyond the registry.
//
// States and counters are read at each call, since no event announces them.
#pragma once

#include "host/storage_details.hpp"
#include "linux/topology/machine.hpp"

namespace tavrenix::sys {

class LinuxDetails final : public MPIODetails {
 public:
  // machine: borrowed and outlives this object, and not read if the caller is not root.
  LinuxDetails(Machine& machine, bool isRoot) : machine_(machine), isRoot_(isRoot) {}

  ob::Ref<const ob::Dictionary> ofLogicalUnit(EntryID unit) override;
  ob::Ref<const ob::Dictionary> ofPath(EntryID unit, EntryID path) override;
  ob::Ref<const ob::Dictionary> ofHost() override;

 private:
  // Returns true if the caller may ask the driver.
  bool mayAsk();

  Machine& machine_;
  bool isRoot_;
};

}  // namespace tavrenix::sys
