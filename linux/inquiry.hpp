// Standard INQUIRY data, described in SPC: what a logical unit calls itself.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavrenix::sys {

// Printable, without padding.
struct Identity {
  std::string vendor;
  std::string product;
  std::uint8_t type = 0;  // peripheral device type; 0 is a disk
};

// Nothing where the data end before the product's name does.
std::optional<Identity> parseInquiry(std::string_view data);

}  // namespace tavrenix::sys
