#include "tests/support/watched.hpp"

namespace tavrenix::test {

namespace {

constexpr KernelStatus kInjected = -536870212;

class WatchedRegistry final : public memory::MemoryRegistry {
  using Base = memory::MemoryRegistry;
  using Handle = Result<RegistryHandle>;
  using Value = ob::Ref<const ob::Object>;
  static constexpr Handle kNoHandle{kInjected, 0};

 public:
  explicit WatchedRegistry(Watch& watch) : watch_(watch) {}
  RegistryHandle findServiceByEntryID(EntryID id) override {
    return watch_.fails() ? 0 : Base::findServiceByEntryID(id);
  }
  Handle findServicesByEntryID(EntryID id) override {
    return watch_.fails() ? kNoHandle : Base::findServicesByEntryID(id);
  }
  Handle findServicesByClass(std::string_view className) override {
    return watch_.fails() ? kNoHandle : Base::findServicesByClass(className);
  }
  Result<ob::Ref<const ob::Dictionary>> copyProperties(RegistryHandle entry) override {
    if (watch_.fails()) return {kInjected, nullptr};
    return Base::copyProperties(entry);
  }
  Value copyProperty(RegistryHandle entry, const ob::String& name) override {
    return watch_.fails() ? nullptr : Base::copyProperty(entry, name);
  }
  Value searchProperty(RegistryHandle entry, std::string_view plane, const ob::String& name,
                       std::uint32_t options) override {
    return watch_.fails() ? nullptr : Base::searchProperty(entry, plane, name, options);
  }
  KernelStatus setProperty(RegistryHandle entry, const ob::String& name,
                           const ob::Object& value) override {
    return watch_.fails() ? kInjected : Base::setProperty(entry, name, value);
  }
  Handle createIterator(RegistryHandle entry, std::string_view plane,
                        std::uint32_t options) override {
    return watch_.fails() ? kNoHandle : Base::createIterator(entry, plane, options);
  }
  RegistryHandle iteratorNext(RegistryHandle iterator) override {
    return watch_.fails() ? 0 : Base::iteratorNext(iterator);
  }
  bool conformsTo(RegistryHandle entry, std::string_view className) override {
    return !watch_.fails() && Base::conformsTo(entry, className);
  }
  Result<EntryID> getEntryID(RegistryHandle entry) override {
    return watch_.fails() ? Result<EntryID>{kInjected, 0} : Base::getEntryID(entry);
  }
  void release(RegistryHandle handle) override {
    Base::release(handle);
    if (watch_.onRelease) watch_.onRelease();
  }
  RegistryPort createNotificationPort() override {
    return watch_.fails() ? 0 : Base::createNotificationPort();
  }
  ob::Ref<ob::RunLoopSource> getRunLoopSource(RegistryPort port) override {
    return watch_.fails() ? nullptr : Base::getRunLoopSource(port);
  }
  ob::Ref<const ob::Dictionary> classMatching(std::string_view className) override {
    return watch_.fails() ? nullptr : Base::classMatching(className);
  }
  Handle addMatchingNotification(RegistryPort port, std::string_view kind,
                                 ob::Ref<const ob::Dictionary> matching,
                                 NotificationDelivery deliver) override {
    if (watch_.fails()) return kNoHandle;
    return Base::addMatchingNotification(port, kind, std::move(matching), std::move(deliver));
  }

 private:
  Watch& watch_;
};

}  // namespace

WatchedHost::WatchedHost() : memory(std::make_unique<WatchedRegistry>(watch)) {}

int WatchedHost::sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength,
                              const void* newValue, std::size_t newLength) {
  if (watch.fails()) return -1;
  if (watch.answerTunable) return watch.answerTunable(oldValue, oldLength, newValue, newLength);
  return memory.tunable().sysctlbyname(name, oldValue, oldLength, newValue, newLength);
}

std::optional<DiskDescription> WatchedHost::describe(RegistryHandle media) {
  return watch.fails() ? std::nullopt : memory.disks().describe(media);
}

}  // namespace tavrenix::test
