#include "library/manager.hpp"

#include <cstdlib>

#include "runtime/exhaustion.hpp"

namespace tavrenix {

namespace {

constinit ob::Constant<MPIOManager> gShared;

// Runs before main, for the program and for the shared library alike.
[[gnu::constructor]] void load() {
  MPIOLogicalUnit::getTypeID();  // registers the class
  MPIOLogicalUnitPath::getTypeID();
  MPIOManagerInitialize();
  std::atexit([] { MPIOManagerTeardown(); });
}

}  // namespace

MPIOManager& manager() noexcept {
  return gShared.object;
}

void MPIOManagerInitialize() noexcept {
  const bool made = ob::catchExhaustion([] {
    MPIOManager& shared = manager();
    const ob::MutexLock lock(shared.lock);
    if (!shared.dictionaries) {
      shared.dictionaries.emplace();
      shared.lastGeneration = 0;
    }
    shared.ended = false;
  });
  if (made) MPIOManagerRescan(MPIORescanAll, nullptr);
}

void MPIOManagerTeardown() noexcept {
  MPIOManager& shared = manager();
  shared.ended = true;
  if (!shared.lock.tryLock()) return;  // a scan in progress still uses them
  shared.dictionaries.reset();
  shared.lock.unlock();
}

namespace {

template <class T>
ob::Ref<T> find(ob::NumberMap<ob::Ref<T>> MPIODictionaries::*dictionary, EntryID entryID) noexcept {
  MPIOManager& shared = manager();
  const ob::MutexLock lock(shared.lock);
  if (shared.ended || !shared.dictionaries) return nullptr;
  const auto* known = ((*shared.dictionaries).*dictionary).find(entryID);
  return known == nullptr ? nullptr : *known;
}

}  // namespace

ob::Ref<MPIOLogicalUnit> knownLogicalUnit(EntryID entryID) noexcept {
  return find(&MPIODictionaries::logicalUnits, entryID);
}

ob::Ref<MPIOLogicalUnitPath> knownPath(EntryID entryID) noexcept {
  return find(&MPIODictionaries::paths, entryID);
}

ob::Ref<ob::Array> allLogicalUnits() {
  MPIOManager& shared = manager();
  const ob::MutexLock lock(shared.lock);
  if (shared.ended || !shared.dictionaries) return nullptr;
  const auto& known = shared.dictionaries->logicalUnits;
  ob::Array::Values units;
  units.reserve(known.size());
  for (const auto& [entryID, unit] : known) units.push_back(unit);
  return ob::Array::make(std::move(units));
}

}  // namespace tavrenix
