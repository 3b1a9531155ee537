// One host with its library, its storm and its turns: what everybody who works in a soak shares.
#pragma once

#include <string>
#include <vector>

#include "tests/lab/scratch.hpp"
#include "tests/soak/hand.hpp"
#include "tests/soak/storm.hpp"
#include "tests/soak/turns.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::soak {

// What went wrong, and a sum over all that was answered. Any thread.
class Findings {
 public:
  // Keeps the first few.
  void add(std::string finding);
  std::vector<std::string> take();
  // What the answers were follows from the seed, where the order does.
  void note(std::uint64_t answer);
  std::uint64_t sum() const noexcept { return sum_; }

 private:
  std::mutex mutex_;
  std::vector<std::string> found_;
  std::uint64_t sum_ = 0;
};

struct World {
  World(std::uint64_t seed, Order order, std::uint32_t firstGeneration,
        const std::filesystem::path& folder);

  const Order order;
  Findings findings;
  lab::Scratch scratch;
  lab::SimulatedHost simulated;
  Hand hand;
  test::WatchedSeams seams{simulated.memory()};
  Storm storm;
  test::UnderLibrary under{seams};

  memory::MemoryRegistry& registry() { return simulated.memory().registry(); }
};

}  // namespace tavrenix::soak
