// Who may go next among threads that work on the same library.
//
// Drawn: one thread at a time, in an order that follows from the seed, so that a run can be had
// again. Free: all at once, as the kernel pleases, but none far ahead of the others; what clients
// have to do one after the other is kept so by a lock.
#pragma once

#include <array>
#include <condition_variable>
#include <functional>
#include <mutex>

#include "tests/soak/random.hpp"

namespace tavrenix::soak {

enum class Order { kDrawn, kFree };

class Turns {
 public:
  static constexpr std::size_t kWorkers = 4;
  // How many turns each gets in proportion; where all are free, how many operations in one turn.
  using Weights = std::array<std::uint64_t, kWorkers>;

  // atEnd is called once, by the thread that ends the last turn, before any other knows.
  Turns(Order order, const Weights& weights, std::uint64_t operations, Random random,
        std::function<void()> atEnd);

  // Waits for the worker's turn. How many operations it has; 0 where the work is over, and then
  // there is nothing to give.
  std::uint64_t take(std::size_t worker);
  void give();

  // For what clients serialise. In a drawn order nobody else is at work anyway, but for the queue
  // of the one whose turn it is, who waits for it.
  std::unique_lock<std::recursive_mutex> alone();

 private:
  void draw();
  bool isInStep(std::size_t worker) const;

  const Order order_;
  const Weights weights_;
  Random random_;
  const std::function<void()> atEnd_;
  std::recursive_mutex alone_;

  std::mutex mutex_;
  std::array<std::condition_variable, kWorkers> changed_;
  std::uint64_t left_;
  std::size_t next_ = 0;
  std::uint64_t length_ = 1;
  Weights taken_{};
  bool over_ = false;
};

}  // namespace tavrenix::soak
