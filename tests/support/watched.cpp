#include "tests/support/watched.hpp"

#include <new>
#include <numeric>

namespace tavrenix::test {

using Lock = std::lock_guard<std::mutex>;

void Watch::failAt(std::size_t position) {
  const Lock lock(mutex_);
  failAt_ = position;
}

void Watch::failAll(Operation operation) {
  const Lock lock(mutex_);
  failAll_ = operation;
}

void Watch::exhaustAll(Operation operation) {
  const Lock lock(mutex_);
  exhaustAll_ = operation;
}

void Watch::reset() {
  const Lock lock(mutex_);
  counts_ = {};
  position_ = 0;
  failAt_ = kNone;
  failAll_ = Operation::kCount;
  exhaustAll_ = Operation::kCount;
}

bool Watch::fails(Operation operation) {
  const Lock lock(mutex_);
  ++counts_[static_cast<std::size_t>(operation)];
  if (operation == exhaustAll_) throw std::bad_alloc();
  if (operation == Operation::kRelease) return false;
  if (position_++ == failAt_ || operation == failAll_) return true;
  return alsoFails && alsoFails(operation);
}

std::size_t Watch::count(Operation operation) const {
  const Lock lock(mutex_);
  return counts_[static_cast<std::size_t>(operation)];
}

std::size_t Watch::registryOperations() const {
  const Lock lock(mutex_);
  return std::accumulate(counts_.begin(), counts_.begin() + static_cast<int>(Operation::kRelease),
                         std::size_t{0});
}

std::size_t Watch::failable() const {
  const Lock lock(mutex_);
  return position_;
}

namespace {

class WatchedRegistry final : public MPIODeviceRegistry {
  using Value = ob::Ref<const ob::Object>;

 public:
  WatchedRegistry(MPIODeviceRegistry& inner, Watch& watch) : inner_(inner), watch_(watch) {}
  RegistryHandle findServiceByEntryID(EntryID entryID) override {
    if (watch_.fails(Operation::kFindServiceByEntryID)) return 0;
    return inner_.findServiceByEntryID(entryID);
  }
  RegistryResult<RegistryHandle> findServicesByEntryID(EntryID entryID) override {
    if (watch_.fails(Operation::kFindServicesByEntryID)) return {kInjectedStatus, 0};
    return inner_.findServicesByEntryID(entryID);
  }
  RegistryResult<RegistryHandle> findServicesByClass(std::string_view className) override {
    if (watch_.fails(Operation::kFindServicesByClass)) return {kInjectedStatus, 0};
    return inner_.findServicesByClass(className);
  }
  RegistryResult<ob::Ref<const ob::Dictionary>> copyProperties(RegistryHandle entry) override {
    if (watch_.fails(Operation::kCopyProperties)) return {kInjectedStatus, nullptr};
    return inner_.copyProperties(entry);
  }
  Value copyProperty(RegistryHandle entry, const ob::String& name) override {
    if (watch_.fails(Operation::kCopyProperty)) return nullptr;
    return inner_.copyProperty(entry, name);
  }
  Value searchProperty(RegistryHandle entry, std::string_view plane, const ob::String& name,
                       std::uint32_t options) override {
    if (watch_.fails(Operation::kSearchProperty)) return nullptr;
    return inner_.searchProperty(entry, plane, name, options);
  }
  KernelStatus setProperty(RegistryHandle entry, const ob::String& name,
                           const ob::Object& value) override {
    if (watch_.fails(Operation::kSetProperty)) return kInjectedStatus;
    return inner_.setProperty(entry, name, value);
  }
  RegistryResult<RegistryHandle> createIterator(RegistryHandle entry, std::string_view plane,
                                                std::uint32_t options) override {
    if (watch_.fails(Operation::kCreateIterator)) return {kInjectedStatus, 0};
    return inner_.createIterator(entry, plane, options);
  }
  RegistryHandle iteratorNext(RegistryHandle iterator) override {
    return watch_.fails(Operation::kIteratorNext) ? 0 : inner_.iteratorNext(iterator);
  }
  bool conformsTo(RegistryHandle entry, std::string_view className) override {
    return !watch_.fails(Operation::kConformsTo) && inner_.conformsTo(entry, className);
  }
  RegistryResult<EntryID> getEntryID(RegistryHandle entry) override {
    if (watch_.fails(Operation::kGetEntryID)) return {kInjectedStatus, 0};
    return inner_.getEntryID(entry);
  }
  void release(RegistryHandle handle) override {
    watch_.fails(Operation::kRelease);
    inner_.release(handle);
    if (watch_.onRelease) watch_.onRelease();
  }
  RegistryPort createNotificationPort() override {
    return watch_.fails(Operation::kCreateNotificationPort) ? 0 : inner_.createNotificationPort();
  }
  void setDispatchQueue(RegistryPort port, ob::DispatchQueue& queue) override {
    inner_.setDispatchQueue(port, queue);
  }
  ob::Ref<ob::RunLoopSource> getRunLoopSource(RegistryPort port) override {
    return watch_.fails(Operation::kGetRunLoopSource) ? nullptr : inner_.getRunLoopSource(port);
  }
  void destroyNotificationPort(RegistryPort port) override { inner_.destroyNotificationPort(port); }
  ob::Ref<const ob::Dictionary> classMatching(std::string_view className) override {
    return watch_.fails(Operation::kClassMatching) ? nullptr : inner_.classMatching(className);
  }
  RegistryResult<RegistryHandle> addMatchingNotification(RegistryPort port, std::string_view kind,
                                                         ob::Ref<const ob::Dictionary> matching,
                                                         NotificationDelivery deliver) override {
    if (watch_.fails(Operation::kAddMatchingNotification)) return {kInjectedStatus, 0};
    return inner_.addMatchingNotification(port, kind, std::move(matching), std::move(deliver));
  }

 private:
  MPIODeviceRegistry& inner_;
  Watch& watch_;
};

class WatchedTunable final : public MPIOKernelTunable {
 public:
  WatchedTunable(MPIOKernelTunable& inner, Watch& watch) : inner_(inner), watch_(watch) {}
  int sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength, const void* newValue,
                   std::size_t newLength) override {
    if (watch_.fails(Operation::kTunable)) return -1;
    if (watch_.answerTunable) return watch_.answerTunable(oldValue, oldLength, newValue, newLength);
    return inner_.sysctlbyname(name, oldValue, oldLength, newValue, newLength);
  }

 private:
  MPIOKernelTunable& inner_;
  Watch& watch_;
};

class WatchedDisks final : public MPIODiskDescriptions {
 public:
  WatchedDisks(MPIODiskDescriptions& inner, Watch& watch) : inner_(inner), watch_(watch) {}
  std::optional<DiskDescription> describe(RegistryHandle media) override {
    if (watch_.fails(Operation::kDescribe)) return std::nullopt;
    return inner_.describe(media);
  }

 private:
  MPIODiskDescriptions& inner_;
  Watch& watch_;
};

}  // namespace

WatchedSeams::WatchedSeams(MPIOHost& inner)
    : inner_(inner),
      registry_(std::make_unique<WatchedRegistry>(inner.registry(), watch)),
      tunable_(std::make_unique<WatchedTunable>(inner.tunable(), watch)),
      disks_(std::make_unique<WatchedDisks>(inner.disks(), watch)) {}

}  // namespace tavrenix::test
