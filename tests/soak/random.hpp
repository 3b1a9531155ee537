// Numbers that follow from a seed alone, the same with every compiler and library.
#pragma once

#include <cstdint>
#include <random>

namespace tavrenix::soak {

// One stream of a seed. Not safe for concurrent use: each thread has its own.
class Random {
 public:
  Random(std::uint64_t seed, std::uint64_t stream) {
    std::seed_seq words{seed & 0xFFFFFFFF, seed >> 32, stream};
    engine_.seed(words);
  }
  std::uint64_t below(std::uint64_t limit) { return engine_() % limit; }
  // True once in so many calls on the average.
  bool onceIn(std::uint64_t calls) { return below(calls) == 0; }

 private:
  std::mt19937_64 engine_;
};

}  // namespace tavrenix::soak
