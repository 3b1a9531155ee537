// The device registry over any backing: its handles, iterators, ports and registrations.
//
// A handle refers to an entry ID, not to an open device. It stays valid when the entry goes;
// functions then report that the entry is gone.
#pragma once

#include "host/handles.hpp"

namespace tavrenix {

class BackedRegistry : public MPIODeviceRegistry {
 public:
  // The statuses for a handle of the wrong kind, and for an entry that is gone.
  static constexpr KernelStatus kBadHandle = -9;  // -EBADF
  static constexpr KernelStatus kEntryGone = -6;  // -ENXIO

  // Ownership: borrows the backing, which outlives the registry.
  explicit BackedRegistry(Backing& backing) noexcept : backing_(backing) {}
  BackedRegistry(const BackedRegistry&) = delete;
  BackedRegistry& operator=(const BackedRegistry&) = delete;
  // Destroys the notification ports that are left. REQUIRES: no other thread uses the registry.
  ~BackedRegistry() override;

  RegistryHandle findServiceByEntryID(EntryID entryID) override;
  Result<RegistryHandle> findServicesByEntryID(EntryID entryID) override;
  Result<RegistryHandle> findServicesByClass(std::string_view className) override;
  Result<ob::Ref<const ob::Dictionary>> copyProperties(RegistryHandle entry) override;
  ob::Ref<const ob::Object> copyProperty(RegistryHandle entry, const ob::String& name) override;
  ob::Ref<const ob::Object> searchProperty(RegistryHandle entry, std::string_view plane,
                                           const ob::String& name, std::uint32_t options) override;
  KernelStatus setProperty(RegistryHandle entry, const ob::String& name,
                           const ob::Object& value) override;
  Result<RegistryHandle> createIterator(RegistryHandle entry, std::string_view plane,
                                        std::uint32_t options) override;
  RegistryHandle iteratorNext(RegistryHandle iterator) override;
  bool conformsTo(RegistryHandle entry, std::string_view className) override;
  Result<EntryID> getEntryID(RegistryHandle entry) override;
  void release(RegistryHandle handle) override;

  RegistryPort createNotificationPort() override;
  void setDispatchQueue(RegistryPort port, ob::DispatchQueue& queue) override;
  ob::Ref<ob::RunLoopSource> getRunLoopSource(RegistryPort port) override;
  void destroyNotificationPort(RegistryPort port) override;
  ob::Ref<const ob::Dictionary> classMatching(std::string_view className) override;
  Result<RegistryHandle> addMatchingNotification(RegistryPort port, std::string_view kind,
                                                 ob::Ref<const ob::Dictionary> matching,
                                                 NotificationDelivery deliver) override;

  // Returns the ID of the entry that the handle refers to, or nothing if it is no handle of an
  // entry. For the other seams of the same host.
  std::optional<EntryID> entryIDOf(RegistryHandle entry);
  // Returns the number of handles, iterators and ports that have not been released.
  std::size_t openHandles() { return handles_.size(); }
  Announcements& announcements() noexcept { return announcements_; }

 private:
  RegistryHandle openIterator(const Entries& entries);
  ob::Ref<NotificationPort> portOf(RegistryPort port);

  Backing& backing_;
  HandleTable handles_;
  Announcements announcements_{backing_};
  ob::Mutex listening_;  // held while listening starts or stops
  std::size_t ports_ OB_GUARDED_BY(listening_) = 0;
};

}  // namespace tavrenix
