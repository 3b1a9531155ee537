// The decisions of a session: read from a fuzzer's input, or drawn at random from a seed.
#pragma once

#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace tavrenix::test {

// Thread safety: none.
class Choices {
 public:
  explicit Choices(std::uint64_t seed) : engine_(seed), drawn_(true) {}
  explicit Choices(std::string_view input) : input_(input) {}

  // Returns true if the input is used up. Decisions drawn from a seed never end.
  bool areOver() const { return !drawn_ && input_.empty(); }
  // Returns a number below the limit, and 0 once the input is used up.
  std::uint64_t below(std::uint64_t limit) {
    if (drawn_) return engine_() % limit;
    std::uint64_t value = 0;
    for (std::uint64_t left = limit - 1; left != 0; left >>= 8) value = value << 8 | byte();
    return value % limit;
  }
  bool onceIn(std::uint64_t calls) { return below(calls) == 0; }
  template <class Range>
  auto& oneOf(Range& range) {
    return range[below(std::size(range))];
  }
  std::string bytes(std::uint64_t most) {
    std::string bytes(below(most + 1), '\0');
    for (char& one : bytes) one = static_cast<char>(below(256));
    return bytes;
  }

 private:
  std::uint64_t byte() {
    if (input_.empty()) return 0;
    const auto first = static_cast<unsigned char>(input_.front());
    input_.remove_prefix(1);
    return first;
  }

  std::mt19937_64 engine_;
  std::string_view input_;
  bool drawn_ = false;
};

}  // namespace tavrenix::test
