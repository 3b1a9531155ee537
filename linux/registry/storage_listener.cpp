#include "linux/registry/storage_listener.hpp"

#include <pthread.h>

#include "runtime/exhaustion.hpp"
#include "runtime/posix.hpp"

namespace tavrenix::sys {

namespace {

using Clock = std::chrono::steady_clock;
using Lock = ob::MutexLock;

// The pause before the next look if the machine could not be read, for instance because a map was
// just being removed.
constexpr std::chrono::milliseconds kRetry(100);
// The pause before the next attempt to open a source of events after one broke.
constexpr std::chrono::seconds kReopen(1);
// One change comes with many events. The listener makes a round when no event has come for kQuiet,
// and at the latest after kMostQuiets further ones.
constexpr std::chrono::milliseconds kQuiet(5);
constexpr int kMostQuiets = 40;

}  // namespace

bool StorageListener::start(Announcements& announcements) {
  auto opened = opener_();
  if (!opened) return false;
  source_.emplace(std::move(*opened));
  {
    const Lock lock(mutex_);
    stopping_ = false;
  }
  const ob::AllSignalsBlocked blocked;
  return ob::catchExhaustion(
      [&] { thread_ = std::thread([this, &announcements] { listen(announcements); }); });
}

void StorageListener::stop() {
  if (!thread_.joinable()) return;
  {
    const Lock lock(mutex_);
    stopping_ = true;
    if (source_) source_->stop();
    stopped_.notifyAll();
  }
  thread_.join();
  source_.reset();
}

void StorageListener::listen(Announcements& announcements) {
  pthread_setname_np(pthread_self(), "storage-events");
  std::optional<std::chrono::milliseconds> timeout;
  for (;;) {
    const auto result = waitForEvent(timeout);
    if (result == EventSource::WaitResult::kStop) return;
    if (result == EventSource::WaitResult::kBroken && !reopen()) return;
    const bool complete =
        ob::catchExhaustion(false, [&] { return announcements.announce(kDepartureTimeout); });
    timeout = complete ? std::nullopt : std::optional(kRetry);
  }
}

// Waits until storage may have changed and no more events follow. A time-out counts as a change.
EventSource::WaitResult StorageListener::waitForEvent(
    std::optional<std::chrono::milliseconds> timeout) {
  auto result = source_->wait(timeout);
  for (int i = 0; i < kMostQuiets && result == EventSource::WaitResult::kChange; ++i) {
    result = source_->wait(kQuiet);
  }
  return result;
}

// Replaces a source that broke. Events were lost meanwhile, so the caller makes a round. Returns
// false if the listener is to stop.
bool StorageListener::reopen() {
  const Lock lock(mutex_);
  while (!stopping_) {
    source_.reset();
    if (auto opened = opener_()) {
      source_.emplace(std::move(*opened));
      return true;
    }
    stopped_.waitUntil(mutex_, Clock::now() + kReopen);
  }
  return false;
}

}  // namespace tavrenix::sys
