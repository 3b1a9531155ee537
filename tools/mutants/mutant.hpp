// Included in front of every source of a mutant build: says which of the changes that were written
// into the sources is on. No other build sees this file or reads these variables.
//
// TAVRENIX_MUTANT is the number of the one change that is on; none is where it is not set.
// TAVRENIX_MUTANTS_REACHED names a file to which each process adds the numbers of those it reaches.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace mutant {

inline constexpr int kMost = 1 << 17;
inline std::atomic<bool> gReached[kMost];

// Written at once, by a system call alone: a test may end in any way, and may count allocations.
inline void noteReached(const char* file, int number) noexcept {
  if (gReached[number].exchange(true, std::memory_order_relaxed)) return;
  char line[16];
  const int length = std::snprintf(line, sizeof line, "%d\n", number);
  const int out = open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (out < 0 || write(out, line, static_cast<std::size_t>(length)) != length) std::abort();
  close(out);
}

// Ready before any other code of the program runs, since it asks the environment when first called.
inline bool on(int number) noexcept {
  static const char* const chosen = std::getenv("TAVRENIX_MUTANT");
  static const int theOne = chosen == nullptr ? 0 : std::atoi(chosen);
  static const char* const reached = std::getenv("TAVRENIX_MUTANTS_REACHED");
  if (reached != nullptr) noteReached(reached, number);
  return number == theOne;
}

// In code that is also run by the compiler, which sees it unchanged.
// The builtin, since the build system tries the compiler with an older language.
constexpr bool onAtRunTime(int number) noexcept {
  return !__builtin_is_constant_evaluated() && on(number);
}

}  // namespace mutant
