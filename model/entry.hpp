// What both model classes do with registry entries: look up afresh, read, release on every way out.
#pragma once

#include "model/registry.hpp"
#include "model/registry_names.hpp"
#include "runtime/atomic_ref.hpp"

namespace tavrenix {

// A snapshot of all properties of the entry with that ID. None where it is not found or not
// readable.
inline ob::Ref<const ob::Dictionary> copyEntryProperties(MPIODeviceRegistry& registry,
                                                         EntryID entryID) {
  const ScopedHandle entry(registry, registry.findServiceByEntryID(entryID));
  if (!entry) return nullptr;
  auto read = registry.copyProperties(entry.get());
  return read.status == kSuccess ? std::move(read.value) : nullptr;
}

// Calls visit with each entry that the iterator yields, releasing entry and iterator.
template <class Visit>
void forEachEntry(MPIODeviceRegistry& registry, RegistryHandle iterator, Visit visit) {
  const ScopedHandle held(registry, iterator);
  while (const RegistryHandle next = registry.iteratorNext(iterator)) {
    const ScopedHandle entry(registry, next);
    visit(next);
  }
}

// Calls begin, if given, once the walk can be made, then visit with each relative that options
// choose. Does nothing where the entry is gone or cannot be walked.
template <class Begin, class Visit>
void forEachRelative(MPIODeviceRegistry& registry, EntryID entryID, std::uint32_t options,
                     Begin begin, Visit visit) {
  const ScopedHandle entry(registry, registry.findServiceByEntryID(entryID));
  if (!entry) return;
  const auto [status, iterator] =
      registry.createIterator(entry.get(), registry::kServicePlane, options);
  if (status != kSuccess) return;
  begin();
  forEachEntry(registry, iterator, visit);
}

template <class Visit>
void forEachRelative(MPIODeviceRegistry& registry, EntryID entryID, std::uint32_t options,
                     Visit visit) {
  forEachRelative(
      registry, entryID, options, [] {}, visit);
}

// An absent value leaves the old one in place.
template <class T>
void replaceIfPresent(ob::AtomicRef<const T>& field, const T* value) noexcept {
  if (value != nullptr) field.store(ob::Ref<const T>::retain(value));
}

}  // namespace tavrenix
