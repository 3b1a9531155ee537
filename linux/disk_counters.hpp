// The counters of all block devices at one moment: /proc/diskstats, described in the kernel's
// Documentation/admin-guide/iostats.rst. One table takes a fifth of the time that a file for each
// device takes.
#pragma once

#include <string>

#include "linux/device_number.hpp"
#include "runtime/ordered_map.hpp"

namespace tavrenix::sys {

class DiskCounters {
 public:
  DiskCounters() = default;
  // Lines that do not begin as a device's line does are passed over.
  explicit DiskCounters(std::string text);

  // The device's counters as its own file "stat" has them; once, so that who asks again is not told
  // again. Nothing the second time, and where there are none.
  std::optional<std::string> take(DeviceNumber device);
  // Whether the device has been taken.
  bool taken(DeviceNumber device) const;

 private:
  std::string text_;
  struct Line {
    std::size_t begin = 0;
    std::size_t length = 0;
    bool taken = false;
  };
  ob::NumberMap<Line> lines_;
};

}  // namespace tavrenix::sys
