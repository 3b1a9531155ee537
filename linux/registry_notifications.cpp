// Notifications of the Linux registry: there are none yet, so no port can be made.
#include <cerrno>

#include "linux/registry.hpp"

namespace tavrenix::sys {

RegistryPort LinuxRegistry::createNotificationPort() {
  return 0;
}

void LinuxRegistry::setDispatchQueue(RegistryPort /*port*/, ob::DispatchQueue& /*queue*/) {}

ob::Ref<ob::RunLoopSource> LinuxRegistry::getRunLoopSource(RegistryPort /*port*/) {
  return nullptr;
}

void LinuxRegistry::destroyNotificationPort(RegistryPort /*port*/) {}

ob::Ref<const ob::Dictionary> LinuxRegistry::classMatching(std::string_view /*className*/) {
  return nullptr;
}

RegistryResult<RegistryHandle> LinuxRegistry::addMatchingNotification(
    RegistryPort /*port*/, std::string_view /*kind*/, ob::Ref<const ob::Dictionary> /*matching*/,
    NotificationDelivery /*deliver*/) {
  return {-ENOTSUP, 0};
}

}  // namespace tavrenix::sys
