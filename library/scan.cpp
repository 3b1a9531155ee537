// One scan of the registry into the manager's dictionaries.
#include "host/entry.hpp"
#include "library/call.hpp"

namespace tavrenix {

namespace {

// The peripheral device types of SPC that are no storage: processor and storage array controller.
constexpr std::int64_t kProcessorDevice = 3;
constexpr std::int64_t kStorageArrayController = 12;

class Scan {
 public:
  Scan(MPIODictionaries& known, MPIOHost& host)
      : known_(known), host_(host), registry_(host.registry()) {}

  // Drops the objects that the scan will make again. Returns an iterator over the entries to visit.
  // If there are none to visit, returns 0 or a status other than kSuccess.
  Result<RegistryHandle> select(int mode, const ob::Object* handle);
  // Makes objects for the entry's unit and its paths. Skips an entry that is no storage or cannot
  // be read.
  void visit(RegistryHandle entry);
  // Moves the new units into the dictionaries.
  void merge();

 private:
  Result<RegistryHandle> selectAll();
  Result<RegistryHandle> selectUnit(const MPIOLogicalUnit& unit);
  Result<RegistryHandle> selectUnitOf(const MPIOLogicalUnitPath& path);
  void forgetPathsOf(const MPIOLogicalUnit& unit);
  ob::Ref<MPIOLogicalUnit> unitFor(EntryID entryID);
  void visitPaths(RegistryHandle entry, MPIOLogicalUnit* unit);
  void enterPath(EntryID entryID, MPIOLogicalUnit* unit);

