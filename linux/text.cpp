#include "linux/text.hpp"

#include <algorithm>
#include <charconv>

#include "runtime/string.hpp"

namespace tavrenix::sys {

namespace {

constexpr bool isPadding(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\0';
}

constexpr bool isPlain(char c) {
  return c >= ' ' && c <= '~';
}

bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return first < 0x20 || first == 0x7F;
  // U+0080 to U+009F: old eight-bit control codes, which some terminals still act on.
  return character.size() == 2 && first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

}  // namespace

std::string_view trim(std::string_view text) {
  while (!text.empty() && isPadding(text.front())) text.remove_prefix(1);
  while (!text.empty() && isPadding(text.back())) text.remove_suffix(1);
  return text;
}

std::optional<std::uint64_t> parseNumber(std::string_view text, int base) {
  std::uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return value;
}

std::string_view takeWord(std::string_view& rest) {
  std::size_t begin = 0;
  while (begin < rest.size() && isPadding(rest[begin])) ++begin;
  std::size_t end = begin;
  while (end < rest.size() && !isPadding(rest[end])) ++end;
  const std::string_view word = rest.substr(begin, end - begin);
  rest.remove_prefix(end);
  return word;
}

std::string printable(std::string_view bytes, std::size_t limit) {
  if (bytes.size() <= limit && std::all_of(bytes.begin(), bytes.end(), isPlain)) {
    return std::string(bytes);
  }
  std::string text;
  while (!bytes.empty()) {
    std::size_t length = 1;
    while (length < 4 && length < bytes.size() && !ob::isUTF8(bytes.substr(0, length))) ++length;
    std::string_view character = bytes.substr(0, length);
    if (!ob::isUTF8(character)) {
      character = bytes.substr(0, 1);
      length = 1;
    }
    const bool shown = ob::isUTF8(character) && !isControl(character);
    if (text.size() + (shown ? length : 1) > limit) break;
    text += shown ? character : "?";
    bytes.remove_prefix(length);
  }
  return text;
}

std::string decodeUdevEscapes(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    const bool escaped = text.size() >= 4 && text[0] == '\\' && text[1] == 'x';
    const auto byte = escaped ? parseNumber(text.substr(2, 2), 16) : std::nullopt;
    decoded += byte ? static_cast<char>(*byte) : text[0];
    text.remove_prefix(byte ? 4 : 1);
  }
  return decoded;
}

bool isDeviceName(std::string_view text) {
  constexpr std::string_view kAllowed =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-!:+";
  return !text.empty() && text.size() < 64 &&
         text.find_first_not_of(kAllowed) == std::string_view::npos;
}

}  // namespace tavrenix::sys
