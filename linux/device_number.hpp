// The number of a block device, as the kernel writes it: "8:16".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "linux/text.hpp"

namespace tavrenix::sys {

struct DeviceNumber {
  std::uint32_t major = 0;  // 12 bits
  std::uint32_t minor = 0;  // 20 bits

  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the operator's own 0 for a pointer
  auto operator<=>(const DeviceNumber&) const = default;
  std::string text() const { return std::to_string(major) + ':' + std::to_string(minor); }
};

// Nothing where they are not two decimal numbers in range.
inline std::optional<DeviceNumber> deviceNumber(std::string_view major, std::string_view minor) {
  const auto first = parseNumber(major);
  const auto second = parseNumber(minor);
  if (!first || !second || *first >= 1U << 12 || *second >= 1U << 20) return std::nullopt;
  return DeviceNumber{static_cast<std::uint32_t>(*first), static_cast<std::uint32_t>(*second)};
}

// The same with a colon between them.
inline std::optional<DeviceNumber> parseDeviceNumber(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  return deviceNumber(text.substr(0, colon), text.substr(colon + 1));
}

}  // namespace tavrenix::sys
