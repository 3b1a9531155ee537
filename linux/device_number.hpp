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

// Nothing where text is not two decimal numbers in range with a colon between.
inline std::optional<DeviceNumber> parseDeviceNumber(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto major = parseNumber(text.substr(0, colon));
  const auto minor = parseNumber(text.substr(colon + 1));
  if (!major || !minor || *major >= 1U << 12 || *minor >= 1U << 20) return std::nullopt;
  return DeviceNumber{static_cast<std::uint32_t>(*major), static_cast<std::uint32_t>(*minor)};
}

}  // namespace tavrenix::sys
