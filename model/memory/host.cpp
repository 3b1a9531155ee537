#include "model/memory/host.hpp"

#include <cstring>

namespace tavrenix::memory {

using Lock = std::lock_guard<std::mutex>;

void MemoryTunable::setGeneration(std::uint32_t generation) {
  const Lock lock(mutex_);
  generation_ = generation;
}

std::uint32_t MemoryTunable::generation() const {
  const Lock lock(mutex_);
  return generation_;
}

void MemoryTunable::hold(bool held) {
  const Lock lock(mutex_);
  isHeld_ = held;
}

void MemoryTunable::setLogicalUnitStatistics(EntryID unit, SCSILogicalUnitStatistics record) {
  const Lock lock(mutex_);
  units_.set(unit, record);
}

void MemoryTunable::setPathStatistics(EntryID path, SCSIPathStatistics record) {
  const Lock lock(mutex_);
  paths_.set(path, record);
}

std::optional<SCSIPathStatistics> MemoryTunable::pathStatistics(EntryID path) const {
  const Lock lock(mutex_);
  const auto* record = paths_.find(path);
  if (record == nullptr) return std::nullopt;
  return *record;
}

void MemoryTunable::forget(EntryID entryID) {
  const Lock lock(mutex_);
  units_.erase(entryID);
  paths_.erase(entryID);
}

namespace {

// Copies the record out as the system call does: -1 where there is none or its room is too small.
template <class Record>
int answer(const Record* record, void* oldValue, std::size_t* oldLength) {
  if (record == nullptr || *oldLength < sizeof(Record)) return -1;
  std::memcpy(oldValue, record, sizeof(Record));
  *oldLength = sizeof(Record);
  return 0;
}

}  // namespace

int MemoryTunable::sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength,
                                const void* newValue, std::size_t newLength) {
  SCSIMPIOStatisticsRequest request;
  if (std::strcmp(name, kStatisticsTunable) != 0 || newLength != sizeof request) return -1;
  std::memcpy(&request, newValue, sizeof request);
  if (request.signature != kStatisticsSignature) return -1;
  const Lock lock(mutex_);
  switch (request.requestType) {
    case kLogicalUnitStatistics:
      return answer(units_.find(request.logicalUnitEntryID), oldValue, oldLength);
    case kPathStatistics:
      return answer(paths_.findAfter(lastPath_, request.pathEntryID), oldValue, oldLength);
    case kConfigurationGeneration:
      if (!isHeld_) told_ = generation_;
      return answer(&told_, oldValue, oldLength);
    default:
      return -1;
  }
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
  const auto* description = disks_.findAfter(lastDisk_, *id);
  if (description == nullptr) return std::nullopt;
  return *description;
}

}  // namespace tavrenix::memory
