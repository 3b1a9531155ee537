// The signals by which an administrator or the system asks a run to stop: INT, TERM and HUP.
#pragma once

#include <csignal>

namespace tavrenix::maintain {

// Blocks these signals, and SIGPIPE, for the process until it ends, so that none interrupts a step.
// REQUIRES: every other thread of the process blocks them already.
class StopSignals {
 public:
  // Errors: throws monitor::Failure.
  StopSignals();
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // Returns true once a signal has come.
  bool hasCome();
  // Waits so many milliseconds, less if the first signal comes meanwhile.
  void sleep(int milliseconds);
  // Waits until the descriptor can be read. Returns false if a signal comes first.
  bool awaitReadable(int descriptor);

 private:
  int descriptor_;
  bool hasCome_ = false;
};

}  // namespace tavrenix::maintain
