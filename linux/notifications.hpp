// Who is told of arrivals and departures, and what waits for them. After each event the entries of
// the classes that somebody watches are listed anew; what is new has arrived, what is missing has
// departed.
//
// Clients know a departed device by the handle that they hold, and lose it with their next scan. So
// departures come first: until all of them have been taken up the generation stands still, which
// keeps scans away, and arrivals wait. Threads: any operation on any thread. One thread of its own
// listens, from the first registration on.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "linux/device_mapper.hpp"
#include "linux/event_source.hpp"
#include "model/notification_port.hpp"
#include "model/registry.hpp"
#include "runtime/ordered_map.hpp"

namespace tavrenix::sys {

// One registration, which is also its iterator. Its fields belong to Notifications.
struct Registration {
  ob::Ref<NotificationPort> port;
  bool ofArrivals = false;
  std::string className;
  NotificationDelivery deliver;
  RegistryHandle handle = 0;
  std::deque<EntryID> waiting;
  bool armed = false;
  bool busy = false;  // told of something that has not been taken up to the end
};

class Notifications {
 public:
  // All entries of a class, read afresh.
  using Lister = std::function<Answer<std::vector<EntryID>>(const std::string& className)>;
  using Opener = std::function<std::optional<EventSource>()>;

  Notifications(Lister lister, Opener opener);
  Notifications(const Notifications&) = delete;
  Notifications& operator=(const Notifications&) = delete;
  ~Notifications();

  // A negative error number where nothing can be heard or listed. What is present waits in a
  // registration of arrivals.
  int add(const std::shared_ptr<Registration>& registration);
  void remove(const Registration& registration);
  // The next entry that waits; nothing at the end, which arms it.
  std::optional<EntryID> next(Registration& registration);

  // The generation to show where the machine's is fresh.
  std::uint32_t shown(std::uint32_t fresh);

 private:
  using Known = ob::NumberMap<bool>;

  void listen();
  // These hold mutex_.
  int startListening();
  void look(bool departuresOnly);
  void lookAt(const std::string& className, Known& known, bool departuresOnly);
  void tell(const std::string& className, EntryID entry, bool arrived);
  bool departuresAreTakenUp() const;

  const Lister lister_;
  const Opener opener_;
  std::mutex mutex_;
  std::vector<std::shared_ptr<Registration>> all_;
  std::map<std::string, Known> known_;  // by class
  std::uint32_t shown_ = 0;
  bool arrivalsWait_ = false;
  std::optional<EventSource> source_;
  std::thread listener_;
};

}  // namespace tavrenix::sys
