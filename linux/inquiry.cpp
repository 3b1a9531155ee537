#include "linux/inquiry.hpp"

#include "linux/text.hpp"

namespace tavrenix::sys {

std::optional<Identity> parseInquiry(std::string_view data) {
  if (data.size() < 32) return std::nullopt;
  return Identity{printable(trim(data.substr(8, 8))), printable(trim(data.substr(16, 16))),
                  static_cast<std::uint8_t>(static_cast<unsigned char>(data[0]) & 0x1F)};
}

}  // namespace tavrenix::sys
