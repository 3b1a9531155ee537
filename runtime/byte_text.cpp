#include "runtime/byte_text.hpp"

#include <algorithm>
#include <charconv>

namespace ob {

namespace {

// What a lead byte says of its character: the length, and the range of the second byte (table 3-7
// of the Unicode standard).
struct Lead {
  std::size_t length;  // of the whole character; 0 if the byte begins none
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

// Returns the length of the well-formed character at the front of the bytes, or 0 if there is none.
std::size_t characterLength(std::string_view bytes) {
  if (bytes.empty()) return 0;
  const Lead lead = classify(static_cast<unsigned char>(bytes.front()));
  if (bytes.size() < lead.length) return 0;
  for (std::size_t i = 1; i < lead.length; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const unsigned char low = i == 1 ? lead.secondLow : 0x80;
    const unsigned char high = i == 1 ? lead.secondHigh : 0xBF;
    if (byte < low || byte > high) return 0;
  }
  return lead.length;
}

// Returns true for the control characters C0, DEL and C1. UTF-8 spells C1 with the lead byte 0xC2.
bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return first < 0x20 || first == 0x7F;
  return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

struct Character {
  std::string_view bytes;
  bool isPrintable;
};

// Takes a character, or one broken byte, off the front of the text. REQUIRES: text is not empty.
Character takeCharacter(std::string_view& text) {
  const std::size_t length = characterLength(text);
  const std::string_view bytes = text.substr(0, std::max<std::size_t>(length, 1));
  text.remove_prefix(bytes.size());
  return {bytes, length != 0 && !isControl(bytes)};
}

constexpr bool isPlain(char c) {
  return c >= ' ' && c <= '~';
}

}  // namespace

bool isUTF8(std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const std::size_t length = characterLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

char* writeHexadecimal(std::span<const std::uint8_t> bytes, char* to) noexcept {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  for (const std::uint8_t byte : bytes) {
    *to++ = kDigits[byte >> 4];
    *to++ = kDigits[byte & 0x0F];
  }
  return to;
}

std::string hexadecimal(std::span<const std::uint8_t> bytes) {
  std::string text(2 * bytes.size(), '\0');
  writeHexadecimal(bytes, text.data());
  return text;
}

std::optional<std::uint8_t> byteFromHexadecimal(std::string_view digits) noexcept {
  std::uint8_t byte = 0;
  const char* const end = digits.data() + digits.size();
  if (digits.size() != 2 || std::from_chars(digits.data(), end, byte, 16).ptr != end)
    return std::nullopt;
  return byte;
}

std::optional<std::vector<std::uint8_t>> bytesFromHexadecimal(std::string_view digits) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(digits.size() / 2);
  while (!digits.empty()) {
    const auto byte = byteFromHexadecimal(digits.substr(0, 2));
    if (!byte) return std::nullopt;
    bytes.push_back(*byte);
    digits.remove_prefix(2);
  }
  return bytes;
}

std::string printable(std::string_view bytes, std::size_t limit) {
  // A short way for plain ASCII, which nearly every text is: every name of a report passes here.
  if (bytes.size() <= limit && std::all_of(bytes.begin(), bytes.end(), isPlain))
    return std::string(bytes);
  std::string text;
  while (!bytes.empty()) {
    const Character next = takeCharacter(bytes);
    const std::string_view shown = next.isPrintable ? next.bytes : "?";
    if (text.size() + shown.size() > limit) break;
    text += shown;
  }
  return text;
}

std::string escaped(std::string_view bytes, std::size_t limit) {
  std::string text;
  while (!bytes.empty()) {
    if (text.size() >= limit) return text + "...";
    const Character next = takeCharacter(bytes);
    if (next.isPrintable) {
      text += next.bytes;
      continue;
    }
    for (const char c : next.bytes) {
      const auto byte = static_cast<std::uint8_t>(c);
      text += "\\x" + hexadecimal({&byte, 1});
    }
  }
  return text;
}

}  // namespace ob
