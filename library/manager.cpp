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

MPIOLogicalUnit* knownLogicalUnit(EntryID entryID) noexcept {
  const auto& units = manager().logicalUnits;
  const auto* known = units ? units->find(entryID) : nullptr;
  return known == nullptr ? nullptr : known->get();
}

MPIOLogicalUnitPath* knownPath(EntryID entryID) noexcept {
  const auto& paths = manager().paths;
  const auto* known = paths ? paths->find(entryID) : nullptr;
  return known == nullptr ? nullptr : known->get();
}

}  // namespace tavrenix
