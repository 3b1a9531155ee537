// Where a disk stands in the machine, from the link that sysfs has for its device number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrenix::sys {

// Host, channel, target and logical unit numbers, as the kernel writes them: "3:0:1:5".
struct ScsiAddress {
  std::uint32_t host = 0;
  std::uint32_t channel = 0;
  std::uint32_t target = 0;
  std::uint64_t lun = 0;
  bool operator==(const ScsiAddress&) const = default;
};

// How the disk's host is reached, as far as the names of the folders on the way tell.
enum class Transport { kUnknown, kFibreChannel, kSas, kIscsi };

struct Place {
  std::string name;    // "sdc"; safe in a path
  std::string device;  // folder of what the disk is a disk of, the SCSI device; no links lead there
  std::optional<ScsiAddress> address;
  Transport transport = Transport::kUnknown;
};

// link as in /sys/dev/block/8:32, for example
//   ../../devices/pci0000:00/0000:00:05.0/host3/rport-3:0-1/target3:0:1/3:0:1:5/block/sdc
// Nothing where it does not end in the name of a device.
std::optional<Place> parsePlace(std::string_view link);

// The bytes that name a path in reports, at most 15, unique within its unit. Read as hexadecimal
// digits they are host, channel, target and logical unit number in decimal with an F between them:
// 3:0:1:5 gives 003F00F0001F0005. A disk without a SCSI address gives E, major, F, minor:
// E0008F0032.
std::vector<std::uint8_t> pathIdentifier(const std::optional<ScsiAddress>& address,
                                         std::uint32_t major, std::uint32_t minor);

}  // namespace tavrenix::sys
