// The notification half of the registry.
#include <cerrno>

#include "linux/registry.hpp"

namespace tavrenix::sys {

ob::Ref<NotificationPort> LinuxRegistry::portOf(RegistryPort port) const {
  return handles_.get<HandleTable::All::Port>(port).value_or(nullptr);
}

std::shared_ptr<Registration> LinuxRegistry::registrationOf(RegistryHandle handle) const {
  return handles_.get<HandleTable::All::SharedRegistration>(handle).value_or(nullptr);
}

RegistryHandle LinuxRegistry::iteratorNext(RegistryHandle iterator) {
  if (const RegistryHandle entry = handles_.next(iterator)) return entry;
  const auto registration = registrationOf(iterator);
  const auto entry = registration ? notifications_.next(*registration) : std::nullopt;
  return entry ? handles_.open(*entry) : 0;
}

void LinuxRegistry::release(RegistryHandle handle) {
  if (const auto registration = registrationOf(handle)) notifications_.remove(*registration);
  handles_.release(handle);
}

RegistryPort LinuxRegistry::createNotificationPort() {
  const RegistryPort port = handles_.open(ob::make<NotificationPort>());
  if (notifications_.portMade()) return port;
  handles_.release(port);
  return 0;
}

void LinuxRegistry::setDispatchQueue(RegistryPort port, ob::DispatchQueue& queue) {
  if (const auto known = portOf(port)) known->setDispatchQueue(queue);
}

ob::Ref<ob::RunLoopSource> LinuxRegistry::getRunLoopSource(RegistryPort port) {
  const auto known = portOf(port);
  return known ? known->runLoopSource() : nullptr;
}

void LinuxRegistry::destroyNotificationPort(RegistryPort port) {
  const auto known = portOf(port);
  if (!known) return;
  known->destroy();
  handles_.release(port);
  notifications_.portDestroyed();
}

ob::Ref<const ob::Dictionary> LinuxRegistry::classMatching(std::string_view className) {
  return matchingOfClass(className);
}

RegistryResult<RegistryHandle> LinuxRegistry::addMatchingNotification(
    RegistryPort port, std::string_view kind, ob::Ref<const ob::Dictionary> matching,
    NotificationDelivery deliver) {
  auto request = readNotificationRequest(kind, matching.get());
  auto known = portOf(port);
  if (!request || !known) return {-EINVAL, 0};
  auto made = std::make_shared<Registration>();
  made->request = std::move(*request);
  made->port = std::move(known);
  made->deliver = std::move(deliver);
  made->handle = handles_.open(made);
  if (const int status = notifications_.add(made); status != 0) {
    handles_.release(made->handle);
    return {status, 0};
  }
  return {kSuccess, made->handle};
}

}  // namespace tavrenix::sys
