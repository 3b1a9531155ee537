// The compiler includes this before every source of a mutant build. It says which of the changes in
// the sources is on. No other build uses this file or reads these variables.
//
// TAVRENIX_MUTANT is the number of the one change that is on. If it is not set, none is.
// TAVRENIX_MUTANTS_REACHED names a file, to which each process adds the numbers of the changes that
// it reaches.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace mutant {

inline constexpr int kMost = 1 << 18;
inline std::atomic<bool> gReached[kMost];

// Notes that a change has been reached. Writes at once, because the process may end in any way, and
// allocates nothing, because tests count allocations.
inline void noteReached(const char* file, int number) noexcept {
  if (gReached[number].exchange(true, std::memory_order_relaxed)) return;
  char line[16];
  const int length = std::snprintf(line, sizeof line, "%d\n", number);
  const int out = open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (out < 0 || write(out, line, static_cast<std::size_t>(length)) != length) std::abort();
  close(out);
}

// Returns true if the change is on. Reads the environment at the first call, so it works before
// main.
inline bool on(int number) noexcept {
  static const char* const chosen = std::getenv("TAVRENIX_MUTANT");
  static const int theOne = chosen == nullptr ? 0 : std::atoi(chosen);
  static const char* const reached = std::getenv("TAVRENIX_MUTANTS_REACHED");
  if (reached != nullptr) noteReached(reached, number);
  return number == theOne;
}

// The same for constexpr code: while the compiler runs it, no change is on. Uses the builtin,
// because CMake also tries this file with an older standard than C++20.
constexpr bool onAtRunTime(int number) noexcept {
  return !__builtin_is_constant_evaluated() && on(number);
}

}  // namespace mutant
