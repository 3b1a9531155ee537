// Two clients that note what they are told, one of each delivery form, behind one face.
#pragma once

#include <gtest/gtest.h>
#include <tavrenix/mpio.h>

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <tavrenix/block.hpp>
#include <tuple>
#include <vector>

#include "library/call.hpp"
#include "tests/library/owned.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::test {

struct Event {
  ObStringRef kind;
  EntryID id;
  ObTypeRef handle;  // for comparison: it may be gone
};

using Told = std::pair<ObStringRef, EntryID>;

class NotificationClient {
 public:
  virtual ~NotificationClient() = default;
  virtual bool start() = 0;
  virtual void stop() = 0;
  // Returns when everything that the registry had to tell by now has been told.
  virtual void settle() = 0;

  // What came since the last call.
  std::vector<Told> take() {
    std::vector<Told> told;
    for (const auto& event : std::exchange(events, {})) told.emplace_back(event.kind, event.id);
    return told;
  }

  std::vector<Event> events;
  std::function<void(const Event&)> onEvent;

 protected:
  void note(ObStringRef kind, ObTypeRef handle) {
    auto* unit = modelOf<MPIOLogicalUnit>(handle);
    auto* path = modelOf<MPIOLogicalUnitPath>(handle);
    const EntryID id = unit != nullptr ? unit->serviceEntryID() : path->serviceEntryID();
    events.push_back({kind, id, handle});
    if (onEvent) onEvent(Event(events.back()));
  }
};

class QueueClient final : public NotificationClient {
 public:
  explicit QueueClient(ObDispatchQueueRef shared = ObDispatchQueueCreate("client"))
      : queue(shared) {}
  ~QueueClient() override {
    if (notification != nullptr) MPIONotificationDestroy(notification);
    ObDispatchQueueDrain(queue.get());
  }
  bool start() override {
    notification = MPIONotificationCreateWithDispatchQueue(&block, queue.get(), &error);
    return notification != nullptr;
  }
  void stop() override { MPIONotificationDestroy(std::exchange(notification, nullptr)); }
  void settle() override { ObDispatchQueueDrain(queue.get()); }

  struct Callee {
    QueueClient& client;
    void operator()(ObStringRef kind, ObTypeRef handle, void* context) const {
      EXPECT_EQ(context, nullptr);
      client.note(kind, handle);
    }
  };
  Owned<ObDispatchQueueRef> queue;
  Block<MPIONotificationBlock, Callee> block{Callee{*this}};
  MPIONotificationRef notification = nullptr;
  ObErrorRef error = nullptr;  // borrowed from the pool of the thread that starts
};

// The queue does nothing for as long as it lives, so that the creation is alone at the registry.
class HeldQueue {
 public:
  explicit HeldQueue(ObDispatchQueueRef queue) {
    ObDispatchAsync(
        queue, [](void* held) { static_cast<HeldQueue*>(held)->mayGoOn_.get_future().wait(); },
        this);
    queue_ = queue;
  }
  ~HeldQueue() {
    mayGoOn_.set_value();
    ObDispatchQueueDrain(queue_);
  }
  HeldQueue(const HeldQueue&) = delete;
  HeldQueue& operator=(const HeldQueue&) = delete;

 private:
  ObDispatchQueueRef queue_;
  std::promise<void> mayGoOn_;
};

class RunLoopClient final : public NotificationClient {
 public:
  RunLoopClient() : source(MPIONotificationCreateRunLoopSource(call, this)) {}
  ~RunLoopClient() override { ObRunLoopSourceInvalidate(source.get()); }
  bool start() override {
    return ObRunLoopAddSource(ObRunLoopGetCurrent(), source.get(), kObRunLoopDefaultMode);
  }
  void stop() override {
    ObRunLoopRemoveSource(ObRunLoopGetCurrent(), source.get(), kObRunLoopDefaultMode);
  }
  void settle() override {
    while (ObRunLoopPerformDue(kObRunLoopDefaultMode)) {
    }
  }

  static void call(ObStringRef kind, ObTypeRef handle, void* context) {
    static_cast<RunLoopClient*>(context)->note(kind, handle);
  }
  Owned<ObRunLoopSourceRef> source;
};

// Adds the units from that many up to shape.units; they are told of when the generation has moved.
inline void addUnits(memory::MemoryHost& host, const Shape& shape) {
  const memory::MemoryRegistry::HeldNotifications held(host.registry());
  addStorage(host, shape);  // refuses those that are there
}

inline void removePath(memory::MemoryHost& host, std::uint64_t unit, std::uint64_t path) {
  host.registry().removeEntry(pathID(unit, path));
}

inline void removeUnit(memory::MemoryHost& host, std::uint64_t unit, std::uint64_t paths) {
  for (std::uint64_t path = 0; path < paths; ++path) removePath(host, unit, path);
  host.registry().removeEntry(unitID(unit));
}

}  // namespace tavrenix::test
