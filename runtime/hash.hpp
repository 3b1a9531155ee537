// Hashes of keys. They differ from one run of a program to the next, so a file cannot be made whose
// keys collide in every run.
#pragma once

#include <sys/auxv.h>

#include <cstdint>
#include <cstring>
#include <string_view>

namespace ob {

// Returns a random number that differs in each run. The kernel passes it to each program at its
// start. So reading it needs no system call and never waits, even early in the boot.
inline std::uint64_t hashSeed() noexcept {
  static const std::uint64_t seed = [] {
    std::uint64_t drawn = 0;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the kernel passes the address as a number
    const auto* bytes = reinterpret_cast<const char*>(::getauxval(AT_RANDOM));
    if (bytes != nullptr) std::memcpy(&drawn, bytes + sizeof drawn, sizeof drawn);
    return drawn;
  }();
  return seed;
}

// Mixes all bits of the value into all bits of the result (the finaliser of SplitMix64).
inline std::uint64_t mixedBits(std::uint64_t value) noexcept {
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
  return value ^ (value >> 31);
}

inline std::uint64_t hashOf(std::uint64_t number) noexcept {
  return mixedBits(number ^ hashSeed());
}

inline std::uint64_t hashOf(std::string_view text) noexcept {
  std::uint64_t hash = hashSeed() ^ text.size();
  for (; !text.empty(); text.remove_prefix(text.size() < 8 ? text.size() : 8)) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), text.size() < 8 ? text.size() : 8);
    hash = mixedBits(hash ^ word);
  }
  return hash;
}

}  // namespace ob
