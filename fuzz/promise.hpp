// The base of every fuzzing program. If a promise of the code does not hold, it ends the run, and
// libFuzzer keeps the input.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "runtime/byte_text.hpp"

namespace tavrenix::fuzz {

// Each program defines its own.
void run(std::string_view input);

inline void expect(bool holds, const char* promise) {
  if (holds) return;
  ::dprintf(STDERR_FILENO, "fuzz: this does not hold: %s\n", promise);  // past a closed stderr
  std::abort();
}

// Returns true if the text is UTF-8 without control characters, C0 or C1, so that a terminal prints
// it and obeys none of it. Does not use the code under test.
inline bool isShown(std::string_view text, std::size_t longest = 255) {
  if (text.size() > longest || !ob::isUTF8(text)) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool isC1 = byte == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    if (byte < 0x20 || byte == 0x7F || isC1) return false;
  }
  return true;
}

// Removes the front of the text up to and including the mark, and returns it without the mark.
// Takes the whole text if it has no mark.
inline std::string_view takeUpTo(char mark, std::string_view& text) {
  const std::size_t end = text.find(mark);
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return taken;
}

}  // namespace tavrenix::fuzz
