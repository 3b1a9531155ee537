#include "host/memory/memory_host.hpp"

namespace tavrenix::memory {

using Lock = ob::MutexLock;

namespace {

template <class Record>
std::optional<Record> copyOf(const Record* record) {
  return record == nullptr ? std::nullopt : std::optional(*record);
}

}  // namespace

void MemoryTunable::setLogicalUnitStatistics(EntryID unit, SCSILogicalUnitStatistics record) {
  const Lock lock(mutex_);
  units_.set(unit, record);
}

void MemoryTunable::setPathStatistics(EntryID path, SCSIPathStatistics record) {
  const Lock lock(mutex_);
  paths_.set(path, record);
}

void MemoryTunable::forget(EntryID entryID) {
  const Lock lock(mutex_);
  units_.erase(entryID);
  paths_.erase(entryID);
}

std::optional<SCSILogicalUnitStatistics> MemoryTunable::unitRecord(EntryID unit) {
  const Lock lock(mutex_);
  return copyOf(units_.find(unit));
}

// Ignores the unit: a path has the same record for every unit.
std::optional<SCSIPathStatistics> MemoryTunable::pathRecord(EntryID, EntryID path) {
  const Lock lock(mutex_);
  return copyOf(paths_.find(path));
}

void MemoryDisks::set(EntryID media, DiskDescription description) {
  const Lock lock(mutex_);
  disks_.set(media, std::move(description));
}

void MemoryDisks::forget(EntryID media) {
  const Lock lock(mutex_);
  disks_.erase(media);
}

std::optional<DiskDescription> MemoryDisks::describe(RegistryHandle media) {
  const auto id = registry_.entryIDOf(media);
  if (!id) return std::nullopt;
  const Lock lock(mutex_);
  return copyOf(disks_.find(*id));
}

void MemoryDetails::set(EntryID entryID, ob::Ref<const ob::Dictionary> details) {
  const Lock lock(mutex_);
  if (details) {
    entries_.set(entryID, std::move(details));
  } else {
    entries_.erase(entryID);
  }
}

void MemoryDetails::setHost(ob::Ref<const ob::Dictionary> details) {
  const Lock lock(mutex_);
  host_ = std::move(details);
}

ob::Ref<const ob::Dictionary> MemoryDetails::ofLogicalUnit(EntryID unit) {
  const Lock lock(mutex_);
  const auto* found = entries_.find(unit);
  return found == nullptr ? nullptr : *found;
}

ob::Ref<const ob::Dictionary> MemoryDetails::ofPath(EntryID /*unit*/, EntryID path) {
  return ofLogicalUnit(path);  // one table serves both
}

ob::Ref<const ob::Dictionary> MemoryDetails::ofHost() {
  const Lock lock(mutex_);
  return host_ ? host_ : ob::Dictionary::make({});
}

}  // namespace tavrenix::memory
