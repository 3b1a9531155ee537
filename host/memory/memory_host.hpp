// A whole host in memory. Its owner fills the registry, the tunable, the disk descriptions and the
// details.
#pragma once

#include "host/host.hpp"
#include "host/memory/memory_registry.hpp"

namespace tavrenix::memory {

// Thread safety: every function may be called on any thread.
class MemoryTunable final : public StatisticsTunable {
 public:
  // 0 stands for a driver that is not there: the library scans only once it sees another number.
  void setGeneration(std::uint32_t generation) { generation_ = generation; }
  std::uint32_t generation() override { return generation_; }
  void setLogicalUnitStatistics(EntryID unit, SCSILogicalUnitStatistics record);
  void setPathStatistics(EntryID path, SCSIPathStatistics record);
  std::optional<SCSIPathStatistics> pathStatistics(EntryID path) { return pathRecord(0, path); }
  void forget(EntryID entryID);

 private:
  std::optional<SCSILogicalUnitStatistics> unitRecord(EntryID unit) override;
  std::optional<SCSIPathStatistics> pathRecord(EntryID unit, EntryID path) override;

  std::atomic<std::uint32_t> generation_{0};
  ob::Mutex mutex_;
  ob::NumberMap<SCSILogicalUnitStatistics> units_ OB_GUARDED_BY(mutex_);
  ob::NumberMap<SCSIPathStatistics> paths_ OB_GUARDED_BY(mutex_);
};

// Thread safety: every function may be called on any thread.
class MemoryDisks final : public MPIODiskDescriptions {
 public:
  explicit MemoryDisks(BackedRegistry& registry) noexcept : registry_(registry) {}
  void set(EntryID media, DiskDescription description);
  void forget(EntryID media);
  std::optional<DiskDescription> describe(RegistryHandle media) override;

 private:
  BackedRegistry& registry_;
  ob::Mutex mutex_;
  ob::NumberMap<DiskDescription> disks_ OB_GUARDED_BY(mutex_);
};

// Thread safety: every function may be called on any thread.
class MemoryDetails final : public MPIODetails {
 public:
  // Sets the details of the entry, or removes them if `details` is null.
  void set(EntryID entryID, ob::Ref<const ob::Dictionary> details);
  void setHost(ob::Ref<const ob::Dictionary> details);
  ob::Ref<const ob::Dictionary> ofLogicalUnit(EntryID unit) override;
  ob::Ref<const ob::Dictionary> ofPath(EntryID unit, EntryID path) override;
  ob::Ref<const ob::Dictionary> ofHost() override;

 private:
  ob::Mutex mutex_;
  ob::NumberMap<ob::Ref<const ob::Dictionary>> entries_ OB_GUARDED_BY(mutex_);
  ob::Ref<const ob::Dictionary> host_ OB_GUARDED_BY(mutex_);
};

class MemoryHost final : public MPIOHost {
 public:
  // Ownership: takes the registry over.
  explicit MemoryHost(std::unique_ptr<MemoryRegistry> registry = std::make_unique<MemoryRegistry>())
      : registry_(std::move(registry)) {}

  MemoryRegistry& registry() override { return *registry_; }
  MemoryTunable& tunable() override { return tunable_; }
  MemoryDisks& disks() override { return disks_; }
  MemoryDetails* details() override { return &details_; }
  std::uint32_t effectiveUser() override { return effectiveUser_; }
  void setEffectiveUser(std::uint32_t user) { effectiveUser_ = user; }

 private:
  std::unique_ptr<MemoryRegistry> registry_;
  MemoryTunable tunable_;
  MemoryDisks disks_{*registry_};
  MemoryDetails details_;
  std::atomic<std::uint32_t> effectiveUser_{0};
};

}  // namespace tavrenix::memory
