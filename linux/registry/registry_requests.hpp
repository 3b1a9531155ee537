// Requests that clients write to the property "Properties" of a logical unit.
#pragma once

#include "linux/kernel/path_daemon.hpp"
#include "linux/topology/machine.hpp"
#include "runtime/collections.hpp"

namespace tavrenix::sys {

class Requests {
 public:
  // Ownership: both are borrowed and outlive this object.
  Requests(Machine& machine, PathDaemon& daemon) : machine_(machine), daemon_(daemon) {}

  // Carries out a request for another algorithm or for other states of paths. Returns 0 once the
  // driver shows what was asked for.
  // Requests of all callers on this machine are carried out one after the other. The daemon
  // switches paths if it runs and knows the path, since it would undo what is done without it; the
  // driver switches them otherwise. If one path fails, the others are tried all the same, and the
  // first error is returned.
  // Thread safety: any thread.
  // Errors: -EINVAL if it is no such request; -ENXIO if the unit is gone; -ENOENT if the unit has
  // no such path; -EBUSY if the map is suspended or another caller's change takes too long;
  // -ETIMEDOUT if the daemon does not answer; -EIO if the driver shows another state than was asked
  // for; those of clearLeftTable() and reload(); or the driver's own.
  KernelStatus carryOut(EntryID unit, const ob::Dictionary& request);

 private:
  struct PathChange {
    DeviceNumber device;
    std::string name;  // the kernel's
    bool use = false;
  };

  int setAlgorithm(const Unit& unit, const ob::Dictionary& request);
  int setPathStates(const Unit& unit, const ob::Dictionary& states);
  Answer<PathChange> readPathChange(const Unit& unit, std::string_view identifier,
                                    const ob::Object& state);
  int switchPath(DeviceNumber map, const PathChange& change);
  int checkPaths(DeviceNumber map, const std::vector<PathChange>& changes);

  Machine& machine_;
  PathDaemon& daemon_;
};

}  // namespace tavrenix::sys
