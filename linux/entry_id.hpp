// Entry IDs: what an entry is, which number the kernel has given it, and which of the bearers of
// that number it is.
//
//   bits 61 to 63  kind
//   bits 32 to 60  sequence: the low bits of the inode number of the link by which sysfs leads
//                  from the number to the device. The kernel counts these up for as long as it
//                  runs, some hundred for a disk, so that one comes again after millions of
//                  devices at the earliest, and then under another number.
//   bits  0 to 31  number: of a block device (12 bits major, 20 bits minor) or of a SCSI host
//
// So an ID leads straight to its folder, and the link's inode number tells whether it is still
// that device. Kernels before 5.5 may give an inode number again: there, and only there, a look-up
// cannot tell a device from a later one of the same number that happens to have got the same inode.
#pragma once

#include <optional>

#include "linux/device_number.hpp"
#include "model/registry.hpp"

namespace tavrenix::sys {

enum class Kind : std::uint8_t { kNone, kUnit, kPath, kMedium, kHost };

struct EntryName {
  Kind kind = Kind::kNone;
  std::uint32_t number = 0;

  DeviceNumber device() const { return {number >> 20, number & 0xFFFFF}; }
};

inline constexpr std::uint64_t kSequenceMask = (std::uint64_t{1} << 29) - 1;

inline EntryID makeEntryID(EntryName name, std::uint64_t inode) {
  return (static_cast<std::uint64_t>(name.kind) << 61) | ((inode & kSequenceMask) << 32) |
         name.number;
}

inline EntryName nameOf(EntryID id) {
  const auto kind = static_cast<unsigned>(id >> 61);
  if (kind > static_cast<unsigned>(Kind::kHost)) return {};
  return {static_cast<Kind>(kind), static_cast<std::uint32_t>(id)};
}

// The ID of the same device as another kind of entry: a map is a unit and a medium.
inline EntryID withKind(EntryID id, Kind kind) {
  return (id & ((std::uint64_t{1} << 61) - 1)) | (static_cast<std::uint64_t>(kind) << 61);
}

inline EntryName deviceEntry(Kind kind, DeviceNumber device) {
  return {kind, (device.major << 20) | device.minor};
}

inline EntryName hostEntry(std::uint32_t host) {
  return {Kind::kHost, host};
}

// The folder of the entry in sysfs.
std::string folderOf(EntryName name);

}  // namespace tavrenix::sys
