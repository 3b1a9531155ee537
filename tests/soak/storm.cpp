#include "tests/soak/storm.hpp"

#include <new>

namespace tavrenix::soak {

using test::Operation;

namespace {

thread_local std::size_t granted = 0;

// An operation that stands alone in a call fails more often than those that a scan makes by the
// hundred.
std::uint64_t callsPerFault(Operation operation) {
  switch (operation) {
    case Operation::kSetProperty:
      return 10;
    case Operation::kCreateNotificationPort:
    case Operation::kGetRunLoopSource:
    case Operation::kClassMatching:
    case Operation::kAddMatchingNotification:
    case Operation::kFindServicesByEntryID:
      return 20;
    case Operation::kFindServicesByClass:
    case Operation::kTunable:
    case Operation::kDescribe:
      return 100;
    default:
      return 400;
  }
}

}  // namespace

Storm::Storm(test::Watch& watch, Random random) : watch_(watch), random_(random) {
  watch_.alsoFails = [this](Operation operation) { return fails(operation); };
}

std::size_t Storm::takeGranted() noexcept {
  return std::exchange(granted, 0);
}

bool Storm::fails(Operation operation) {
  if (raging_ && random_.onceIn(callsPerFault(operation))) {
    ++failed_[static_cast<std::size_t>(operation)];
    if (random_.onceIn(4)) throw std::bad_alloc();
    return true;
  }
  if (operation == Operation::kCreateNotificationPort ||
      operation == Operation::kAddMatchingNotification) {
    ++granted;
  }
  return false;
}

}  // namespace tavrenix::soak
