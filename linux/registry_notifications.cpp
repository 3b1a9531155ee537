// The notification half of the registry.
#include <cerrno>

#include "linux/registry.hpp"

namespace tavrenix::sys {

RegistryHandle LinuxRegistry::iteratorNext(RegistryHandle iterator) {
  if (const RegistryHandle entry = handles_.next(iterator)) return entry;
  const auto registration = handles_.registration(iterator);
  const auto entry = registration ? notifications_.next(*registration) : std::nullopt;
  return entry ? handles_.openEntry(*entry) : 0;
}

void LinuxRegistry::release(RegistryHandle handle) {
  if (const auto registration = handles_.registration(handle)) notifications_.remove(*registration);
  handles_.release(handle);
}

RegistryPort LinuxRegistry::createNotificationPort() {
  const RegistryPort port = handles_.openPort(ob::make<NotificationPort>());
  if (notifications_.portMade()) return port;
  handles_.release(port);
  return 0;
}

void LinuxRegistry::setDispatchQueue(RegistryPort port, ob::DispatchQueue& queue) {
  if (const auto known = handles_.port(port)) known->setDispatchQueue(queue);
}

ob::Ref<ob::RunLoopSource> LinuxRegistry::getRunLoopSource(RegistryPort port) {
  const auto known = handles_.port(port);
  return known ? known->runLoopSource() : nullptr;
}

void LinuxRegistry::destroyNotificationPort(RegistryPort port) {
  const auto known = handles_.port(port);
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
  auto known = handles_.port(port);
  if (!request || !known) return {-EINVAL, 0};
  auto made = std::make_shared<Registration>();
  made->request = std::move(*request);
  made->port = std::move(known);
  made->deliver = std::move(deliver);
  made->handle = handles_.openRegistration(made);
  if (const int status = notifications_.add(made); status != 0) {
    handles_.release(made->handle);
    return {status, 0};
  }
  return {kSuccess, made->handle};
}

}  // namespace tavrenix::sys
