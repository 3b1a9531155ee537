// Who is told of arrivals and departures, and what waits for them. Not safe for concurrent use;
// MemoryRegistry serialises it.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "model/memory/tree.hpp"
#include "model/notification_port.hpp"

namespace tavrenix::memory {

// One registration, which is also its iterator.
struct Registration {
  ob::Ref<NotificationPort> port;
  bool ofArrivals = false;
  std::string className;
  NotificationDelivery deliver;
  RegistryHandle handle = 0;
  std::deque<ob::Ref<Entry>> waiting;
  bool armed = false;
  std::uint64_t madeAt = 0;  // it is told of later changes only

  // The next entry, or none, which arms it.
  ob::Ref<Entry> next();
};

class Registrations {
 public:
  void add(std::shared_ptr<Registration> registration);
  void remove(const Registration& registration);

  // An entry came or went.
  void changed(ob::Ref<Entry> entry, bool arrived);
  // Between the two, changes are noted but nobody is told. Calls may be nested.
  void hold() { ++holds_; }
  void letGo();
  // Whether nobody who can still be told has something waiting or is being told of something.
  bool isSettled() const;

 private:
  struct Change {
    ob::Ref<Entry> entry;
    bool arrived;
    std::uint64_t number;
  };
  void tell(const Change& change);

  std::vector<std::shared_ptr<Registration>> all_;  // in the order in which they were made
  std::vector<Change> held_;
  std::size_t holds_ = 0;
  std::uint64_t changes_ = 0;
};

}  // namespace tavrenix::memory
