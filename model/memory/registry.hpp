// The in-memory backing of the device registry.
//
// Threads: as the seam says; one lock guards the tree and the handles. The write handler is called
// without that lock, so it may call any operation.
#pragma once

#include <functional>
#include <mutex>
#include <optional>

#include "model/handles.hpp"
#include "model/memory/tree.hpp"

namespace tavrenix::memory {

class MemoryRegistry final : public MPIODeviceRegistry {
 public:
  MemoryRegistry() = default;
  // Ends the notification ports that are left. No other thread uses the registry by then.
  ~MemoryRegistry() override;

  // Acts on a write and returns its status. Without a handler the value becomes a property.
  using WriteHandler =
      std::function<KernelStatus(EntryID entryID, const ob::String& name, const ob::Object& value)>;

  // The tree, as its owner changes it. Each is whole when it returns.
  bool defineClass(const std::string& className, const std::string& base);
  bool addEntry(EntryID id, const std::string& className, const std::vector<EntryID>& parents,
                ob::Ref<const ob::Dictionary> properties);
  bool removeEntry(EntryID id);
  // The entry's properties, all at once. None where there is no such entry.
  ob::Ref<const ob::Dictionary> properties(EntryID id) const;
  bool replaceProperties(EntryID id, ob::Ref<const ob::Dictionary> properties);
  // The entry stays the same one. False where it or a parent is not there.
  bool replaceParents(EntryID id, const std::vector<EntryID>& parents);
  void setWriteHandler(WriteHandler handler);

  // As long as it lives, changes of the tree are noted but nobody is told of them. A driver whose
  // arrivals are seen together with a moved generation makes all of that inside.
  class HeldNotifications {
   public:
    explicit HeldNotifications(MemoryRegistry& registry);
    ~HeldNotifications();
    HeldNotifications(const HeldNotifications&) = delete;
    HeldNotifications& operator=(const HeldNotifications&) = delete;

   private:
    MemoryRegistry& registry_;
  };
  // Whether every client that is told of changes has taken up all of them, and is through with it.
  bool notificationsAreSettled() const;

  // Handles, iterators and ports given out and not yet released.
  std::size_t openHandles() const;
  // The ID behind the handle of an entry, or none; for the neighbouring seams of the same host.
  std::optional<EntryID> entryIDOf(RegistryHandle entry) const;
  // A handle of an entry, for a client that brings one: released as any other.
  RegistryHandle findServiceByEntryID(EntryID entryID) override;

  RegistryResult<RegistryHandle> findServicesByEntryID(EntryID entryID) override;
  RegistryResult<RegistryHandle> findServicesByClass(std::string_view className) override;
  RegistryResult<ob::Ref<const ob::Dictionary>> copyProperties(RegistryHandle entry) override;
  ob::Ref<const ob::Object> copyProperty(RegistryHandle entry, const ob::String& name) override;
  ob::Ref<const ob::Object> searchProperty(RegistryHandle entry, std::string_view plane,
                                           const ob::String& name, std::uint32_t options) override;
  KernelStatus setProperty(RegistryHandle entry, const ob::String& name,
                           const ob::Object& value) override;
  RegistryResult<RegistryHandle> createIterator(RegistryHandle entry, std::string_view plane,
                                                std::uint32_t options) override;
  RegistryHandle iteratorNext(RegistryHandle iterator) override;
  bool conformsTo(RegistryHandle entry, std::string_view className) override;
  RegistryResult<EntryID> getEntryID(RegistryHandle entry) override;
  void release(RegistryHandle handle) override;

  RegistryPort createNotificationPort() override;
  void setDispatchQueue(RegistryPort port, ob::DispatchQueue& queue) override;
  ob::Ref<ob::RunLoopSource> getRunLoopSource(RegistryPort port) override;
  void destroyNotificationPort(RegistryPort port) override;
  ob::Ref<const ob::Dictionary> classMatching(std::string_view className) override;
  RegistryResult<RegistryHandle> addMatchingNotification(RegistryPort port, std::string_view kind,
                                                         ob::Ref<const ob::Dictionary> matching,
                                                         NotificationDelivery deliver) override;

 private:
  static bool conforms(const ob::Ref<Entry>& entry, std::string_view className) {
    return entry->itsClass.conformsTo(className);
  }
  using AllHandles = Handles<ob::Ref<Entry>>;
  using Iterator = AllHandles::Iterator;
  using Registration = tavrenix::Registration<ob::Ref<Entry>>;

  // Null where the handle is not that of an entry. Holds mutex_ already.
  Entry* entryOf(RegistryHandle handle) const;

  // Takes mutex_ itself.
  ob::Ref<NotificationPort> portOf(RegistryPort port);

  mutable std::mutex mutex_;
  Tree tree_;
  AllHandles handles_;
  Registrations<ob::Ref<Entry>, conforms> registrations_;
  WriteHandler writeHandler_;
};

// What the host answers to an operation on something that is not there or not of the right kind.
inline constexpr KernelStatus kNoSuchObject = -536870206;

}  // namespace tavrenix::memory
