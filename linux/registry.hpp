// The device registry of a Linux machine: entries are made up from the machine when they are asked
// for.
//
// A handle is that of an entry ID, not of an open device: it stays valid, and answers as for an
// entry that is gone, when its device goes.
#pragma once

#include "linux/handles.hpp"
#include "linux/machine.hpp"
#include "linux/notifications.hpp"
#include "linux/requests.hpp"

namespace tavrenix::sys {

class LinuxRegistry final : public MPIODeviceRegistry {
 public:
  // All are borrowed and outlive the registry.
  LinuxRegistry(Machine& machine, PathDaemon& daemon, Notifications& notifications)
      : machine_(machine), requests_(machine, daemon), notifications_(notifications) {}

  RegistryHandle findServiceByEntryID(EntryID entryID) override;
  RegistryResult<RegistryHandle> findServicesByEntryID(EntryID entryID) override;
  RegistryResult<RegistryHandle> findServicesByClass(std::string_view className) override;
  RegistryResult<ob::Ref<const ob::Dictionary>> copyProperties(RegistryHandle entry) override;
  ob::Ref<const ob::Object> copyProperty(RegistryHandle entry, const ob::String& name) override;
  ob::Ref<const ob::Object> searchProperty(RegistryHandle entry, std::string_view plane,
                                           const ob::String& name, std::uint32_t options) override;
  // Only "Properties" of a logical unit is acted on. Returns when the driver has taken the request,
  // or has been left as it was; a status is the negative error number of the cause.
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

  // For the neighbouring seams of the same host.
  std::optional<EntryID> entryIDOf(RegistryHandle entry) const {
    return handles_.get<EntryID>(entry);
  }
  std::size_t openHandles() const { return handles_.size(); }

 private:
  using Iterator = HandleTable::All::Iterator;

  ob::Ref<NotificationPort> portOf(RegistryPort port) const;
  std::shared_ptr<Registration> registrationOf(RegistryHandle handle) const;

  Machine& machine_;
  Requests requests_;
  HandleTable handles_;
  Notifications& notifications_;
};

}  // namespace tavrenix::sys