  MPIODictionaries& known_;
  MPIOHost& host_;
  MPIODeviceRegistry& registry_;
  ob::NumberMap<ob::Ref<MPIOLogicalUnit>> fresh_{256};
};

Result<RegistryHandle> Scan::select(int mode, const ob::Object* handle) {
  if (mode == MPIORescanAll) return selectAll();
  if (mode == MPIORescanLogicalUnit) {
    if (const auto* unit = dynamic_cast<const MPIOLogicalUnit*>(handle)) return selectUnit(*unit);
  } else if (const auto* path = dynamic_cast<const MPIOLogicalUnitPath*>(handle)) {
    return selectUnitOf(*path);
  }
  return {};  // on purpose, although the caller marks the generation as seen
}

Result<RegistryHandle> Scan::selectAll() {
  known_.logicalUnits.clear();
  known_.paths.clear();
  return registry_.findServicesByClass(registry::kLogicalUnitClass);
}

Result<RegistryHandle> Scan::selectUnit(const MPIOLogicalUnit& unit) {
  forgetPathsOf(unit);
  known_.logicalUnits.erase(unit.serviceEntryID());
  return registry_.findServicesByEntryID(unit.serviceEntryID());
}

Result<RegistryHandle> Scan::selectUnitOf(const MPIOLogicalUnitPath& path) {
  EntryID unitEntryID = 0;
  if (const auto unit = path.matchingLogicalUnit()) {
    unitEntryID = unit->serviceEntryID();
    unit->removeAllPaths();
    known_.logicalUnits.erase(unitEntryID);
    forgetPathsOf(*unit);  // Fixed: the unit is empty by now, so its paths stay known
  }
  return registry_.findServicesByEntryID(unitEntryID);
}

void Scan::forgetPathsOf(const MPIOLogicalUnit& unit) {
  for (const auto& [entryID, path] : unit.logicalUnitPaths()) known_.paths.erase(entryID);
}

// Returns true if the device type is a signed 32-bit number and stands for storage.
bool isStorage(const ob::Dictionary& properties) {
  const auto* type = properties.valueAs<ob::Number>(registry::kPeripheralDeviceType);
  const auto value = type == nullptr ? std::nullopt : type->asInt64();
  if (!value || *value < INT32_MIN || *value > INT32_MAX) return false;
  return *value != kProcessorDevice && *value != kStorageArrayController;
}

void Scan::visit(RegistryHandle entry) {
  {
    const auto read = registry_.copyProperties(entry);
    if (read.status != kSuccess || !isStorage(*read.value)) return;
  }
  const auto [status, entryID] = registry_.getEntryID(entry);
  if (status != kSuccess) return;
  const auto unit = unitFor(entryID);
  visitPaths(entry, unit.get());
}

// Returns the known unit with that ID, or a new one. Returns null if memory runs out; the scan then
// still adds the paths of the entry, without a unit.
ob::Ref<MPIOLogicalUnit> Scan::unitFor(EntryID entryID) {
  if (const auto* known = known_.logicalUnits.find(entryID)) return *known;
  return ob::catchExhaustion(ob::Ref<MPIOLogicalUnit>(), [&] {
    auto unit = MPIOLogicalUnit::initWithKsKitServiceEntry(host_, entryID);
    fresh_.set(entryID, unit);
    return unit;
  });
}

void Scan::visitPaths(RegistryHandle entry, MPIOLogicalUnit* unit) {
  const auto [status, parents] =
      registry_.createIterator(entry, registry::kServicePlane, kIterateParents);
  if (status != kSuccess) return;
  forEachEntry(registry_, parents, [&](RegistryHandle parent) {
    if (!registry_.conformsTo(parent, registry::kPathClass)) return;
    const auto [parentStatus, entryID] = registry_.getEntryID(parent);
    if (parentStatus == kSuccess) enterPath(entryID, unit);
  });
}

void Scan::enterPath(EntryID entryID, MPIOLogicalUnit* unit) {
  if (unit != nullptr && unit->logicalUnitPaths().contains(entryID)) return;
  // If memory runs out, the scan goes on without this path.
  ob::catchExhaustion([&] {
    const auto path = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host_, entryID, unit);
    if (unit != nullptr) unit->addPath(path.get(), entryID);
    known_.paths.set(entryID, path);
  });
}

void Scan::merge() {
  if (known_.logicalUnits.empty()) {
    std::swap(known_.logicalUnits, fresh_);
    return;
  }
  for (const auto& [entryID, unit] : fresh_) known_.logicalUnits.set(entryID, unit);
}

void scan(MPIODictionaries& known, MPIOHost& host, int mode, const ob::Object* handle) {
  Scan scan(known, host);
  const auto found = scan.select(mode, handle);
  if (found.status != kSuccess || found.value == 0) return;
  // If memory runs out, the units found until then are still merged.
  ob::catchExhaustion([&] {
    forEachEntry(host.registry(), found.value, [&](RegistryHandle entry) { scan.visit(entry); });
  });
  scan.merge();
}

}  // namespace

std::uint32_t configurationGeneration(MPIOKernelTunable& tunable) {
  const SCSIMPIOStatisticsRequest request{.requestType = kConfigurationGeneration};
  std::uint32_t generation = 0;
  std::size_t length = sizeof generation;
  tunable.sysctlbyname(kStatisticsTunable, &generation, &length, &request, sizeof request);
  return generation;
}

void MPIOManagerRescan(int mode, const ob::Object* handle) noexcept {
  inPool([&] {
    MPIOManager& shared = manager();
    const ob::MutexLock lock(shared.lock);
    if (shared.ended || !shared.dictionaries) return;
    MPIOHost& host = sharedHost();
    // Only a change of the generation starts a scan. The manager begins with 0, so a driver that
    // answers 0 from the beginning is not scanned. A change back to 0 is a change like any other.
    const std::uint32_t generation = configurationGeneration(host.tunable());
    const bool outdated = shared.outdated && mode == MPIORescanAll;
    if (generation == shared.lastGeneration && !outdated) return;
    if (outdated) shared.outdated = false;
    shared.lastGeneration = generation;
    scan(*shared.dictionaries, host, mode, handle);
  });
}

void MPIOManagerSetOutdated() noexcept {
  MPIOManager& shared = manager();
  const ob::MutexLock lock(shared.lock);
  shared.outdated = true;
}

}  // namespace tavrenix
