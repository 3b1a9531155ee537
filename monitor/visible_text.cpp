#include "monitor/visible_text.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace tavrenix::monitor {

namespace {

struct Character {
  char32_t code = 0;
  std::size_t bytes = 0;  // 0 if what stands there is not UTF-8
};

Character characterAt(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < bytes) return {};
  char32_t code = lead & (0x7FU >> bytes);
  for (std::size_t i = 1; i < bytes; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {};
    code = code << 6 | (byte(i) & 0x3FU);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kLeast[bytes] || code > 0x10FFFF || isSurrogate) return {};
  return {code, bytes};
}

struct Range {
  char32_t first, last;
};

template <std::size_t N>
bool isIn(const Range (&ranges)[N], char32_t code) {
  for (const Range& range : ranges) {
    if (code >= range.first && code <= range.last) return true;
  }
  return false;
}

// Unicode's control and format characters, separators other than the blank, private use, and
// combining marks, which alter the character before them.
constexpr Range kUnsafe[] = {
    {0x00, 0x1F},     {0x5C, 0x5C},     {0x7F, 0xA0},       {0xAD, 0xAD},       {0x300, 0x36F},
    {0x600, 0x605},   {0x61C, 0x61C},   {0x6DD, 0x6DD},     {0x70F, 0x70F},     {0x115F, 0x1160},
    {0x1680, 0x1680}, {0x180B, 0x180F}, {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF},   {0x2000, 0x200F},
    {0x2028, 0x202F}, {0x205F, 0x206F}, {0x20D0, 0x20FF},   {0x3000, 0x3000},   {0x3164, 0x3164},
    {0xE000, 0xF8FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},
    {0xFFF0, 0xFFFB}, {0xFFFE, 0xFFFF}, {0x1D173, 0x1D17A}, {0xE0000, 0x10FFFF}};

// What terminals show in two columns.
constexpr Range kWide[] = {{0x1100, 0x115E},   {0x2E80, 0x303E},   {0x3041, 0xA4CF},
                           {0xA960, 0xA97F},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},
                           {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},
                           {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

std::string escape(const Character& character, std::uint8_t byte) {
  char text[16];
  if (character.bytes == 0 || character.code < 0x80) {
    if (character.code == '\\') return "\\\\";
    std::snprintf(text, sizeof text, "\\x%02X", static_cast<unsigned>(byte));
  } else {
    std::snprintf(text, sizeof text, "\\u{%04X}", static_cast<unsigned>(character.code));
  }
  return text;
}

std::size_t widthOf(char32_t code) {
  return isIn(kWide, code) ? 2 : 1;
}

}  // namespace

std::string visible(std::string_view text, bool asciiOnly) {
  // Nearly all text is like this.
  if (std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~' && c != '\\'; })) {
    return std::string(text);
  }
  std::string result;
  while (!text.empty()) {
    const Character character = characterAt(text);
    const std::size_t bytes = character.bytes == 0 ? 1 : character.bytes;
    const bool isShown = character.bytes != 0 && !isIn(kUnsafe, character.code) &&
                         (character.bytes == 1 || !asciiOnly);
    if (isShown) {
      result += text.substr(0, bytes);
    } else {
      result += escape(character, static_cast<std::uint8_t>(text.front()));
    }
    text.remove_prefix(bytes);
  }
  return result;
}

std::size_t columnsOf(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) {
    const Character character = characterAt(text);
    columns += widthOf(character.code);
    text.remove_prefix(character.bytes == 0 ? 1 : character.bytes);
  }
  return columns;
}

std::string fitted(std::string_view text, std::size_t columns) {
  const std::size_t whole = columnsOf(text);
  if (whole <= columns) return std::string(text) + std::string(columns - whole, ' ');
  std::string result;
  std::size_t filled = 0;
  while (!text.empty()) {
    const Character character = characterAt(text);
    if (filled + widthOf(character.code) + 1 > columns) break;
    filled += widthOf(character.code);
    result += text.substr(0, character.bytes);
    text.remove_prefix(character.bytes);
  }
  return result + std::string(columns - filled, '.');
}

std::string wrapped(std::string_view text, std::size_t width, std::size_t indent) {
  std::string result;
  std::size_t column = 0;
  while (!text.empty()) {
    const std::size_t end = text.find(' ', text.find_first_not_of(' '));
    const std::string_view word = text.substr(0, end);
    const std::size_t columns = columnsOf(word);
    if (width != 0 && column > indent && column + columns > width) {
      result += '\n' + std::string(indent, ' ');
      column = indent;
      const std::size_t blanks = word.find_first_not_of(' ');
      result += word.substr(blanks == std::string_view::npos ? word.size() : blanks);
      column += columns - (blanks == std::string_view::npos ? columns : blanks);
    } else {
      result += word;
      column += columns;
    }
    text.remove_prefix(word.size());
  }
  return result + '\n';
}

}  // namespace tavrenix::monitor
