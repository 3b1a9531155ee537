// The faults: operations of the host that fail as drawn.
#pragma once

#include <atomic>

#include "tests/soak/random.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::soak {

class Storm {
 public:
  using Counts = std::array<std::size_t, static_cast<std::size_t>(test::Operation::kCount)>;

  // Takes over what else fails of the watch, whose lock keeps the draws in order.
  Storm(test::Watch& watch, Random random);
  Storm(const Storm&) = delete;
  Storm& operator=(const Storm&) = delete;
  ~Storm() { watch_.alsoFails = nullptr; }

  void calm() noexcept { raging_ = false; }
  bool isRaging() const noexcept { return raging_; }

  // Operations that were failed. Read while nobody uses the host.
  const Counts& failed() const noexcept { return failed_; }
  // Handles that the host granted to this thread, and that only a registration gives back, since
  // the last call.
  static std::size_t takeGranted() noexcept;

 private:
  bool fails(test::Operation operation);

  test::Watch& watch_;
  Random random_;
  std::atomic<bool> raging_{true};
  Counts failed_{};
};

}  // namespace tavrenix::soak
