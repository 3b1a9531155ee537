// The thread that listens for changes of storage and makes a round of announcements after each.
#pragma once

#include <functional>
#include <thread>

#include "host/announcements.hpp"
#include "linux/kernel/event_source.hpp"

namespace tavrenix::sys {

// Thread safety: start() and stop() are called by one thread at a time.
class StorageListener {
 public:
  // Returns a source of events, or nothing if the kernel does not allow it.
  using Opener = std::function<std::optional<EventSource>()>;
  // The longest time for which a subscriber that does not read its queue delays the others.
  static constexpr std::chrono::seconds kDepartureTimeout{5};

  explicit StorageListener(Opener opener) : opener_(std::move(opener)) {}
  ~StorageListener() { stop(); }
  StorageListener(const StorageListener&) = delete;
  StorageListener& operator=(const StorageListener&) = delete;

  // Starts the thread. Returns false if there can be no source of events or no thread.
  bool start(Announcements& announcements) OB_EXCLUDES(mutex_);
  // Ends the thread and waits for its end.
  void stop() OB_EXCLUDES(mutex_);

 private:
  void listen(Announcements& announcements) OB_EXCLUDES(mutex_);
  EventSource::WaitResult waitForEvent(std::optional<std::chrono::milliseconds> timeout);
  bool reopen() OB_EXCLUDES(mutex_);

  const Opener opener_;
  std::thread thread_;
  ob::Mutex mutex_;
  ob::Condition stopped_;
  bool stopping_ OB_GUARDED_BY(mutex_) = false;
  // Only the thread replaces it, under the mutex. So the thread itself may read it without the
  // mutex.
  std::optional<EventSource> source_;
};

}  // namespace tavrenix::sys
