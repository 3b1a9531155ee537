// One host with its library and its storm: what everybody who works in a soak shares.
#pragma once

#include "tests/lab/scratch.hpp"
#include "tests/soak/hand.hpp"
#include "tests/soak/storm.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::soak {

// Drawn: one operation at a time, in an order that follows from the seed, so that a run can be had
// again. Free: hand and clients each on a thread of its own, as the kernel pleases.
enum class Order { kDrawn, kFree };

struct World {
  World(std::uint64_t seed, Order order);

  memory::MemoryRegistry& registry() { return simulated.memory().registry(); }
  // For what clients serialise. In a drawn order nobody else is at work anyway, but for the queue
  // of the listener, who waits for it.
  std::unique_lock<std::recursive_mutex> alone();
  // A failure of the test. Of very many the first few are told. Any thread.
  void complain(const std::string& fault);
  // Into the sum over all that was answered, which follows from the seed where the order does. Any
  // thread.
  void note(std::uint64_t answer);

  const std::uint64_t seed;
  const Order order;
  std::recursive_mutex clients;
  std::mutex noting;
  std::uint64_t sum = 0;
  std::atomic<int> complaints{0};
  lab::Scratch scratch;
  lab::SimulatedHost simulated{[this](std::string_view line) { complain(std::string(line)); }};
  Hand hand;
  test::WatchedSeams seams{simulated.memory()};
  Storm storm;
  test::UnderLibrary under{seams};
};

}  // namespace tavrenix::soak
