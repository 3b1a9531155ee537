// Taking paths out of use and back into use.
#pragma once

#include <string>
#include <vector>

#include "linux/machine.hpp"
#include "linux/path_daemon.hpp"

namespace tavrenix::sys {

struct PathChange {
  DeviceNumber device;
  std::string name;  // the kernel's
  bool use = false;
};

// Asks the daemon where it runs and knows the path, since it would undo what is done behind its
// back; the driver elsewhere. All changes are tried; 0 once the driver shows every one of them,
// otherwise the negative error number of the first that failed: -EBUSY for a suspended map,
// -ETIMEDOUT where the daemon does not answer, -EIO where the driver shows another state than was
// asked for, or the driver's own.
int switchPaths(DeviceMapperPort& port, PathDaemon& daemon, DeviceNumber map,
                const std::vector<PathChange>& changes);

}  // namespace tavrenix::sys
