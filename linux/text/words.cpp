#include "linux/text/words.hpp"

#include <charconv>

namespace tavrenix::sys {

namespace {

constexpr bool isPadding(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\0';
}

}  // namespace

std::string_view trim(std::string_view text) {
  while (!text.empty() && isPadding(text.front())) text.remove_prefix(1);
  while (!text.empty() && isPadding(text.back())) text.remove_suffix(1);
  return text;
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

std::optional<std::uint64_t> parseNumber(std::string_view text, int base) {
  std::uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return value;
}

std::string decodeHexEscapes(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    const bool escaped = text.size() >= 4 && text.starts_with("\\x");
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

std::optional<DeviceNumber> deviceNumber(std::string_view major, std::string_view minor) {
  const auto first = parseNumber(major);
  const auto second = parseNumber(minor);
  if (!first || !second || *first >= 1U << 12 || *second >= 1U << 20) return std::nullopt;
  return DeviceNumber{static_cast<std::uint32_t>(*first), static_cast<std::uint32_t>(*second)};
}

std::optional<DeviceNumber> parseDeviceNumber(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  return deviceNumber(text.substr(0, colon), text.substr(colon + 1));
}

WordReader::WordReader(std::string_view line)
    : rest_(trim(line)), failed_(line.size() > kMostBytes) {}

std::string_view WordReader::word() {
  const auto word = takeWord(rest_);
  return take(word.empty() ? std::nullopt : std::optional(word));
}

std::size_t WordReader::count() {
  const std::uint64_t value = number();
  if (value > rest_.size() / 2) failed_ = true;  // a blank precedes each word
  return failed_ ? 0 : static_cast<std::size_t>(value);
}

std::uint64_t WordReader::number() {
  return take(parseNumber(word()));
}

DeviceNumber WordReader::device() {
  return take(parseDeviceNumber(word()));
}

std::vector<std::string> WordReader::words(std::size_t count) {
  std::vector<std::string> taken;
  for (std::size_t i = 0; i < count && !failed_; ++i) taken.emplace_back(word());
  return taken;
}

void WordReader::skip(std::size_t count) {
  for (std::size_t i = 0; i < count && !failed_; ++i) word();
}

}  // namespace tavrenix::sys
