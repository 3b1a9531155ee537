#include "library/scan.hpp"

#include <new>

#include "model/entry.hpp"

namespace tavrenix {

namespace {

// Peripheral device types of SPC that stand for no storage: processor, storage array controller.
constexpr std::int64_t kProcessorDevice = 3;
constexpr std::int64_t kStorageArrayController = 12;

class Scan {
 public:
  Scan(MPIOManager& shared, MPIOHost& host)
      : shared_(shared), host_(host), registry_(host.registry()) {}

  // Drops what the scan will find anew and searches the entries to visit; mode chooses. A status
  // other than success, or no iterator, where there is nothing to visit.
  RegistryResult<RegistryHandle> select(int mode, const ob::Object* handle);
  void visit(RegistryHandle entry);
  void merge();

 private:
  RegistryResult<RegistryHandle> selectAll();
  RegistryResult<RegistryHandle> selectUnit(const MPIOLogicalUnit& unit);
  RegistryResult<RegistryHandle> selectUnitOf(const MPIOLogicalUnitPath& path);
  void forgetPathsOf(const MPIOLogicalUnit& unit);
  ob::Ref<MPIOLogicalUnit> unitFor(EntryID entryID);
  void visitPaths(RegistryHandle entry, MPIOLogicalUnit* unit);
  void enterPath(EntryID entryID, MPIOLogicalUnit* unit);

  MPIOManager& shared_;
  MPIOHost& host_;
  MPIODeviceRegistry& registry_;
  MPIOManager::Units fresh_{256};
};

RegistryResult<RegistryHandle> Scan::select(int mode, const ob::Object* handle) {
  if (mode == MPIORescanAll) return selectAll();
  if (mode == MPIORescanLogicalUnit) {
    if (const auto* unit = dynamic_cast<const MPIOLogicalUnit*>(handle)) return selectUnit(*unit);
  } else if (const auto* path = dynamic_cast<const MPIOLogicalUnitPath*>(handle)) {
    return selectUnitOf(*path);
  }
  return {};  // the new generation has been noted all the same: kept on purpose
}

RegistryResult<RegistryHandle> Scan::selectAll() {
  shared_.logicalUnits->clear();
  shared_.paths->clear();
  return registry_.findServicesByClass(registry::kLogicalUnitClass);
}

RegistryResult<RegistryHandle> Scan::selectUnit(const MPIOLogicalUnit& unit) {
  forgetPathsOf(unit);
  shared_.logicalUnits->erase(unit.serviceEntryID());
  return registry_.findServicesByEntryID(unit.serviceEntryID());
}

RegistryResult<RegistryHandle> Scan::selectUnitOf(const MPIOLogicalUnitPath& path) {
  EntryID unitEntryID = 0;
  if (const auto unit = path.matchingLogicalUnit()) {
    unitEntryID = unit->serviceEntryID();
    unit->removeAllPaths();
    shared_.logicalUnits->erase(unitEntryID);
    forgetPathsOf(*unit);  // forgets none, since the unit is empty by now: the order is required
  }
  return registry_.findServicesByEntryID(unitEntryID);
}

void Scan::forgetPathsOf(const MPIOLogicalUnit& unit) {
  for (const auto& [entryID, path] : unit.logicalUnitPaths()) shared_.paths->erase(entryID);
}

// The device type as a signed 32-bit number says whether the entry is a unit for us.
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

// The unit known under the ID, or a new one. None where memory ran out: its paths are entered all
// the same.
ob::Ref<MPIOLogicalUnit> Scan::unitFor(EntryID entryID) {
  if (const auto* known = shared_.logicalUnits->find(entryID)) return *known;
  try {
    auto unit = MPIOLogicalUnit::initWithKsKitServiceEntry(host_, entryID);
    fresh_.set(entryID, unit);
    return unit;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
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
  try {
    const auto path = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host_, entryID, unit);
    if (unit != nullptr) unit->addPath(path.get(), entryID);
    shared_.paths->set(entryID, path);
  } catch (const std::bad_alloc&) {  // the scan goes on without this path
  }
}

void Scan::merge() {
  if (shared_.logicalUnits->empty()) {
    std::swap(*shared_.logicalUnits, fresh_);
    return;
  }
  for (const auto& [entryID, unit] : fresh_) shared_.logicalUnits->set(entryID, unit);
}

}  // namespace

void scanRegistry(MPIOManager& shared, MPIOHost& host, int mode, const ob::Object* handle) {
  Scan scan(shared, host);
  const auto [status, found] = scan.select(mode, handle);
  if (status != kSuccess || found == 0) return;
  try {
    forEachEntry(host.registry(), found, [&](RegistryHandle entry) { scan.visit(entry); });
  } catch (const std::bad_alloc&) {  // what was found until then is entered all the same
  }
  scan.merge();
}

}  // namespace tavrenix
