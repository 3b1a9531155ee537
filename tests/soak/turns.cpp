#include "tests/soak/turns.hpp"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tavrenix::soak {

namespace {
constexpr std::uint64_t kLongestTurn = 8;
constexpr std::uint64_t kMostAhead = 4;
}  // namespace

Turns::Turns(Order order, const Weights& weights, std::uint64_t operations, Random random,
             std::function<void()> atEnd)
    : order_(order),
      weights_(weights),
      random_(random),
      atEnd_(std::move(atEnd)),
      left_(operations) {
  draw();
}

void Turns::draw() {
  std::uint64_t ticket =
      random_.below(std::accumulate(weights_.begin(), weights_.end(), std::uint64_t{0}));
  for (next_ = 0; ticket >= weights_[next_]; ++next_) ticket -= weights_[next_];
  length_ = 1 + random_.below(kLongestTurn);
}

std::uint64_t Turns::take(std::size_t worker) {
  std::unique_lock lock(mutex_);
  changed_[worker].wait(lock, [&] {
    return over_ || (order_ == Order::kDrawn ? next_ == worker : isInStep(worker));
  });
  if (over_ || left_ == 0) return 0;
  const std::uint64_t length =
      std::min(left_, order_ == Order::kDrawn ? length_ : weights_[worker]);
  left_ -= length;
  ++taken_[worker];
  return length;
}

bool Turns::isInStep(std::size_t worker) const {
  return taken_[worker] <= *std::min_element(taken_.begin(), taken_.end()) + kMostAhead;
}

void Turns::give() {
  const std::lock_guard lock(mutex_);
  if (left_ == 0 && !std::exchange(over_, true)) {
    atEnd_();
  }
  if (over_ || order_ == Order::kFree) {
    for (auto& changed : changed_) changed.notify_all();
    return;
  }
  draw();
  changed_[next_].notify_one();
}

std::unique_lock<std::recursive_mutex> Turns::alone() {
  return order_ == Order::kFree ? std::unique_lock(alone_)
                                : std::unique_lock(alone_, std::defer_lock);
}

}  // namespace tavrenix::soak
