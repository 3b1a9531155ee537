// What a map's uuid says of the logical unit behind it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tavrenix::sys {

// Maps of whole logical units; maps of their partitions have a uuid that begins otherwise.
inline constexpr std::string_view kMultipathUuidPrefix = "mpath-";

inline bool isMultipathUuid(std::string_view uuid) {
  return uuid.starts_with(kMultipathUuidPrefix) && uuid.size() > kMultipathUuidPrefix.size();
}

// The bytes of the designator that the uuid names: those of an NAA or EUI-64 designator, whose
// hexadecimal digits follow a "3" or a "2"; the text of a SCSI name string ("8") or of a T10 vendor
// designator ("1"); and whatever text follows the prefix for any other uuid. Never more than 64
// bytes. Nothing where the uuid is not that of a multipath map.
std::optional<std::vector<std::uint8_t>> designatorOf(std::string_view uuid);

}  // namespace tavrenix::sys
