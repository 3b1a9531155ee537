// From an event of the registry to the client's call.
#include "library/manager.hpp"
#include "library/notification.hpp"
#include "library/pool.hpp"
#include "model/keys.hpp"
#include "model/registry_names.hpp"
#include "runtime/c_bridge.hpp"

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
  if (record.kind == MPIONotification::kRunLoop && record.callback != nullptr) {
    record.callback(kindRef, handleRef, record.context);
  }
  if (record.kind == MPIONotification::kDispatch && record.block != nullptr) {
    record.block->invoke(record.block, kindRef, handleRef, record.context);
  }
}

void deliver(MPIONotification& record, NotificationIterator iterator, const Kinds& kinds) {
  MPIODeviceRegistry& registry = sharedHost().registry();
  // Set here once: an object whose ID cannot be read is looked up under the one before it.
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

// Where memory runs out the rest of what waits is not delivered.
void deliverWhatFits(MPIONotification& record, NotificationIterator iterator,
                     const Kinds& kinds) noexcept {
  try {
    deliver(record, iterator, kinds);
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace

// First the rescan, so that the manager knows what has come.
void MPIOHandleAppeared(MPIONotification& record, NotificationIterator iterator) noexcept {
  const auto pool = MPIOScratchPoolCreate();
  if (!pool) return;
  MPIOManagerRescan(MPIORescanAll, nullptr);
  deliverWhatFits(record, iterator, kAppeared);
}

// First the client, who is given the handles that it knows; the rescan then drops them. A plain
// pool, unlike above.
void MPIOHandleDisappeared(MPIONotification& record, NotificationIterator iterator) noexcept {
  const ob::Pool pool;
  deliverWhatFits(record, iterator, kDisappeared);
  MPIOManagerRescan(MPIORescanAll, nullptr);
}

}  // namespace tavrenix
