// A whole host in memory: the registry, the tunable and the disk descriptions, as their owner fills
// them.
#pragma once

#include "model/host.hpp"
#include "model/memory/registry.hpp"

namespace tavrenix::memory {

// Answers for known entries only. Any thread.
class MemoryTunable final : public MPIOKernelTunable {
 public:
  // 0 stands for a driver that is not there: it is never scanned.
  void setGeneration(std::uint32_t generation);
  std::uint32_t generation() const;
  // As long as it lives, whoever asks for the generation is told what was told last, and so does
  // not scan. One at a time.
  class HeldGeneration {
   public:
    explicit HeldGeneration(MemoryTunable& tunable) : tunable_(tunable) { tunable.hold(true); }
    ~HeldGeneration() { tunable_.hold(false); }
    HeldGeneration(const HeldGeneration&) = delete;
    HeldGeneration& operator=(const HeldGeneration&) = delete;

   private:
    MemoryTunable& tunable_;
  };
  void setLogicalUnitStatistics(EntryID unit, SCSILogicalUnitStatistics record);
  void setPathStatistics(EntryID path, SCSIPathStatistics record);
  std::optional<SCSIPathStatistics> pathStatistics(EntryID path) const;
  void forget(EntryID entryID);

  int sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength, const void* newValue,
                   std::size_t newLength) override;

 private:
  void hold(bool held);

  mutable std::mutex mutex_;
  std::uint32_t generation_ = 0;
  std::uint32_t told_ = 0;
  bool isHeld_ = false;
  ob::NumberMap<SCSILogicalUnitStatistics> units_;
  ob::NumberMap<SCSIPathStatistics> paths_;
  std::size_t lastPath_ = 0;  // where the last look-up in paths_ ended
};

// Any thread.
class MemoryDisks final : public MPIODiskDescriptions {
 public:
  explicit MemoryDisks(const MemoryRegistry& registry) noexcept : registry_(registry) {}
  void set(EntryID media, DiskDescription description);
  void forget(EntryID media);
  std::optional<DiskDescription> describe(RegistryHandle media) override;

 private:
  const MemoryRegistry& registry_;
  mutable std::mutex mutex_;
  ob::NumberMap<DiskDescription> disks_;
  std::size_t lastDisk_ = 0;  // where the last look-up in disks_ ended
};

class MemoryHost final : public MPIOHost {
 public:
  MemoryRegistry& registry() override { return registry_; }
  MemoryTunable& tunable() override { return tunable_; }
  MemoryDisks& disks() override { return disks_; }
  std::uint32_t effectiveUser() override { return effectiveUser_; }
  void setEffectiveUser(std::uint32_t user) { effectiveUser_ = user; }

 private:
  MemoryRegistry registry_;
  MemoryTunable tunable_;
  MemoryDisks disks_{registry_};
  std::atomic<std::uint32_t> effectiveUser_{0};
};

}  // namespace tavrenix::memory
