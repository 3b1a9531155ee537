// Handles given out and not yet released: of entries, iterators, notification ports and
// registrations. Every backing of the registry uses it, each with its own kind of entry. Not safe
// for concurrent use; the backing serialises it.
#pragma once

#include <variant>

#include "model/registrations.hpp"

namespace tavrenix {

template <class Entry>
class Handles {
 public:
  // Yields the entries one by one, as they were when it was made.
  struct Iterator {
    std::vector<Entry> entries;
    std::size_t next = 0;
  };
  using Port = ob::Ref<NotificationPort>;
  using SharedRegistration = std::shared_ptr<Registration<Entry>>;
  // What one handle stands for.
  using Slot = std::variant<std::monostate, Entry, Iterator, Port, SharedRegistration>;

  RegistryHandle open(Slot slot) {
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

  // Null where the handle is not that of a T.
  template <class T>
  const T* opened(RegistryHandle handle) const {
    if (handle == 0 || handle > slots_.size()) return nullptr;
    return std::get_if<T>(&slots_[handle - 1]);
  }

  // The handle of the iterator's next entry; 0 at its end and for what is no iterator.
  RegistryHandle next(RegistryHandle iterator) {
    if (opened<Iterator>(iterator) == nullptr) return 0;
    auto& [entries, next] = std::get<Iterator>(slots_[iterator - 1]);
    return next == entries.size() ? 0 : open(std::move(entries[next++]));
  }

  // Returns what the handle stood for, to be destroyed without the backing's lock. Ends the process
  // where the handle is not open: a second release would take another's handle.
  Slot release(RegistryHandle handle) {
    if (handle == 0) return {};
    if (handle > slots_.size() || std::holds_alternative<std::monostate>(slots_[handle - 1])) {
      ob::fatal("a registry handle was released twice");
    }
    free_.push_back(handle);
    return std::exchange(slots_[handle - 1], Slot{});
  }

  std::size_t size() const { return slots_.size() - free_.size(); }
  const std::vector<Slot>& slots() const { return slots_; }

 private:
  std::vector<Slot> slots_;  // a handle is a position plus one
  std::vector<RegistryHandle> free_;
};

}  // namespace tavrenix
