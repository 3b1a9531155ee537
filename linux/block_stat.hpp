// The counters of a block device: /sys/block/NAME/stat, described in the kernel's
// Documentation/block/stat.rst.
#pragma once

#include <optional>
#include <string_view>

#include "model/tunable.hpp"

namespace tavrenix::sys {

// Nothing where there are fewer than the 11 numbers that every kernel has. Discards (since 4.18)
// and flushes (since 5.5) count as commands where the kernel tells them; numbers of later kernels
// are passed over.
std::optional<SCSILogicalUnitStatistics> parseBlockStat(std::string_view text);

}  // namespace tavrenix::sys
