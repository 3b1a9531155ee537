// Requests written under "Properties" of a logical unit: checked here, carried out by reload() and
// switchPaths().
#pragma once

#include <mutex>

#include "linux/machine.hpp"
#include "linux/path_switch.hpp"
#include "runtime/collections.hpp"

namespace tavrenix::sys {

class Requests {
 public:
  // Both are borrowed and outlive it.
  Requests(Machine& machine, PathDaemon& daemon) : machine_(machine), daemon_(daemon) {}

  // 0 or a negative error number: -EINVAL for a request that is none, -ENOENT for a path that the
  // unit does not have, -ENXIO for a unit that is gone; others as reload() and switchPaths() say.
  // One request is carried out at a time, whichever threads they come from.
  KernelStatus carryOut(EntryID unit, const ob::Dictionary& request);

 private:
  int setAlgorithm(const Unit& unit, const ob::Dictionary& request);
  int setPathStates(const Unit& unit, const ob::Dictionary& states);

  Machine& machine_;
  PathDaemon& daemon_;
  std::mutex oneAtATime_;
};

}  // namespace tavrenix::sys
