// When what was read of the machine may be told again.
//
// A scan asks some ten questions about each unit, and most of the answers come out of the same few
// reads. So what was read is kept for one burst of questions, and no longer:
//  - a burst ends when nobody has asked for kPause. A caller who does anything about storage
//  between two
//    questions takes longer, and so finds it done;
//  - in a longer burst the generation is looked at every kInterval, and everything is forgotten
//  where it has
//    changed; likewise whenever a caller asks for the generation;
//  - the host's own changes end it.
// Counters and states of paths' disks are never kept.
#pragma once

#include <chrono>

namespace tavrenix::sys {

class Burst {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr Clock::duration kPause = std::chrono::milliseconds(1);
  static constexpr Clock::duration kInterval = std::chrono::milliseconds(100);

  // A pause of zero keeps nothing from one question to the next.
  explicit Burst(Clock::duration pause) noexcept : pause_(pause) {}

  // Whether a question that begins now belongs to the burst of the last answer.
  bool goesOn() const { return Clock::now() - lastAnswer_ < pause_; }
  bool needsCheck() const { return Clock::now() - lastCheck_ >= kInterval; }
  void answered() { lastAnswer_ = Clock::now(); }
  void checked() { lastCheck_ = Clock::now(); }

 private:
  Clock::duration pause_;
  Clock::time_point lastAnswer_{};
  Clock::time_point lastCheck_{};
};

}  // namespace tavrenix::sys
