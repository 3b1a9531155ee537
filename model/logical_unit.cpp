// MPIOLogicalUnit: construction, paths, properties and statistics.
#include "model/logical_unit.hpp"

#include "host/entry.hpp"
#include "model/keys.hpp"
#include "model/public_values.hpp"
#include "model/statistics.hpp"

namespace tavrenix {

ob::TypeID MPIOLogicalUnit::getTypeID() {
  static const ob::TypeID id = ob::registerClass();
  return id;
}

ob::Ref<const ob::String> MPIOLogicalUnit::logicalUnitIdentifierFromPropertiesDict(
    const ob::Dictionary* properties) {
  return identifierFromProperties(properties, registry::kUniqueIdentifier);
}

ob::Ref<const ob::Dictionary> MPIOLogicalUnit::propertiesForEntryID(MPIOHost& host,
                                                                    EntryID entryID) {
  return copyEntryProperties(host.registry(), entryID);
}

ob::Ref<MPIOLogicalUnit> MPIOLogicalUnit::initWithKsKitServiceEntry(MPIOHost& host,
                                                                    EntryID entryID) {
  auto unit = ob::make<MPIOLogicalUnit>(host, entryID);
  const ob::MutexLock lock(unit->logicalUnitMutex);
  unit->rebuildPropertiesFromEntry();
  return unit;
}

void MPIOLogicalUnit::rebuildPropertiesFromEntry() {
  if (const auto properties = propertiesForEntryID(host_, serviceEntryID_)) {
    // An identifier never changes once it is set: look-ups and command lines rely on it.
    if (!logicalUnitID_.load()) {
      logicalUnitID_.store(logicalUnitIdentifierFromPropertiesDict(properties.get()));
    }
    replaceIfPresent(alias_, properties->valueAs<ob::String>(registry::kAlias));
    replaceIfPresent(vendorID_, properties->valueAs<ob::String>(registry::kVendor));
    replaceIfPresent(productID_, properties->valueAs<ob::String>(registry::kProduct));
    takeAlgorithm(*properties);
  }
  rebuildVolumes();  // even if the properties could not be read
}

void MPIOLogicalUnit::takeAlgorithm(const ob::Dictionary& properties) {
  const auto* name = properties.valueAs<ob::String>(registry::kLoadBalancingAlgorithm);
  const Algorithm* algorithm = name == nullptr ? nullptr : algorithmOfRegistryName(*name);
  if (algorithm == nullptr) return;
  algorithm_ = algorithm->code;
  // On purpose only round robin takes the count: under another algorithm it stays as it was.
  if (algorithm->code != kMPIOAlgorithmRoundRobin) return;
  const auto* count = properties.valueAs<ob::Number>(registry::kBatchCount);
  const auto low = static_cast<std::uint32_t>(count == nullptr ? 0 : count->bits());
  if (low != 0) batchCount_ = low;
}

ob::Ref<const ob::Dictionary> MPIOLogicalUnit::getProperties() {
  const ob::MutexLock lock(logicalUnitMutex);
  rebuildPropertiesFromEntry();

  // Shows least bytes if the registry has never reported an algorithm, and if several bits are set.
  const Algorithm* known = algorithmOfCode(algorithm_);
  const ob::String* algorithm =
      known == nullptr ? &keys::kMPIOLogicalUnitAlgorithmLeastBytes : &known->publicValue;

  ob::DictionaryBuilder builder(7);
  builder.add(keys::kMPIOLogicalUnitBatchCountKey, ob::Number::make(std::int64_t{batchCount_}));
  builder.add(keys::kMPIOLogicalUnitAlgorithmKey, ob::Ref<const ob::String>::retain(algorithm));
  builder.add(keys::kMPIOLogicalUnitIdentifierKey, logicalUnitID());
  builder.add(keys::kMPIOLogicalUnitAliasKey, logicalUnitAlias());
  builder.add(keys::kMPIOLogicalUnitVendorIDKey, logicalUnitVendorID());
  builder.add(keys::kMPIOLogicalUnitProductIDKey, logicalUnitProductID());
  builder.add(keys::kMPIOLogicalUnitVolumesKey, logicalUnitVolumesArray());
  return builder.build();
}

void MPIOLogicalUnit::addPath(MPIOLogicalUnitPath* path, std::uint64_t pathKey) {
  if (path == nullptr) return;
  const ob::MutexLock lock(logicalUnitMutex);
  if (paths_.contains(pathKey)) return;
  path->setMatchingLogicalUnit(this);
  paths_.set(pathKey, ob::Ref<MPIOLogicalUnitPath>::retain(path));
}

void MPIOLogicalUnit::removePath(MPIOLogicalUnitPath* path) {
  if (path == nullptr) return;
  const ob::MutexLock lock(logicalUnitMutex);
  path->setMatchingLogicalUnit(nullptr);
  paths_.erase(path->serviceEntryID());
}

void MPIOLogicalUnit::removeAllPaths() {
  paths_.clear();
}

ob::Ref<const ob::Array> MPIOLogicalUnit::getPaths() const {
  ob::Array::Values values;
  values.reserve(paths_.size());
  for (const auto& [key, path] : paths_) values.push_back(path);
  return ob::Array::make(std::move(values));
}

ob::Ref<const ob::Array> MPIOLogicalUnit::getPathIDs() const {
  ob::Array::Values values;
  values.reserve(paths_.size());
  for (const auto& [key, path] : paths_) values.push_back(ob::Number::make(key));
  return ob::Array::make(std::move(values));
}

SCSILogicalUnitStatistics MPIOLogicalUnit::grabStatsBuffer(EntryID unitEntryID) const {
  SCSILogicalUnitStatistics record;
  const SCSIMPIOStatisticsRequest request{.requestType = kLogicalUnitStatistics,
                                          .logicalUnitEntryID = unitEntryID};
  readStatistics(host_.tunable(), request, &record, sizeof record);
  return record;
}

ob::Ref<const ob::Dictionary> MPIOLogicalUnit::getCurrentStatistics() const {
  ob::DictionaryBuilder builder(5);
  addCounters(builder,
              {keys::kMPIOLogicalUnitStatisticsSamplingDateKey,
               keys::kMPIOLogicalUnitStatisticsBytesSentKey,
               keys::kMPIOLogicalUnitStatisticsBytesReceivedKey,
               keys::kMPIOLogicalUnitStatisticsTotalBytesKey,
               keys::kMPIOLogicalUnitStatisticsTotalCommandsKey},
              grabStatsBuffer(serviceEntryID_));
  return builder.build();
}

}  // namespace tavrenix
