// Changes of a map's table while requests go on: a new table takes the place of the old one.
#pragma once

#include "linux/kernel/device_mapper.hpp"
#include "linux/registry/selectors.hpp"

namespace tavrenix::sys {

// Both functions change the map.
// REQUIRES: the caller holds the lock of DeviceMapperPort::lockChanges().
// Thread safety: any thread.

// Clears a loaded table if a change that was killed between its load and its resume has left it.
// The next resume, by any program, would put it in force, with all failed paths back in use. Such a
// table differs from the one in force only in selectors, their arguments and kQueueFeature.
// Errors: -EALREADY if another program has loaded the table, which then stays; or the driver's own.
int clearLeftTable(DeviceMapperPort& port, DeviceNumber map);

// Changes selector and repeat count of the map. Returns 0 once the table in force has them, with
// features, handler, groups and failed paths as they were. The thread takes no signals from the
// first load to the last check. After a failure the old table is in force, unless another program
// has changed the map after the resume: its change stays.
// REQUIRES: no loaded table waits to be put in force.
// Errors: -EBUSY if the map is suspended or another program has changed it meanwhile; -EALREADY if
// another program has loaded a table meanwhile; -EOPNOTSUPP if the kernel does not take the repeat
// count; -EINVAL if the map has no readable multipath table; -ENODEV if that has no paths; -EIO if
// the driver shows another table than was loaded; or the driver's own.
int reload(DeviceMapperPort& port, DeviceNumber map, const Selector& selector,
           std::uint64_t repeat);

}  // namespace tavrenix::sys
