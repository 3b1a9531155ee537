// Notifications on a dispatch queue.
#include <new>

#include "library/notification.hpp"
#include "model/host.hpp"
#include "runtime/c_bridge.hpp"

using namespace tavrenix;

namespace {

// The error belongs to the caller's pool: it is stored without a reference of its own, unlike every
// other error that is handed out.
MPIONotificationRef report(const NotificationFailure& failure, ObErrorRef* errorOut) noexcept {
  if (errorOut == nullptr) return nullptr;
  try {
    *errorOut = ob::toC<ObErrorRef>(MPIOErrorCreate(failure.message, failure.code, failure.result));
  } catch (const std::bad_alloc&) {  // a failure all the same
  }
  return nullptr;
}

constexpr NotificationFailure kNoMemory{"Failed to allocate an internal structure",
                                        kErrorNoResources, std::nullopt};
constexpr NotificationFailure kNoPort{"Unable to create notification port", kErrorNoResources,
                                      std::nullopt};

// A failure undoes nothing: the port, the registrations made and the tasks queued by then stay. The
// tasks hold the record.
std::optional<NotificationFailure> start(MPIONotification& record, ob::DispatchQueue& queue) {
  MPIODeviceRegistry& registry = sharedHost().registry();
  record.port = registry.createNotificationPort();
  if (record.port == 0) return kNoPort;
  registry.setDispatchQueue(record.port, queue);
  gMPIOActiveNotificationPorts.fetch_add(1);
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
  try {
    auto record =
        ob::Ref<MPIONotification>::adopt(new MPIONotification(MPIONotification::kDispatch, 1));
    record->block = block;
    if (const auto failure = start(*record, *known)) return report(*failure, errorOut);
    return record.detach();
  } catch (const std::bad_alloc&) {
    return report(kNoMemory, errorOut);
  }
}

void MPIONotificationDestroy(MPIONotificationRef notification) {
  if (notification == nullptr || notification->magic != MPIONotification::kMagic) return;
  if (notification->kind != MPIONotification::kDispatch) return;
  endNotifications(*notification);
  notification->release();
}

}  // extern "C"
