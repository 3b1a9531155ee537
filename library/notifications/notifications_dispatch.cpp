// Notifications on a dispatch queue.
#include "host/host.hpp"
#include "library/call.hpp"
#include "library/notifications/notification.hpp"

using namespace tavrenix;

namespace {

constexpr NotificationFailure kNoMemory{"Failed to allocate an internal structure",
                                        kErrorNoResources, std::nullopt};
constexpr NotificationFailure kNoPort{"Unable to create notification port", kErrorNoResources,
                                      std::nullopt};

// Stores the error and returns null. Ownership: on purpose the error belongs to the caller's pool
// and the caller must not release it, unlike every other error of the interface.
MPIONotificationRef report(const NotificationFailure& failure, ObErrorRef* errorOut) noexcept {
  if (errorOut == nullptr) return nullptr;
  // If memory runs out here too, the caller gets null alone.
  ob::catchExhaustion([&] {
    *errorOut = ob::toC<ObErrorRef>(MPIOErrorCreate(failure.message, failure.code, failure.result));
  });
  return nullptr;
}

// The list of registrations that clients have not destroyed. MPIONotificationDestroy looks a
// pointer up in it, and so never reads through a pointer that is no registration.
ob::Mutex gRegisteredMutex;
MPIONotification* gFirstRegistered OB_GUARDED_BY(gRegisteredMutex) = nullptr;

void enterRegistered(MPIONotification& record) {
  const ob::MutexLock lock(gRegisteredMutex);
  record.nextRegistered = std::exchange(gFirstRegistered, &record);
}

// Takes the record out of the list. Returns false if the list does not have it.
bool withdrawRegistered(const MPIONotification* wanted) {
  const ob::MutexLock lock(gRegisteredMutex);
  for (MPIONotification** link = &gFirstRegistered; *link != nullptr;
       link = &(*link)->nextRegistered) {
    if (*link != wanted) continue;
    *link = wanted->nextRegistered;
    return true;
  }
  return false;
}

bool openPort(MPIONotification& record, ob::DispatchQueue& queue) {
  const ob::MutexLock lock(record.mutex);
  MPIODeviceRegistry& registry = sharedHost().registry();
  record.port = registry.createNotificationPort();
  if (record.port == 0) return false;
  registry.setDispatchQueue(record.port, queue);
  gMPIOActiveNotificationPorts.fetch_add(1);
  return true;
}

// Opens the port and registers. On purpose a failure undoes nothing: the port, the registrations
// and the queued tasks stay. Each task retains the record.
std::optional<NotificationFailure> start(MPIONotification& record, ob::DispatchQueue& queue) {
  if (!openPort(record, queue)) return kNoPort;
  return registerNotifications(record,
                               [&](NotificationHandler handler, NotificationIterator iterator) {
                                 queue.async([held = ob::Ref<MPIONotification>::retain(&record),
                                              handler, iterator] { handler(*held, iterator); });
                               });
}

}  // namespace

extern "C" {

MPIONotificationRef MPIONotificationCreateWithDispatchQueue(MPIONotificationBlock* block,
                                                            ObDispatchQueueRef queue,
                                                            ObErrorRef* errorOut) {
  if (errorOut != nullptr) *errorOut = nullptr;
  auto* known = const_cast<ob::DispatchQueue*>(ob::fromC<ob::DispatchQueue>(queue));
  if (known == nullptr) return report(kNoPort, errorOut);
  ob::Ref<MPIONotification> record;
  std::optional<NotificationFailure> failure = kNoMemory;
  ob::catchExhaustion([&] {
    record = ob::Ref<MPIONotification>::adopt(new MPIONotification(1));
    record->block = block;
    failure = start(*record, *known);
  });
  if (failure) return report(*failure, errorOut);
  enterRegistered(*record);
  return record.detach();
}

void MPIONotificationDestroy(MPIONotificationRef notification) {
  if (!withdrawRegistered(notification)) return;
  endNotifications(*notification);
  notification->release();
}

}  // extern "C"
