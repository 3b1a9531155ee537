// The notification half of the registry.
#include <cerrno>

#include "linux/registry.hpp"
#include "model/registry_names.hpp"

namespace tavrenix::sys {

namespace {

// The one key of a matching dictionary.
inline constinit ob::ConstantString kClassNameStorage("Class Name");
inline constexpr const ob::String& kClassName = kClassNameStorage.string;

}  // namespace

RegistryHandle LinuxRegistry::iteratorNext(RegistryHandle iterator) {
  if (const auto registration = handles_.registration(iterator)) {
    const auto entry = notifications_.next(*registration);
    return entry ? handles_.openEntry(*entry) : 0;
  }
  return handles_.next(iterator);
}

void LinuxRegistry::release(RegistryHandle handle) {
  if (const auto registration = handles_.registration(handle)) notifications_.remove(*registration);
  handles_.release(handle);
}

RegistryPort LinuxRegistry::createNotificationPort() {
  return handles_.openPort(ob::make<NotificationPort>());
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
}

ob::Ref<const ob::Dictionary> LinuxRegistry::classMatching(std::string_view className) {
  ob::DictionaryBuilder matching(1);
  matching.add(kClassName, ob::String::make(className));
  return matching.build();
}

RegistryResult<RegistryHandle> LinuxRegistry::addMatchingNotification(
    RegistryPort port, std::string_view kind, ob::Ref<const ob::Dictionary> matching,
    NotificationDelivery deliver) {
  const auto* className = matching ? matching->valueAs<ob::String>(kClassName) : nullptr;
  const bool ofArrivals = kind == registry::kFirstMatchNotification;
  const auto known = handles_.port(port);
  if (className == nullptr || !known || !(ofArrivals || kind == registry::kTerminateNotification)) {
    return {-EINVAL, 0};
  }
  auto made = std::make_shared<Registration>();
  made->port = known;
  made->ofArrivals = ofArrivals;
  made->className = className->view();
  made->deliver = std::move(deliver);
  made->handle = handles_.openRegistration(made);
  if (const int status = notifications_.add(made); status != 0) {
    handles_.release(made->handle);
    return {status, 0};
  }
  return {kSuccess, made->handle};
}

}  // namespace tavrenix::sys
