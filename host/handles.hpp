// The handles of a registry: entries, iterators, notification ports and registrations that have
// been given out and not yet released.
//
// Thread safety: every function may be called on any thread.
#pragma once

#include <utility>
#include <variant>

#include "host/announcements.hpp"

namespace tavrenix {

class HandleTable {
 public:
  // Yields entries one by one, as they were when it was made.
  struct Iterator {
    std::vector<Entry> entries;
    std::size_t next = 0;
  };
  using Port = ob::Ref<NotificationPort>;
  using SharedRegistration = std::shared_ptr<Registration>;
  // What one handle refers to.
  using Slot = std::variant<std::monostate, Entry, Iterator, Port, SharedRegistration>;

  RegistryHandle open(Slot slot) {
    const ob::MutexLock lock(mutex_);
    return openLocked(std::move(slot));
  }
  // Returns a copy of what the handle refers to, or nothing if that is not a T.
  template <class T>
  std::optional<T> get(RegistryHandle handle) {
    const ob::MutexLock lock(mutex_);
    const T* found = find<T>(handle);
    return found == nullptr ? std::nullopt : std::optional<T>(*found);
  }
  // Returns a handle of the iterator's next entry. Returns 0 at its end and if it is no iterator.
  RegistryHandle next(RegistryHandle iterator) {
    const ob::MutexLock lock(mutex_);
    auto* found = find<Iterator>(iterator);
    if (found == nullptr || found->next == found->entries.size()) return 0;
    return openLocked(Entry(found->entries[found->next++]));
  }
  // Closes the handle and returns what it referred to. Ends the process if the handle is not open:
  // a second release could close a handle of another caller.
  Slot release(RegistryHandle handle) {
    const ob::MutexLock lock(mutex_);
    if (handle > slots_.size() || std::holds_alternative<std::monostate>(slots_[handle - 1])) {
      ob::fatal("a registry handle was released twice");
    }
    free_.push_back(handle);
    return std::exchange(slots_[handle - 1], Slot{});
  }
  // Returns all ports that have not been released.
  std::vector<Port> ports() {
    const ob::MutexLock lock(mutex_);
    std::vector<Port> found;
    for (const Slot& slot : slots_) {
      if (const auto* port = std::get_if<Port>(&slot)) found.push_back(*port);
    }
    return found;
  }
  std::size_t size() {
    const ob::MutexLock lock(mutex_);
    return slots_.size() - free_.size();
  }

 private:
  RegistryHandle openLocked(Slot slot) OB_REQUIRES(mutex_) {
    if (free_.empty()) {
      free_.reserve(slots_.size() + 1);  // so that release never needs memory
      slots_.push_back(std::move(slot));
      return static_cast<RegistryHandle>(slots_.size());
    }
    const RegistryHandle handle = free_.back();
    free_.pop_back();
    slots_[handle - 1] = std::move(slot);
    return handle;
  }
  template <class T>
  T* find(RegistryHandle handle) OB_REQUIRES(mutex_) {
    if (handle == 0 || handle > slots_.size()) return nullptr;
    return std::get_if<T>(&slots_[handle - 1]);
  }

  ob::Mutex mutex_;
  std::vector<Slot> slots_ OB_GUARDED_BY(mutex_);  // a handle is a position plus one
  std::vector<RegistryHandle> free_ OB_GUARDED_BY(mutex_);
};

}  // namespace tavrenix
