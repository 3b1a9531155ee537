// Begins and ends a record's registrations with the device registry.
#include "host/host.hpp"
#include "host/registry_names.hpp"
#include "library/notifications/notification.hpp"

namespace tavrenix {

std::atomic<std::uint32_t> gMPIOActiveNotificationPorts{0};

namespace {

struct RegisteredClass {
  std::string_view className;
  std::string_view notFound;
  std::string_view notAdded;
};
// Each class has two iterators in the record, in this order: arrivals, then departures.
constexpr RegisteredClass kClasses[] = {
    {registry::kLogicalUnitClass,
     "KsServiceMatching unable to locate any services matching multipathed logical units",
     "KsServiceAddMatchingNotification for logical units failed"},
    {registry::kPathClass,
     "KsServiceMatching unable to locate any services matching multipathed logical unit paths",
     "KsServiceAddMatchingNotification for logical unit paths failed"},
};

struct RegisteredKind {
  std::string_view name;
  NotificationHandler handler;
};
constexpr RegisteredKind kKinds[] = {
    {registry::kFirstMatchNotification, MPIOHandleAppeared},
    {registry::kTerminateNotification, MPIOHandleDisappeared},
};

// Puts the iterator into the record. If the registration has ended meanwhile, releases the iterator
// and returns false.
bool keepIterator(MPIONotification& record, NotificationIterator at, RegistryHandle iterator) {
  {
    const ob::MutexLock lock(record.mutex);
    if (record.epoch == at.epoch) {
      record.iterators[at.index] = iterator;
      return true;
    }
  }
  sharedHost().registry().release(iterator);
  return false;
}

bool isCurrent(MPIONotification& record, NotificationIterator at) {
  const ob::MutexLock lock(record.mutex);
  return record.epoch == at.epoch;
}

}  // namespace

std::optional<NotificationFailure> registerNotifications(MPIONotification& record,
                                                         const BeginNotifications& begin) {
  MPIODeviceRegistry& registry = sharedHost().registry();
  RegistryPort port = 0;
  NotificationIterator at{0, 0};
  {
    const ob::MutexLock lock(record.mutex);
    port = record.port;
    at.epoch = record.epoch;
  }
  for (const auto& [className, notFound, notAdded] : kClasses) {
    const auto matching = registry.classMatching(className);
    if (!matching) return NotificationFailure{notFound, kErrorServiceNotFound, std::nullopt};
    for (const auto& [kind, handler] : kKinds) {
      const auto deliver = [cell = record.anchor.cell(), at, handler = handler](RegistryHandle) {
        if (const auto alive = cell->load()) handler(*alive, at);
      };
      const auto [status, iterator] =
          registry.addMatchingNotification(port, kind, matching, deliver);
      if (status != kSuccess)
        return NotificationFailure{notAdded, kErrorNotificationFailed, status};
      if (!keepIterator(record, at, iterator)) return std::nullopt;
      begin(handler, at);
      if (!isCurrent(record, at)) return std::nullopt;
      ++at.index;
    }
  }
  return std::nullopt;
}

RegistryHandle nextObject(MPIONotification& record, NotificationIterator at) {
  const ob::MutexLock lock(record.mutex);
  if (record.epoch != at.epoch) return 0;
  return sharedHost().registry().iteratorNext(record.iterators[at.index]);
}

void endNotifications(MPIONotification& record) {
  RegistryPort port = 0;
  MPIONotification::Iterators iterators{};
  {
    const ob::MutexLock lock(record.mutex);
    ++record.epoch;
    std::swap(port, record.port);
    std::swap(iterators, record.iterators);
  }
  MPIODeviceRegistry& registry = sharedHost().registry();
  registry.destroyNotificationPort(port);
  for (const RegistryHandle iterator : iterators) {
    if (iterator != 0) registry.release(iterator);
  }
}

}  // namespace tavrenix

bool MPIONotification::tryRetain() noexcept {
  std::uint32_t count = references.load(std::memory_order_relaxed);
  while (count != 0) {
    if (references.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) return true;
  }
  return false;
}
