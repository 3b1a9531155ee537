// What every fuzzing program stands on: a promise of the code that does not hold ends the run, and
// libFuzzer keeps the input.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace tavrenix::fuzz {

// Each program has its own.
void run(std::string_view input);

inline void expect(bool holds, const char* promise) {
  if (holds) return;
  ::dprintf(STDERR_FILENO, "fuzz: this does not hold: %s\n", promise);  // stderr may be captured
  std::abort();
}

// Takes what stands before the mark off the front of text, the mark too; all of it where there is
// none.
inline std::string_view takeUpTo(char mark, std::string_view& text) {
  const std::size_t end = text.find(mark);
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return taken;
}

}  // namespace tavrenix::fuzz
