// Small pure helpers for text that comes from the kernel, from devices and from daemons.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavrenix::sys {

// Without blanks, tabs, newlines and zero bytes at either end.
std::string_view trim(std::string_view text);

// The number that the whole text is, in that base: no sign, no blanks, no overflow.
std::optional<std::uint64_t> parseNumber(std::string_view text, int base = 10);

// Takes the next word between blanks off rest; empty where there is none left.
std::string_view takeWord(std::string_view& rest);

// UTF-8 that no terminal acts on: control characters and what is not UTF-8 become '?' each, and the
// text ends after limit bytes at the latest.
std::string printable(std::string_view bytes, std::size_t limit = 255);

// udev writes bytes outside its safe set as \x and two hexadecimal digits.
std::string decodeUdevEscapes(std::string_view text);

// Whether text can be the name of one kernel device in a path: nothing that leads elsewhere.
bool isDeviceName(std::string_view text);

}  // namespace tavrenix::sys
