#include "model/identifier.hpp"

#include <array>

namespace tavrenix {

ob::Ref<const ob::String> identifierText(const ob::Data& identifier) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::array<char, 256> text;
  std::size_t length = 0;
  for (const std::uint8_t byte : identifier.bytes()) {
    if (length + 2 >= text.size()) ob::fatal("a device identifier is longer than 127 bytes");
    text[length++] = kDigits[byte >> 4];
    text[length++] = kDigits[byte & 0x0F];
  }
  return ob::String::makeASCII({text.data(), length});
}

ob::Ref<const ob::String> identifierFromProperties(const ob::Dictionary* properties,
                                                   const ob::String& key) {
  const auto* identifier = properties == nullptr ? nullptr : properties->valueAs<ob::Data>(key);
  return identifier == nullptr ? nullptr : identifierText(*identifier);
}

}  // namespace tavrenix
