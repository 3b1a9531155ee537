// The handles of the registry, each of an entry ID and not of an open device.
#pragma once

#include <mutex>

#include "linux/notifications.hpp"
#include "model/handles.hpp"

namespace tavrenix::sys {

// Any thread.
class HandleTable {
 public:
  using All = Handles<EntryID>;

  RegistryHandle open(All::Slot slot) {
    const Lock lock(mutex_);
    return all_.open(std::move(slot));
  }
  // A copy of what the handle stands for. Nothing where it is not that of a T.
  template <class T>
  std::optional<T> get(RegistryHandle handle) const {
    const Lock lock(mutex_);
    const T* found = all_.opened<T>(handle);
    return found == nullptr ? std::nullopt : std::optional<T>(*found);
  }
  // As those of Handles.
  RegistryHandle next(RegistryHandle iterator) {
    const Lock lock(mutex_);
    return all_.next(iterator);
  }
  void release(RegistryHandle handle) {
    All::Slot released;  // destroyed after the lock
    const Lock lock(mutex_);
    released = all_.release(handle);
  }
  std::size_t size() const {
    const Lock lock(mutex_);
    return all_.size();
  }

 private:
  using Lock = std::lock_guard<std::mutex>;

  mutable std::mutex mutex_;
  All all_;
};

}  // namespace tavrenix::sys
