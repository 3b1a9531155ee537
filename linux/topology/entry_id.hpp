// Entry IDs. An ID holds the kind of the entry, the number that the kernel gave it, and a sequence
// that tells apart the devices that had this number one after the other.
//
//   bits 61 to 63  kind
//   bits 32 to 60  sequence: the low bits of the inode number of the link in sysfs that leads from
//                  the number to the device. The kernel counts these up for as long as it runs, by
//                  some hundred per disk, so one comes again after millions of devices at the
//                  earliest, and then under another number.
//   bits  0 to 31  number: of a block device (12 bits major, 20 bits minor) or of a SCSI host
//
// So an ID leads to a folder without a search, and the link's inode number shows whether the device
// there is still the same. Kernels before 5.5 may use an inode number again. Only there can a
// look-up take a later device of the same number for an earlier one.
#pragma once

#include <optional>
#include <string>

#include "host/registry.hpp"
#include "linux/text/words.hpp"

namespace tavrenix::sys {

enum class Kind : std::uint8_t { kNone, kUnit, kPath, kMedium, kHost };

struct EntryKey {
  Kind kind = Kind::kNone;
  std::uint32_t number = 0;

  DeviceNumber device() const { return {number >> 20, number & 0xFFFFF}; }
};

inline constexpr std::uint64_t kSequenceMask = (std::uint64_t{1} << 29) - 1;

inline EntryID makeEntryID(EntryKey name, std::uint64_t inode) {
  return (static_cast<std::uint64_t>(name.kind) << 61) | ((inode & kSequenceMask) << 32) |
         name.number;
}

// Returns kind and number of an ID; kNone if it is no ID of this kind of host.
inline EntryKey keyOf(EntryID id) {
  const auto kind = static_cast<unsigned>(id >> 61);
  if (kind > static_cast<unsigned>(Kind::kHost)) return {};
  return {static_cast<Kind>(kind), static_cast<std::uint32_t>(id)};
}

// Returns the ID of the same device as another kind of entry: a map is a unit and a medium.
inline EntryID withKind(EntryID id, Kind kind) {
  return (id & ((std::uint64_t{1} << 61) - 1)) | (static_cast<std::uint64_t>(kind) << 61);
}

inline EntryKey deviceEntry(Kind kind, DeviceNumber device) {
  return {kind, (device.major << 20) | device.minor};
}

inline EntryKey hostEntry(std::uint32_t host) {
  return {Kind::kHost, host};
}

// Returns the path of a link in sysfs to the folder of the entry. For kNone, returns a path that
// never exists.
inline std::string folderOf(EntryKey name) {
  if (name.kind == Kind::kNone) return "/sys/none";
  if (name.kind == Kind::kHost) return "/sys/class/scsi_host/host" + std::to_string(name.number);
  return "/sys/dev/block/" + name.device().text();
}

}  // namespace tavrenix::sys
