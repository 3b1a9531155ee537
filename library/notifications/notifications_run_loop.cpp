// Notifications on a run loop. Adding the client's source to a loop registers, and removing it ends
// the registration.
#include "host/host.hpp"
#include "library/call.hpp"
#include "library/notifications/notification.hpp"

using namespace tavrenix;

namespace {

MPIONotification& recordOf(void* info) {
  return *static_cast<MPIONotification*>(info);
}

void retainRecord(void* info) {
  recordOf(info).retain();
}
void releaseRecord(void* info) {
  recordOf(info).release();
}

ObRunLoopSourceRef toC(const ob::Ref<ob::RunLoopSource>& source) {
  return static_cast<ObRunLoopSourceRef>(
      static_cast<void*>(static_cast<ob::Object*>(source.get())));
}

// Opens a port for the record and adds the port's source to the loop and mode. Returns false if the
// record has a port already, or if a step fails. A failure does not undo the steps before it.
bool openPort(MPIONotification& record, ObRunLoopRef loop, ObStringRef mode) {
  const ob::MutexLock lock(record.mutex);
  if (record.port != 0) return false;
  MPIODeviceRegistry& registry = sharedHost().registry();
  record.port = registry.createNotificationPort();
  if (record.port == 0) return false;
  record.portSource = registry.getRunLoopSource(record.port);
  if (!record.portSource || !ObRunLoopAddSource(loop, toC(record.portSource), mode)) return false;
  gMPIOActiveNotificationPorts.fetch_add(1);
  return true;
}

// The schedule function of the source. On purpose a failure is silent and does not undo the
// registrations made before it.
void MPIOScheduleNotifications(void* info, ObRunLoopRef loop, ObStringRef mode) {
  const auto record = ob::Ref<MPIONotification>::retain(&recordOf(info));
  inPool([&] {
    if (!openPort(*record, loop, mode)) return;
    static_cast<void>(registerNotifications(
        *record, [&](NotificationHandler handler, NotificationIterator iterator) {
          handler(*record, iterator);
        }));
  });
}

void MPIOCancelNotifications(void* info, ObRunLoopRef loop, ObStringRef mode) {
  const auto pool = MPIOScratchPoolCreate();
  if (!pool) return;
  const auto record = ob::Ref<MPIONotification>::retain(&recordOf(info));
  ob::Ref<ob::RunLoopSource> portSource;
  {
    const ob::MutexLock lock(record->mutex);
    if (record->port == 0) return;
    std::swap(portSource, record->portSource);
  }
  gMPIOActiveNotificationPorts.fetch_sub(1);
  if (portSource) {
    ObRunLoopRemoveSource(loop, toC(portSource), mode);
    portSource->invalidate();
  }
  endNotifications(*record);
}

}  // namespace

extern "C" {

ObRunLoopSourceRef MPIONotificationCreateRunLoopSource(MPIONotificationCallback callback,
                                                       void* context) {
  return ob::catchExhaustion(ObRunLoopSourceRef{}, [&] {
    auto record = std::make_unique<MPIONotification>(0);
    record->callback = callback;
    record->context = context;
    const ObRunLoopSourceContext calls{record.get(),
                                       retainRecord,
                                       releaseRecord,
                                       MPIOScheduleNotifications,
                                       MPIOCancelNotifications,
                                       nullptr};
    const ObRunLoopSourceRef source = ObRunLoopSourceCreate(&calls);
    // From here on the source owns the record.
    if (source != nullptr) static_cast<void>(record.release());
    return source;
  });
}

}  // extern "C"
