// Tells of arrivals and departures. After each event the entries of the classes that somebody
// watches are listed anew; what is new has arrived, what is missing has departed.
//
// Clients know a departed device by the handle that they hold and lose with their next scan, which
// the generation starts. So departures come first: until all of them have been taken up the
// generation stands still, which keeps scans away, and arrivals wait. The other way round,
// departures wait until arrivals have been taken up, which need their scan. Nobody who does not
// take up what it is told holds anything up for longer than kLongestHold.
//
// Threads: any operation on any thread. One thread listens as long as there are ports; it calls
// nobody.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "linux/device_mapper.hpp"
#include "linux/event_source.hpp"
#include "linux/tree.hpp"
#include "model/registrations.hpp"

namespace tavrenix::sys {

using Registration = tavrenix::Registration<EntryID>;

class Notifications {
 public:
  // All entries of the classes that can be told of, read afresh: in any order, also more than once.
  // -ENXIO is none; any other error is that they cannot be known.
  using Lister = std::function<Answer<Entries>(const std::vector<std::string>& classes)>;
  using Opener = std::function<std::optional<EventSource>()>;
  using Clock = std::chrono::steady_clock;
  static constexpr Clock::duration kLongestHold = std::chrono::seconds(5);

  Notifications(Lister lister, Opener opener);
  Notifications(const Notifications&) = delete;
  Notifications& operator=(const Notifications&) = delete;
  ~Notifications();

  // A port has been made, or destroyed. Listening begins with the first and ends with the last.
  // False where nothing can be heard.
  bool portMade();
  void portDestroyed();

  // A negative error number where nothing can be listed. What is present waits in a registration of
  // arrivals.
  int add(const std::shared_ptr<Registration>& registration);
  void remove(const Registration& registration);
  // The next entry that waits; nothing at the end, which arms it.
  std::optional<EntryID> next(Registration& registration);

  // The generation to show where the machine's is fresh.
  std::uint32_t shown(std::uint32_t fresh);

 private:
  using Lock = std::unique_lock<std::mutex>;
  static bool conforms(const EntryID& entry, std::string_view className) {
    return conformsTo(nameOf(entry).kind, className);
  }

  bool startListening();
  void stopListening();
  void listen();
  // As EventSource::wait, once no more events follow. kNothing counts as a change.
  EventSource::Heard hear(std::optional<std::chrono::milliseconds> patience);
  // False where it cannot be known whether all has been told.
  bool tellChanges(Lock& lock);

  // These hold mutex_.
  std::optional<Entries> list();
  int watch(const std::string& className);
  bool tellDepartures(const Entries& present);
  void tellArrivals(const Entries& present);
  bool isHeld();
  // Returns when all arrivals, or all departures, have been taken up, or nobody waits for it
  // longer.
  void waitUntilTakenUp(Lock& lock, bool arrivals);

  const Lister lister_;
  const Opener opener_;

  std::mutex ports_;  // taken before mutex_; never by the listener
  std::size_t portCount_ = 0;
  std::optional<EventSource> source_;
  std::thread listener_;

  std::mutex mutex_;
  std::condition_variable takenUp_;
  bool stopping_ = false;
  Registrations<EntryID, conforms> registrations_;
  std::vector<std::string> watched_;  // classes
  Entries known_;                     // of these classes, as told; ascending
  bool held_ = false;                 // the generation stands still
  Clock::time_point heldUntil_;
  std::uint32_t shown_ = 0;
};

}  // namespace tavrenix::sys
