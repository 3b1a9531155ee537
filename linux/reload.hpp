// Changing the path selector of a map: a new table in the place of the old one, while requests go
// on.
#pragma once

#include "linux/device_mapper.hpp"
#include "linux/multipath_table.hpp"
#include "linux/selectors.hpp"

namespace tavrenix::sys {

// The table with that selector in every group; all else as before. repeat is the number of requests
// in a row of each path. A throughput that paths were given stays with them where the selector
// takes one.
MultipathTable withSelector(MultipathTable table, const Selector& selector, std::uint64_t repeat);

// Puts the map under that selector and repeat count. 0 once the driver shows it in the table in
// force, with features, handler, groups and failed paths as they were. Otherwise the old table is
// in force, and the result is a negative error number: -EBUSY for a suspended map, -EOPNOTSUPP
// where the kernel does not take the repeat count, -EINVAL where the map has no multipath table
// that can be read, or the driver's own.
int reload(DeviceMapperPort& port, DeviceNumber map, const Selector& selector,
           std::uint64_t repeat);

}  // namespace tavrenix::sys
