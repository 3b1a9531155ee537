// The notification half of the in-memory registry.
#include <new>

#include "model/memory/registry.hpp"

namespace tavrenix::memory {

using Lock = std::lock_guard<std::mutex>;

MemoryRegistry::~MemoryRegistry() {
  for (const auto& slot : handles_.slots()) {
    if (const auto* port = std::get_if<AllHandles::Port>(&slot)) (*port)->destroy();
  }
}

ob::Ref<NotificationPort> MemoryRegistry::portOf(RegistryPort port) {
  const Lock lock(mutex_);
  const auto* known = handles_.opened<AllHandles::Port>(port);
  return known == nullptr ? nullptr : *known;
}

RegistryPort MemoryRegistry::createNotificationPort() {
  const Lock lock(mutex_);
  return handles_.open(ob::make<NotificationPort>());
}

void MemoryRegistry::setDispatchQueue(RegistryPort port, ob::DispatchQueue& queue) {
  if (const auto known = portOf(port)) known->setDispatchQueue(queue);
}

ob::Ref<ob::RunLoopSource> MemoryRegistry::getRunLoopSource(RegistryPort port) {
  const auto known = portOf(port);
  return known ? known->runLoopSource() : nullptr;
}

void MemoryRegistry::destroyNotificationPort(RegistryPort port) {
  const auto known = portOf(port);
  if (!known) return;
  known->destroy();
  release(port);
}

ob::Ref<const ob::Dictionary> MemoryRegistry::classMatching(std::string_view className) {
  return matchingOfClass(className);
}

RegistryResult<RegistryHandle> MemoryRegistry::addMatchingNotification(
    RegistryPort port, std::string_view kind, ob::Ref<const ob::Dictionary> matching,
    NotificationDelivery deliver) {
  auto request = readNotificationRequest(kind, matching.get());
  if (!request) return {kNoSuchObject, 0};
  auto made = std::make_shared<Registration>();
  made->request = std::move(*request);
  made->deliver = std::move(deliver);
  const Lock lock(mutex_);
  const auto* known = handles_.opened<AllHandles::Port>(port);
  if (known == nullptr) return {kNoSuchObject, 0};
  made->port = *known;
  if (made->request.ofArrivals) {
    for (auto& entry : tree_.ofClass(made->request.className)) {
      made->waiting.push_back(std::move(entry));
    }
  }
  made->handle = handles_.open(made);
  try {
    registrations_.add(made);
  } catch (const std::bad_alloc&) {
    handles_.release(made->handle);
    throw;
  }
  return {kSuccess, made->handle};
}

bool MemoryRegistry::notificationsAreSettled() const {
  const Lock lock(mutex_);
  return registrations_.isSettled();
}

MemoryRegistry::HeldNotifications::HeldNotifications(MemoryRegistry& registry)
    : registry_(registry) {
  const Lock lock(registry_.mutex_);
  registry_.registrations_.hold();
}

MemoryRegistry::HeldNotifications::~HeldNotifications() {
  const Lock lock(registry_.mutex_);
  registry_.registrations_.letGo();
}

}  // namespace tavrenix::memory
