// Bytes as text: UTF-8, hexadecimal digits, and text that is safe to show on a terminal.
//
// Thread safety: all functions are pure and may be called on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ob {

// Returns true if the bytes are well-formed UTF-8 (RFC 3629). Zero bytes are allowed.
bool isUTF8(std::string_view bytes) noexcept;

// Writes two upper-case digits per byte to `to` and returns the end of what it wrote. No zero byte
// follows. REQUIRES: room for 2 * bytes.size() characters.
char* writeHexadecimal(std::span<const std::uint8_t> bytes, char* to) noexcept;
// Returns the same digits as a string of their own.
std::string hexadecimal(std::span<const std::uint8_t> bytes);

// Returns the byte that two digits of either case stand for, or nothing if the text is not exactly
// two digits.
std::optional<std::uint8_t> byteFromHexadecimal(std::string_view digits) noexcept;
// Returns one byte per pair of digits, and no bytes for an empty text. Returns nothing if the text
// holds anything but pairs of digits.
std::optional<std::vector<std::uint8_t>> bytesFromHexadecimal(std::string_view digits);

// Both functions below take any bytes and return UTF-8 without control characters, so that nothing
// in the result makes a terminal act. C1 codes count as control characters, because some terminals
// still act on them. A byte that belongs to no well-formed character is handled alone.

// Replaces each control character and each broken byte with '?'. Ends before the first character
// that would make the result longer than `limit` bytes.
std::string printable(std::string_view bytes, std::size_t limit = 255);
// Writes each byte of a control character and each broken byte as \x and two digits. Appends "..."
// and ends if text is left once the result has `limit` bytes or more.
std::string escaped(std::string_view bytes, std::size_t limit);

}  // namespace ob
