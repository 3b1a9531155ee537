#include "cli/text.hpp"

#include <cinttypes>
#include <cstdio>
#include <string_view>

namespace tavrenix::cli {

namespace {

constexpr size_t longestText = 254;

bool isPrintableAscii(unsigned char byte) {
  return byte >= 0x20 && byte < 0x7F;
}

// The second and later bytes of a character in UTF-8.
bool isContinuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

struct SizeUnit {
  const char* name;
  std::int64_t divisor;
};

// The ranges are uneven on purpose: 10^9 bytes are the first GB, but 10^12 bytes are the last.
SizeUnit unitFor(std::int64_t bytes) {
  if (bytes <= 999'999'999) return {"MB", 1'000'000};
  if (bytes <= 1'000'000'000'000) return {"GB", 1'000'000'000};
  return {"TB", 1'000'000'000'000};
}

}  // namespace

std::optional<std::string> asciiText(ObTypeRef value) {
  const auto string = static_cast<ObStringRef>(value);
  const char* const utf8 = ObStringGetUTF8(string);
  if (utf8 == nullptr) return std::nullopt;
  std::string text;
  for (const char c : std::string_view(utf8, ObStringGetLength(string))) {
    const auto byte = static_cast<unsigned char>(c);
    if (isContinuation(byte)) continue;
    if (text.size() == longestText) break;
    text += isPrintableAscii(byte) ? c : '?';
  }
  return text;
}

std::string formatVolumeSize(std::int64_t bytes) {
  const SizeUnit unit = unitFor(bytes);
  char text[32];
  std::snprintf(text, sizeof text, "%6.1f %s (%" PRId64 " Bytes)",
                static_cast<double>(bytes) / static_cast<double>(unit.divisor), unit.name, bytes);
  return text;
}

}  // namespace tavrenix::cli
