#include "linux/handles.hpp"

namespace tavrenix::sys {

using Lock = std::lock_guard<std::mutex>;

RegistryHandle HandleTable::open(Slot slot) {
  const Lock lock(mutex_);
  return openLocked(std::move(slot));
}

RegistryHandle HandleTable::openLocked(Slot slot) {
  if (free_.empty()) {
    slots_.push_back(std::move(slot));
    free_.reserve(slots_.size());  // so that release never needs memory
    return static_cast<RegistryHandle>(slots_.size());
  }
  const RegistryHandle handle = free_.back();
  free_.pop_back();
  slots_[handle - 1] = std::move(slot);
  return handle;
}

std::optional<EntryID> HandleTable::entry(RegistryHandle handle) const {
  const Lock lock(mutex_);
  const auto* id = opened<EntryID>(handle);
  return id == nullptr ? std::nullopt : std::optional(*id);
}

ob::Ref<NotificationPort> HandleTable::port(RegistryHandle handle) const {
  const Lock lock(mutex_);
  const auto* port = opened<ob::Ref<NotificationPort>>(handle);
  return port == nullptr ? nullptr : *port;
}

std::shared_ptr<Registration> HandleTable::registration(RegistryHandle handle) const {
  const Lock lock(mutex_);
  const auto* registration = opened<std::shared_ptr<Registration>>(handle);
  return registration == nullptr ? nullptr : *registration;
}

RegistryHandle HandleTable::next(RegistryHandle iterator) {
  const Lock lock(mutex_);
  if (iterator == 0 || iterator > slots_.size()) return 0;
  auto* known = std::get_if<Iterator>(&slots_[iterator - 1]);
  if (known == nullptr || known->next == known->entries.size()) return 0;
  const EntryID id = known->entries[known->next++];
  return openLocked(id);
}

void HandleTable::release(RegistryHandle handle) {
  if (handle == 0) return;
  Slot released;  // destroyed after the lock
  const Lock lock(mutex_);
  if (handle > slots_.size() || std::holds_alternative<std::monostate>(slots_[handle - 1])) {
    ob::fatal("a registry handle was released twice");
  }
  released = std::exchange(slots_[handle - 1], Slot{});
  free_.push_back(handle);
}

std::size_t HandleTable::size() const {
  const Lock lock(mutex_);
  return slots_.size() - free_.size();
}

}  // namespace tavrenix::sys
