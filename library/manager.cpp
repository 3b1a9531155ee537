#include "library/manager.hpp"

#include <new>

#include "library/pool.hpp"
#include "library/scan.hpp"

namespace tavrenix {

namespace {

// There before any code runs and never destroyed: other exit handlers may still ask for it.
union SharedManager {
  constexpr SharedManager() noexcept : manager{} {}
  ~SharedManager() {}
  MPIOManager manager;
};
constinit SharedManager gShared;

}  // namespace

MPIOManager& manager() noexcept {
  return gShared.manager;
}

void MPIOManagerInitialize() noexcept {
  MPIOManager& shared = manager();
  try {
    if (!shared.lock) shared.lock = std::make_unique<std::mutex>();
    const std::lock_guard lock(*shared.lock);
    if (!shared.logicalUnits) shared.logicalUnits.emplace(8);
    if (!shared.paths) shared.paths.emplace(8);
    shared.ready = true;
  } catch (const std::bad_alloc&) {
    return;
  }
  if (shared.logicalUnits && shared.ready) MPIOManagerRescan(MPIORescanAll, nullptr);
}

void MPIOManagerTeardown() noexcept {
  MPIOManager& shared = manager();
  shared.logicalUnits.reset();
  shared.paths.reset();
  shared.lock.reset();
}

namespace {

// 0 where the driver does not answer.
std::uint32_t configurationGeneration(MPIOKernelTunable& tunable) {
  const SCSIMPIOStatisticsRequest request{.requestType = kConfigurationGeneration};
  std::uint32_t generation = 0;
  std::size_t length = sizeof generation;
  tunable.sysctlbyname(kStatisticsTunable, &generation, &length, &request, sizeof request);
  return generation;
}

}  // namespace

void MPIOManagerRescan(int mode, const ob::Object* handle) noexcept {
  const auto pool = MPIOScratchPoolCreate();
  MPIOManager& shared = manager();
  if (!pool || !shared.lock) return;
  const std::lock_guard lock(*shared.lock);
  try {
    MPIOHost& host = sharedHost();
    // The generation is the only trigger: it starts at 0, so a driver that answers 0 is never
    // scanned.
    const std::uint32_t generation = configurationGeneration(host.tunable());
    if (generation == shared.lastGeneration) return;
    shared.lastGeneration = generation;
    scanRegistry(shared, host, mode, handle);
  } catch (const std::bad_alloc&) {  // ends the scan as it stands
  }
}

namespace {

template <class T>
ob::Ref<T> find(std::optional<ob::NumberMap<ob::Ref<T>>> MPIOManager::*dictionary,
                EntryID entryID) noexcept {
  MPIOManager& shared = manager();
  if (!shared.lock) return nullptr;
  const std::lock_guard lock(*shared.lock);
  const auto* known = shared.*dictionary ? (shared.*dictionary)->find(entryID) : nullptr;
  if (known == nullptr) return nullptr;
  return *known;
}

}  // namespace

ob::Ref<MPIOLogicalUnit> knownLogicalUnit(EntryID entryID) noexcept {
  return find(&MPIOManager::logicalUnits, entryID);
}

ob::Ref<MPIOLogicalUnitPath> knownPath(EntryID entryID) noexcept {
  return find(&MPIOManager::paths, entryID);
}

ob::Ref<ob::Array> allLogicalUnits() {
  MPIOManager& shared = manager();
  if (!shared.lock) return nullptr;
  const std::lock_guard lock(*shared.lock);
  if (!shared.logicalUnits) return nullptr;
  ob::Array::Values units;
  units.reserve(shared.logicalUnits->size());
  for (const auto& [entryID, unit] : *shared.logicalUnits) units.push_back(unit);
  return ob::Array::make(std::move(units));
}

}  // namespace tavrenix
