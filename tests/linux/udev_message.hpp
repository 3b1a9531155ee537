// An event as udev sends it on.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavrenix::test {

// length and offset: what the head tells of the properties, which stand behind it.
inline std::string udevMessage(std::string_view properties, std::uint32_t length,
                               std::uint32_t offset = 40) {
  std::string message("libudev\0\xfe\xed\xca\xfe", 12);
  for (const std::uint32_t number : {std::uint32_t{40}, offset, length}) {
    message.append(reinterpret_cast<const char*>(&number), sizeof number);
  }
  message.resize(40);
  return message.append(properties);
}
inline std::string udevMessage(std::string_view properties) {
  return udevMessage(properties, static_cast<std::uint32_t>(properties.size()));
}

}  // namespace tavrenix::test
