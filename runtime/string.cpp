#include "runtime/string.hpp"

#include <algorithm>
#include <cstring>

namespace ob {

Ref<String> String::makeASCII(std::string_view text) {
  void* memory = String::operator new(sizeof(String), text.size() + 1);
  char* chars = static_cast<char*>(memory) + sizeof(String);
  std::copy(text.begin(), text.end(), chars);
  chars[text.size()] = '\0';
  return Ref<String>::adopt(::new (memory) String(chars, text.size()));
}

Ref<String> String::make(std::string_view text) {
  if (!isUTF8(text)) return nullptr;
  return makeASCII(text);
}

bool String::equals(const Object& other) const noexcept {
  return other.typeID() == kStringType && view() == static_cast<const String&>(other).view();
}

namespace {

// Length of the sequence that lead begins, and the range of its second byte: table 3-7 of Unicode.
struct Lead {
  int length;
  unsigned char secondLow, secondHigh;
};

Lead classify(unsigned char lead) {
  if (lead < 0x80) return {1, 0, 0};
  if (lead >= 0xC2 && lead <= 0xDF) return {2, 0x80, 0xBF};
  if (lead == 0xE0) return {3, 0xA0, 0xBF};
  if (lead == 0xED) return {3, 0x80, 0x9F};
  if (lead >= 0xE1 && lead <= 0xEF) return {3, 0x80, 0xBF};
  if (lead == 0xF0) return {4, 0x90, 0xBF};
  if (lead >= 0xF1 && lead <= 0xF3) return {4, 0x80, 0xBF};
  if (lead == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

}  // namespace

bool isUTF8(std::string_view bytes) noexcept {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const Lead lead = classify(static_cast<unsigned char>(bytes[at]));
    const auto length = static_cast<std::size_t>(lead.length);
    if (length == 0 || bytes.size() - at < length) return false;
    for (std::size_t i = 1; i < length; ++i) {
      const auto byte = static_cast<unsigned char>(bytes[at + i]);
      const unsigned char low = i == 1 ? lead.secondLow : 0x80;
      const unsigned char high = i == 1 ? lead.secondHigh : 0xBF;
      if (byte < low || byte > high) return false;
    }
    at += length;
  }
  return true;
}

}  // namespace ob
