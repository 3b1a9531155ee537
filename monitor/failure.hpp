// What ends a verb without a report.
#pragma once

#include <stdexcept>

namespace tavrenix::monitor {

// The exit status of every verb but check, also for a wrong command line.
inline constexpr int kFailed = 2;

// what() is one line for a person, in visible text: what is wrong, and what to do.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tavrenix::monitor
