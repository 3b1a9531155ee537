// Numbers that follow from a seed alone, the same with every compiler and library.
#pragma once

#include <cstdint>
#include <iterator>
#include <random>

namespace tavrenix::soak {

// Each user of the seed has a stream of its own.
enum class Stream : std::uint32_t { kHand, kStorm, kOrder, kLister, kChanger, kListener };

// Not safe for concurrent use.
class Random {
 public:
  Random(std::uint64_t seed, Stream stream) {
    std::seed_seq words{seed & 0xFFFFFFFF, seed >> 32, static_cast<std::uint64_t>(stream)};
    engine_.seed(words);
  }
  std::uint64_t below(std::uint64_t limit) { return engine_() % limit; }
  // True once in so many calls on the average.
  bool onceIn(std::uint64_t calls) { return below(calls) == 0; }
  template <class Range>
  auto& oneOf(Range& range) {
    return range[below(std::size(range))];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace tavrenix::soak
