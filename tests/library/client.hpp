// A client of the library in tests: references that release themselves, and a client of each form
// of notification, which notes the calls that it gets.
#pragma once

#include <functional>
#include <future>
#include <string>
#include <tavrenix/block.hpp>

#include "library/call.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::test {

template <class CRef>
class Owned {
 public:
  explicit Owned(CRef reference = nullptr) noexcept : reference_(reference) {}
  Owned(Owned&& other) noexcept : reference_(std::exchange(other.reference_, nullptr)) {}
  Owned& operator=(Owned&& other) noexcept {
    std::swap(reference_, other.reference_);
    return *this;
  }
  ~Owned() { ObRelease(reference_); }
  CRef get() const noexcept { return reference_; }
  CRef* out() noexcept { return &reference_; }
  explicit operator bool() const noexcept { return reference_ != nullptr; }

 private:
  CRef reference_;
};

inline std::string utf8(const void* string) {
  const char* text = ObStringGetUTF8(static_cast<ObStringRef>(string));
  return text == nullptr ? "<none>" : text;
}
template <class CRef>
CRef at(const Owned<ObArrayRef>& array, std::size_t index) {
  return static_cast<CRef>(ObArrayGetValueAtIndex(array.get(), index));
}

// The units, as the library lists them now. Units and paths are borrowed from the arrays.
struct Handles {
  Owned<ObArrayRef> units{MPIOCopyLogicalUnits()};
  MPIOLogicalUnitRef unit(std::size_t index = 0) const {
    return at<MPIOLogicalUnitRef>(units, index);
  }
  Owned<ObArrayRef> paths(std::size_t index = 0) const {
    return Owned<ObArrayRef>(MPIOLogicalUnitCopyPaths(unit(index)));
  }
};

struct Event {
  ObStringRef kind;
  EntryID id;
  ObTypeRef handle;  // for comparison: it may be gone
  friend bool operator==(const Event& a, const std::pair<ObStringRef, EntryID>& b) {
    return a.kind == b.first && a.id == b.second;
  }
};

class NotificationClient {
 public:
  virtual ~NotificationClient() = default;
  // Waits until all events so far have been delivered.
  virtual void settle() = 0;
  std::vector<Event> take() {
    settle();
    return std::exchange(events, {});
  }

  std::vector<Event> events;
  std::function<void(const Event&)> onEvent;

 protected:
  void note(ObStringRef kind, ObTypeRef handle) {
    const auto* unit = modelOf<MPIOLogicalUnit>(handle);
    const auto* path = modelOf<MPIOLogicalUnitPath>(handle);
    events.push_back({kind, unit ? unit->serviceEntryID() : path->serviceEntryID(), handle});
    if (onEvent) onEvent(Event(events.back()));
  }
};

class QueueClient final : public NotificationClient {
 public:
  ~QueueClient() override {
    stop();
    settle();
  }
  bool start() {
    notification = MPIONotificationCreateWithDispatchQueue(&block, queue.get(), &error);
    return notification != nullptr;
  }
  void stop() { MPIONotificationDestroy(std::exchange(notification, nullptr)); }
  void settle() override { ObDispatchQueueDrain(queue.get()); }
  // Keeps the queue busy during the call, so that the client uses the registry in no other way.
  template <class Call>
  void alone(Call call) {
    std::promise<void> over;
    const auto wait = [](void* promise) {
      static_cast<std::promise<void>*>(promise)->get_future().wait();
    };
    ObDispatchAsync(queue.get(), wait, &over);
    call();
    over.set_value();
    settle();
  }

  Owned<ObDispatchQueueRef> queue{ObDispatchQueueCreate("client")};
  Block<MPIONotificationBlock, std::function<void(ObStringRef, ObTypeRef, void*)>> block{
      [this](ObStringRef kind, ObTypeRef handle, void*) { note(kind, handle); }};
  MPIONotificationRef notification = nullptr;
  ObErrorRef error = nullptr;  // borrowed from the pool of the thread that called start()
};

// REQUIRES: all calls are on the thread that made it.
class RunLoopClient final : public NotificationClient {
 public:
  ~RunLoopClient() override { ObRunLoopSourceInvalidate(source.get()); }
  bool start() {
    return ObRunLoopAddSource(ObRunLoopGetCurrent(), source.get(), kObRunLoopDefaultMode);
  }
  void stop() { ObRunLoopRemoveSource(ObRunLoopGetCurrent(), source.get(), kObRunLoopDefaultMode); }
  void settle() override {
    while (ObRunLoopPerformDue(kObRunLoopDefaultMode)) {
    }
  }
  Owned<ObRunLoopSourceRef> source{MPIONotificationCreateRunLoopSource(
      [](ObStringRef kind, ObTypeRef handle, void* client) {
        static_cast<RunLoopClient*>(client)->note(kind, handle);
      },
      this)};
};

// Adds the units that are missing up to shape.units. Changes the generation before they are
// announced.
inline void addUnits(memory::MemoryHost& host, const Shape& shape) {
  const memory::MemoryRegistry::HeldNotifications held(host.registry());
  addStorage(host, shape);
}
inline void removeUnit(memory::MemoryHost& host, std::uint64_t unit, std::uint64_t paths) {
  for (std::uint64_t path = 0; path < paths; ++path) {
    host.registry().removeEntry(pathID(unit, path));
  }
  host.registry().removeEntry(unitID(unit));
}

}  // namespace tavrenix::test
