// Arrivals and departures of entries: the registrations for them, and the order in which they are
// delivered.
//
// A departure is delivered with the client's own handle. The client drops that handle in its next
// scan, and a scan starts if the client sees a new generation. So clients must see no new
// generation before they have read the departures, not even one published earlier that they have
// not asked for yet. A round therefore has these steps:
//  1. Wait until clients have read the arrivals of earlier rounds. A client scans for an arrival,
//     and step 2 would hold back the generation that starts this scan.
//  2. Compare the entries that are present with those that were known. Hold the generation that
//     clients asked for last, and deliver departures. If there are none, go to 4.
//  3. Wait until clients have read the departures. The client that reads the last one publishes the
//     new generation, so that its next scan drops the departed entries. Go back to 2.
//  4. Publish the new generation, and deliver arrivals.
// A subscriber that does not read its iterator delays the others by at most the time-out per wait.
#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "host/backing.hpp"
#include "host/notification_port.hpp"
#include "runtime/mutex.hpp"

namespace tavrenix {

// One subscriber to the arrivals or to the departures of a class. The mutex of Announcements guards
// `queued`, `armed` and `busy`.
struct Registration {
  bool ofArrivals = false;
  std::string className;
  ob::Ref<NotificationPort> port;
  NotificationDelivery deliver;
  RegistryHandle iterator = 0;

  std::deque<Entry> queued = {};
  bool armed = false;  // the next entry that is queued starts a delivery
  bool busy = false;   // the client has not yet read the queue to its end
};

// Thread safety: every function may be called on any thread. None of them calls a client.
class Announcements {
 public:
  explicit Announcements(Backing& backing) noexcept : backing_(backing) {}
  Announcements(const Announcements&) = delete;
  Announcements& operator=(const Announcements&) = delete;

  // Adds a registration. If it is for arrivals, queues all entries that are present.
  // Errors: a status of the backing if the entries cannot be listed.
  KernelStatus add(const std::shared_ptr<Registration>& registration) OB_EXCLUDES(mutex_);
  void remove(const Registration& registration) OB_EXCLUDES(mutex_);
  // Takes the next entry off the queue and returns it. If the queue is empty, arms the registration
  // and returns nothing. If this ends step 3 of a round, publishes the new generation.
  std::optional<Entry> next(Registration& registration) OB_EXCLUDES(mutex_);
  // Makes a waiting round check again, because it need not wait for a port that has been destroyed.
  void noticeDestroyedPort() OB_EXCLUDES(mutex_);

  // Makes a round. Waits for at most `timeout` in each step 1 and 3. Returns false if the entries
  // could not be listed; the caller then repeats the round.
  // REQUIRES: the calling thread reads no deliveries. The round would wait for itself.
  bool announce(std::chrono::milliseconds timeout) OB_EXCLUDES(rounds_, mutex_);
  // Publishes the new generation if no entry has arrived or departed. Does nothing if one has, or
  // while a round is being made: the round publishes.
  // The analysis does not know std::unique_lock, which adopts rounds_ here.
  void publishUnlessEntriesChanged() OB_NO_THREAD_ANALYSIS;
  // Announce one change, without a round and without asking the backing.
  void arrived(const Entry& entry) OB_EXCLUDES(mutex_);
  void departed(const Entry& entry) OB_EXCLUDES(mutex_);

  // Forgets which entries are known. Called when the backing stops listening, since the list would
  // go stale.
  void forgetEntries() OB_EXCLUDES(mutex_);
  // Returns true if the client of every registration with a live port has read its queue to the
  // end.
  bool areDelivered() OB_EXCLUDES(mutex_);

 private:
  using Present = std::vector<Entry>;
  using Known = ob::NumberMap<std::string_view>;  // classes by entry ID

  bool haveChanged(const Present& present) OB_EXCLUDES(mutex_);
  KernelStatus listEntries() OB_EXCLUDES(rounds_, mutex_);
  bool areRead(bool arrivals) OB_REQUIRES(mutex_);
  void waitUntilRead(bool arrivals, std::chrono::milliseconds timeout) OB_REQUIRES(mutex_);
  std::vector<Entry> missingFrom(const Present& present) OB_REQUIRES(mutex_);
  std::vector<Entry> newIn(const Present& present) OB_REQUIRES(mutex_);
  bool deliverDepartures(const Present& present) OB_REQUIRES(mutex_);
  void deliverArrivals(const Present& present) OB_REQUIRES(mutex_);
  void deliver(const Entry& entry, bool arrival) OB_REQUIRES(mutex_);

  Backing& backing_;
  ob::Mutex rounds_;  // held for a whole round; taken before mutex_
  ob::Mutex mutex_;
  ob::Condition read_;
  std::vector<std::shared_ptr<Registration>> registrations_ OB_GUARDED_BY(mutex_);
  bool departuresAwaited_ OB_GUARDED_BY(mutex_) = false;  // a round is in step 3
  // Nothing until the first registration needs them.
  std::optional<Known> known_ OB_GUARDED_BY(mutex_);
};

}  // namespace tavrenix
