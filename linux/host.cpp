// The host of programs that run on Linux.
#include <unistd.h>

#include "model/host.hpp"

namespace tavrenix {

namespace {

// A machine without multipathed storage: every search ends at once.
class NoEntries final : public MPIODeviceRegistry {
 public:
  RegistryHandle findServiceByEntryID(EntryID) override { return 0; }
  RegistryResult<RegistryHandle> findServicesByEntryID(EntryID) override { return {-1, 0}; }
  RegistryResult<RegistryHandle> findServicesByClass(std::string_view) override { return {-1, 0}; }
  RegistryResult<ob::Ref<const ob::Dictionary>> copyProperties(RegistryHandle) override {
    return {-1, nullptr};
  }
  ob::Ref<const ob::Object> copyProperty(RegistryHandle, const ob::String&) override {
    return nullptr;
  }
  ob::Ref<const ob::Object> searchProperty(RegistryHandle, std::string_view, const ob::String&,
                                           std::uint32_t) override {
    return nullptr;
  }
  KernelStatus setProperty(RegistryHandle, const ob::String&, const ob::Object&) override {
    return -1;
  }
  RegistryResult<RegistryHandle> createIterator(RegistryHandle, std::string_view,
                                                std::uint32_t) override {
    return {-1, 0};
  }
  RegistryHandle iteratorNext(RegistryHandle) override { return 0; }
  bool conformsTo(RegistryHandle, std::string_view) override { return false; }
  RegistryResult<EntryID> getEntryID(RegistryHandle) override { return {-1, 0}; }
  void release(RegistryHandle) override {}
  RegistryPort createNotificationPort() override { return 0; }
  void setDispatchQueue(RegistryPort, ob::DispatchQueue&) override {}
  ob::Ref<ob::RunLoopSource> getRunLoopSource(RegistryPort) override { return nullptr; }
  void destroyNotificationPort(RegistryPort) override {}
  ob::Ref<const ob::Dictionary> classMatching(std::string_view) override { return nullptr; }
  RegistryResult<RegistryHandle> addMatchingNotification(RegistryPort, std::string_view,
                                                         ob::Ref<const ob::Dictionary>,
                                                         NotificationDelivery) override {
    return {-1, 0};
  }
};

class NoDriver final : public MPIOKernelTunable {
 public:
  int sysctlbyname(const char*, void*, std::size_t*, const void*, std::size_t) override {
    return -1;
  }
};

class NoDisks final : public MPIODiskDescriptions {
 public:
  std::optional<DiskDescription> describe(RegistryHandle) override { return std::nullopt; }
};

class LinuxHost final : public MPIOHost {
 public:
  MPIODeviceRegistry& registry() override { return registry_; }
  MPIOKernelTunable& tunable() override { return tunable_; }
  MPIODiskDescriptions& disks() override { return disks_; }
  std::uint32_t effectiveUser() override { return ::geteuid(); }

 private:
  NoEntries registry_;
  NoDriver tunable_;
  NoDisks disks_;
};

}  // namespace

MPIOHost& sharedHost() {
  static MPIOHost& host = *new LinuxHost;  // never destroyed: exit handlers still use it
  return host;
}

}  // namespace tavrenix
