// The two property-list values that JSON has no form for, as text. Pure parsers: text in, value
// out.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavrenix::lab {

// Pairs of hexadecimal digits of either case. None for anything else.
std::optional<std::vector<std::uint8_t>> bytesFromHex(std::string_view text);
// Two uppercase digits a byte.
std::string hexFromBytes(std::span<const std::uint8_t> bytes);

// "2026-01-02T03:04:05Z", with up to nine digits of a fraction after the seconds, as nanoseconds
// since 1970. None where the text has another form, is no date, or 64 bits do not hold it (1677 to
// 2262 do).
std::optional<std::int64_t> nanosecondsFromDate(std::string_view text);

}  // namespace tavrenix::lab
