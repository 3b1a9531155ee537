// How an event of the registry becomes a call of the client.
#include "host/registry_names.hpp"
#include "library/call.hpp"
#include "library/notifications/notification.hpp"
#include "model/keys.hpp"

namespace tavrenix {

namespace {

struct Kinds {
  const ob::String& ofUnit;
  const ob::String& ofPath;
};
constexpr Kinds kAppeared{keys::kMPIOLogicalUnitAppearedNotification,
                          keys::kMPIOLogicalUnitPathAppearedNotification};
constexpr Kinds kDisappeared{keys::kMPIOLogicalUnitDisappearedNotification,
                             keys::kMPIOLogicalUnitPathDisappearedNotification};

void callClient(MPIONotification& record, const ob::String& kind, const ob::Object& handle) {
  const auto kindRef = ob::toC<ObStringRef>(&kind);
  const auto handleRef = ob::toC<ObTypeRef>(&handle);
  if (record.callback != nullptr) record.callback(kindRef, handleRef, record.context);
  if (record.block != nullptr) {
    record.block->invoke(record.block, kindRef, handleRef, record.context);
  }
}

void deliver(MPIONotification& record, NotificationIterator iterator, const Kinds& kinds) {
  MPIODeviceRegistry& registry = sharedHost().registry();
  // On purpose outside the loop: if the ID of an entry cannot be read, the ID of the entry before
  // it is used.
  EntryID entryID = 0;
  const auto readEntryID = [&](RegistryHandle object) {
    const auto read = registry.getEntryID(object);
    if (read.status == kSuccess) entryID = read.value;
  };
  while (const RegistryHandle next = nextObject(record, iterator)) {
    const ScopedHandle object(registry, next);
    if (registry.conformsTo(next, registry::kLogicalUnitClass)) {
      readEntryID(next);
      if (const auto unit = knownLogicalUnit(entryID)) callClient(record, kinds.ofUnit, *unit);
    } else if (registry.conformsTo(next, registry::kPathClass)) {
      readEntryID(next);
      if (const auto path = knownPath(entryID)) callClient(record, kinds.ofPath, *path);
    }
  }
}

}  // namespace

// Rescans first, so that the manager knows the new devices. If memory runs out, this and the next
// function deliver no more of the iterator.
void MPIOHandleAppeared(MPIONotification& record, NotificationIterator iterator) noexcept {
  const auto pool = MPIOScratchPoolCreate();
  if (!pool) return;
  MPIOManagerRescan(MPIORescanAll, nullptr);
  ob::catchExhaustion([&] { deliver(record, iterator, kAppeared); });
}

// Delivers first, with the handles that the client knows: the rescan drops them. On purpose the
// pool is on the stack, unlike above, so that departures are delivered even if memory is short.
void MPIOHandleDisappeared(MPIONotification& record, NotificationIterator iterator) noexcept {
  const ob::Pool pool;
  ob::catchExhaustion([&] { deliver(record, iterator, kDisappeared); });
  MPIOManagerRescan(MPIORescanAll, nullptr);
}

}  // namespace tavrenix
