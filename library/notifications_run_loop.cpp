// Notifications on a run loop: the client's source registers when it is added to a loop and ends
// the registration when it is taken out.
#include <new>

#include "library/notification.hpp"
#include "library/pool.hpp"
#include "model/host.hpp"
#include "runtime/c_bridge.hpp"

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

// Gives the record a port whose source is in the loop and mode. False where it has one already, and
// where a step fails, which leaves the steps before it.
bool openPort(MPIONotification& record, ObRunLoopRef loop, ObStringRef mode) {
  const std::lock_guard lock(record.mutex);
  if (record.port != 0) return false;
  MPIODeviceRegistry& registry = sharedHost().registry();
  record.port = registry.createNotificationPort();
  if (record.port == 0) return false;
  record.portSource = registry.getRunLoopSource(record.port);
  if (!record.portSource || !ObRunLoopAddSource(loop, toC(record.portSource), mode)) return false;
  gMPIOActiveNotificationPorts.fetch_add(1);
  return true;
}

// Failures are silent, and what was registered by then stays.
void MPIOScheduleNotifications(void* info, ObRunLoopRef loop, ObStringRef mode) {
  const auto pool = MPIOScratchPoolCreate();
  if (!pool) return;
  const auto record = ob::Ref<MPIONotification>::retain(&recordOf(info));
  try {
    if (!openPort(*record, loop, mode)) return;
    registerNotifications(*record, [&](NotificationHandler handler, NotificationIterator iterator) {
      handler(*record, iterator);
    });
  } catch (const std::bad_alloc&) {
  }
}

void MPIOCancelNotifications(void* info, ObRunLoopRef loop, ObStringRef mode) {
  const auto pool = MPIOScratchPoolCreate();
  if (!pool) return;
  const auto record = ob::Ref<MPIONotification>::retain(&recordOf(info));
  ob::Ref<ob::RunLoopSource> portSource;
  {
    const std::lock_guard lock(record->mutex);
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
  try {
    auto record = std::make_unique<MPIONotification>(MPIONotification::kRunLoop, 0);
    record->callback = callback;
    record->context = context;
    const ObRunLoopSourceContext source{record.get(),
                                        retainRecord,
                                        releaseRecord,
                                        MPIOScheduleNotifications,
                                        MPIOCancelNotifications,
                                        nullptr};
    record->clientSource = ObRunLoopSourceCreate(&source);
    // From here on the source owns the record.
    return record->clientSource == nullptr ? nullptr : record.release()->clientSource;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // extern "C"
