// Who is told of arrivals and departures, and what waits for them. Every backing of the registry
// uses it, each with its own kind of entry. Not safe for concurrent use; the backing serialises it.
#pragma once

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/notification_port.hpp"
#include "model/registry.hpp"

namespace tavrenix {

// What a client asks to be told of.
struct NotificationRequest {
  bool ofArrivals = false;
  std::string className;
};
// Nothing where kind is none that the seam names or matching stands for nothing.
std::optional<NotificationRequest> readNotificationRequest(std::string_view kind,
                                                           const ob::Dictionary* matching);
ob::Ref<const ob::Dictionary> matchingOfClass(std::string_view className);

// One registration, which is also its iterator.
template <class Entry>
struct Registration {
  NotificationRequest request;
  ob::Ref<NotificationPort> port;
  NotificationDelivery deliver;
  RegistryHandle handle = 0;
  std::deque<Entry> waiting;
  bool armed = false;
  bool busy = false;         // has, or is going through, something that it was told of
  std::uint64_t madeAt = 0;  // it is told of later changes only

  // The next entry, or nothing, which arms it.
  std::optional<Entry> next() {
    armed = waiting.empty();
    if (armed) {
      busy = false;
      return std::nullopt;
    }
    Entry entry = std::move(waiting.front());
    waiting.pop_front();
    return entry;
  }
};

template <class Entry, bool (*kConformsTo)(const Entry&, std::string_view className)>
class Registrations {
 public:
  using One = Registration<Entry>;

  // What is present waits in it already.
  void add(std::shared_ptr<One> registration) {
    registration->madeAt = changes_;
    registration->busy = !registration->waiting.empty();
    all_.push_back(std::move(registration));
  }
  void remove(const One& registration) {
    std::erase_if(all_, [&](const auto& one) { return one.get() == &registration; });
  }
  bool empty() const noexcept { return all_.empty(); }

  // An entry came or went.
  void changed(Entry entry, bool arrived) {
    if (all_.empty() && holds_ == 0) return;
    Change change{std::move(entry), arrived, ++changes_};
    if (holds_ != 0) {
      held_.push_back(std::move(change));
    } else {
      tell(change);
    }
  }
  // Between the two, changes are noted but nobody is told. Calls may be nested.
  void hold() { ++holds_; }
  void letGo() {
    if (--holds_ != 0) return;
    for (const Change& change : held_) tell(change);
    held_.clear();
  }

  // Whether nobody who can still be told has something waiting or is being told of something.
  bool isSettled() const {
    return held_.empty() && std::all_of(all_.begin(), all_.end(), [](const auto& one) {
             return (one->armed && one->waiting.empty()) || one->port->isDestroyed();
           });
  }
  // Whether nobody who can still be told is busy with arrivals, or with departures.
  bool areTakenUp(bool arrivals) const {
    return std::none_of(all_.begin(), all_.end(), [&](const auto& one) {
      return one->request.ofArrivals == arrivals && one->busy && !one->port->isDestroyed();
    });
  }

 private:
  struct Change {
    Entry entry;
    bool arrived;
    std::uint64_t number;
  };
  void tell(const Change& change) {
    for (const auto& one : all_) {
      if (one->request.ofArrivals != change.arrived || one->madeAt >= change.number) continue;
      if (!kConformsTo(change.entry, one->request.className) || one->port->isDestroyed()) continue;
      one->waiting.push_back(change.entry);
      one->busy = true;
      if (!std::exchange(one->armed, false)) continue;
      one->port->post([deliver = one->deliver, handle = one->handle] { deliver(handle); });
    }
  }

  std::vector<std::shared_ptr<One>> all_;  // in the order in which they were made
  std::vector<Change> held_;
  std::size_t holds_ = 0;
  std::uint64_t changes_ = 0;
};

}  // namespace tavrenix
