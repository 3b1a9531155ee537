// Handles given out and not yet released: of entries, iterators, notification ports and
// registrations.
#pragma once

#include <memory>
#include <mutex>
#include <variant>
#include <vector>

#include "linux/entry_id.hpp"
#include "linux/notifications.hpp"

namespace tavrenix::sys {

// Any thread.
class HandleTable {
 public:
  RegistryHandle openEntry(EntryID id) { return open(id); }
  // The iterator yields the entries one by one, as they were when it was made.
  RegistryHandle openIterator(std::vector<EntryID> entries) {
    return open(Iterator{std::move(entries)});
  }

  RegistryHandle openPort(ob::Ref<NotificationPort> port) { return open(std::move(port)); }
  RegistryHandle openRegistration(std::shared_ptr<Registration> registration) {
    return open(std::move(registration));
  }

  // Null where the handle is none of a port, or of a registration.
  ob::Ref<NotificationPort> port(RegistryHandle handle) const;
  std::shared_ptr<Registration> registration(RegistryHandle handle) const;
  // Nothing where the handle is not that of an entry.
  std::optional<EntryID> entry(RegistryHandle handle) const;
  // The handle of the iterator's next entry; 0 at its end and for what is no iterator.
  RegistryHandle next(RegistryHandle iterator);
  // Ends the process where the handle is not open: a second release would take another's handle.
  void release(RegistryHandle handle);
  std::size_t size() const;

 private:
  struct Iterator {
    std::vector<EntryID> entries;
    std::size_t next = 0;
  };
  using Slot = std::variant<std::monostate, EntryID, Iterator, ob::Ref<NotificationPort>,
                            std::shared_ptr<Registration>>;

  RegistryHandle open(Slot slot);
  RegistryHandle openLocked(Slot slot);
  // Null where the handle is not that of a T. mutex_ is held.
  template <class T>
  const T* opened(RegistryHandle handle) const {
    if (handle == 0 || handle > slots_.size()) return nullptr;
    return std::get_if<T>(&slots_[handle - 1]);
  }

  mutable std::mutex mutex_;
  std::vector<Slot> slots_;  // a handle is a position plus one
  std::vector<RegistryHandle> free_;
};

}  // namespace tavrenix::sys
