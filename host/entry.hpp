// Helpers that read registry entries and release each handle on every way out.
#pragma once

#include "host/registry.hpp"
#include "host/registry_names.hpp"
#include "runtime/atomic_ref.hpp"

namespace tavrenix {

// Looks the entry up and returns all its properties, or null if it is gone or cannot be read.
inline ob::Ref<const ob::Dictionary> copyEntryProperties(MPIODeviceRegistry& registry,
                                                         EntryID entryID) {
  const ScopedHandle entry(registry, registry.findServiceByEntryID(entryID));
  if (!entry) return nullptr;
  auto read = registry.copyProperties(entry.get());
  return read.status == kSuccess ? std::move(read.value) : nullptr;
}

// Calls `visit` with each entry of the iterator. Ownership: releases the iterator.
template <class Visit>
void forEachEntry(MPIODeviceRegistry& registry, RegistryHandle iterator, Visit visit) {
  const ScopedHandle held(registry, iterator);
  while (const RegistryHandle next = registry.iteratorNext(iterator)) {
    const ScopedHandle entry(registry, next);
    visit(next);
  }
}

// Calls `begin` once and then `visit` with each relative that `options` choose. Calls neither if
// the entry is gone or its relatives cannot be listed.
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

// Stores the value in the field, unless the value is null.
template <class T>
void replaceIfPresent(ob::AtomicRef<const T>& field, const T* value) noexcept {
  if (value != nullptr) field.store(ob::Ref<const T>::retain(value));
}

}  // namespace tavrenix
