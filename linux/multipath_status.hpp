// The status line of a multipath map: what the driver makes of its paths now. Grammar in the
// kernel's drivers/md/dm-mpath.c:
//   <#2> <queued ios> <handler waits>  <#handler words> word...  <#groups> <current group>
//   { <A|D|E> <#selector words> word... <#paths> <#words per path> { <major:minor> <A|F> <fails>
//   word... }... }...
#pragma once

#include <vector>

#include "linux/device_number.hpp"

namespace tavrenix::sys {

struct StatusPath {
  DeviceNumber device;
  bool used = false;  // 'A': the driver sends requests down this path when its group's turn comes
  bool operator==(const StatusPath&) const = default;
};

struct StatusGroup {
  char state = 'E';  // 'A' in use, 'E' enabled, 'D' disabled
  std::vector<StatusPath> paths;
  bool operator==(const StatusGroup&) const = default;
};

struct MultipathStatus {
  std::vector<StatusGroup> groups;
  // Nothing where the device is none of the map's paths.
  std::optional<bool> uses(DeviceNumber device) const;
};

// Nothing where the line does not follow the grammar to its last word.
std::optional<MultipathStatus> parseMultipathStatus(std::string_view line);

}  // namespace tavrenix::sys
