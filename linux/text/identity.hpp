// The names and identifiers of units, paths and volumes, from the texts of sysfs and udev.
//
// Thread safety: all functions are pure and may be called on any thread.
#pragma once

#include "linux/text/words.hpp"

namespace tavrenix::sys {

// Maps of whole logical units have a uuid with this prefix; maps of their partitions have another.
inline constexpr std::string_view kMultipathUuidPrefix = "mpath-";
inline bool isMultipathUuid(std::string_view uuid) {
  return uuid.starts_with(kMultipathUuidPrefix) && uuid.size() > kMultipathUuidPrefix.size();
}

// Returns the bytes of the designator that a map's uuid names: those of an NAA or EUI-64
// designator, whose hexadecimal digits follow a "3" or a "2"; the text of a SCSI name string ("8")
// or of a T10 vendor designator ("1"); and, for any other uuid, the text that follows the prefix.
// An identifier has at most 127 bytes. A longer designator is cut at 119 bytes, and 8 bytes of a
// hash of all of it follow, so that it stays unique. Returns std::nullopt if the uuid names no
// multipath map.
std::optional<std::vector<std::uint8_t>> designatorOf(std::string_view uuid);

// Host, channel, target and logical unit numbers, as the kernel writes them: "3:0:1:5".
struct ScsiAddress {
  std::uint32_t host = 0;
  std::uint32_t channel = 0;
  std::uint32_t target = 0;
  std::uint64_t lun = 0;
  bool operator==(const ScsiAddress&) const = default;
};

// The transport of a disk's host, as far as the names of the folders above the disk show it.
enum class Transport { kUnknown, kFibreChannel, kSas, kIscsi };

// Where a disk is in the machine.
struct Place {
  std::string name;    // "sdc"; safe in a path
  std::string device;  // the real folder of the SCSI device, or of another device that has the disk
  std::optional<ScsiAddress> address;
  Transport transport = Transport::kUnknown;
  bool partition = false;  // a partition, which has the device and the address of its disk
};

// Reads the target of a link as in /sys/dev/block/8:32, for example
//   ../../devices/pci0000:00/0000:00:05.0/host3/rport-3:0-1/target3:0:1/3:0:1:5/block/sdc
// Returns std::nullopt if it does not end in the name of a device.
std::optional<Place> parsePlace(std::string_view link);

// Returns the bytes that name a path in reports, at most 15, unique within its unit. Read as
// hexadecimal digits they are host, channel, target and logical unit number in decimal with an F
// between them: 3:0:1:5 gives 003F00F0001F0005. A disk without a SCSI address gives E, major, F,
// minor: E0008F0032. So does a partition, because partitions of one disk share its address.
std::vector<std::uint8_t> pathIdentifier(const Place& place, DeviceNumber device);

// The names that a logical unit reports of itself, printable and without padding.
struct Identity {
  std::string vendor;
  std::string product;
  std::uint8_t type = 0;  // peripheral device type; 0 is a disk
};

// Reads standard INQUIRY data (SPC). Returns std::nullopt if they end before the product's name.
std::optional<Identity> parseInquiry(std::string_view data);

// Reads a record of /run/udev/data. Returns the label of the file system on the device, printable,
// or std::nullopt if it holds none. Prefers the escaped form: it keeps blanks, which the other form
// replaces by underscores, and some rules write that form alone.
std::optional<std::string> fileSystemLabel(std::string_view record);

}  // namespace tavrenix::sys
