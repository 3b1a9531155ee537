// When what was read of the machine may be told again.
//
// A scan asks some ten questions about each unit, and most of the answers come out of the same few
// reads. So what was read is kept for one burst of questions, and no longer:
//  - a burst ends when nobody has asked for kLong, and with the host's own changes;
//  - in it, the generation is looked at every kLong, after each pause and whenever a caller
//    asks for it, and everything is forgotten where it has changed. So who changes the storage
//    between two questions, which takes longer than a pause, finds it changed; and who was made to
//    wait for the processor reads nothing twice;
//  - what no generation tells of, counters and labels, is kept from one such look to the next at
//    the most, and the states of paths' disks never.
#pragma once

#include <chrono>

namespace tavrenix::sys {

class Burst {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr Clock::duration kPause = std::chrono::milliseconds(1);
  static constexpr int kLong = 100;  // pauses

  // A pause of zero keeps nothing from one question to the next.
  explicit Burst(Clock::duration pause) noexcept : pause_(pause) {}

  // Whether a question that begins now belongs to the burst of the last answer.
  bool goesOn() const { return sinceAnswer() < kLong * pause_; }
  bool paused() const { return sinceAnswer() >= pause_; }
  bool needsCheck() const { return paused() || Clock::now() - lastCheck_ >= kLong * pause_; }
  void answered() { lastAnswer_ = Clock::now(); }
  void checked() { lastCheck_ = Clock::now(); }

 private:
  Clock::duration sinceAnswer() const { return Clock::now() - lastAnswer_; }

  Clock::duration pause_;
  Clock::time_point lastAnswer_{};
  Clock::time_point lastCheck_{};
};

}  // namespace tavrenix::sys
