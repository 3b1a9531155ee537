// Makes the driver's records of the kernel's texts.
//
// Thread safety: all functions are pure and may be called on any thread.
#pragma once

#include <optional>
#include <string_view>

#include "host/tunable.hpp"
#include "linux/kernel/files.hpp"

namespace tavrenix::sys {

// Reads the counters of a block device: /sys/block/NAME/stat, described in the kernel's
// Documentation/block/stat.rst. Discards (since 4.18) and flushes (since 5.5) count as commands if
// the kernel counts them. Numbers of later kernels are ignored. Returns std::nullopt if there are
// fewer than the 11 numbers that every kernel writes.
std::optional<SCSILogicalUnitStatistics> parseBlockStat(std::string_view text);

// Returns the access state as SPC numbers it in bits 0 to 3, and bit 7 if the driver does not use
// a path that it could use.
//   deviceState  the disk's file "state"; a disk without that file is usable
//   accessState  the disk's file "access_state"; a disk without it, and so without a device
//                handler, is active and optimized
//   used         the driver's view; std::nullopt if the driver does not answer
// Returns "unavailable" if any of the three exists and could not be read.
std::uint8_t pathStateByte(const FileText& deviceState, const FileText& accessState,
                           std::optional<bool> used);

}  // namespace tavrenix::sys
