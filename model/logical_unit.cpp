// MPIOLogicalUnit: its life, its paths and its properties.
#include "model/logical_unit.hpp"

#include "model/entry.hpp"
#include "model/identifier.hpp"
#include "model/keys.hpp"
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
  const std::lock_guard lock(unit->logicalUnitMutex);
  unit->rebuildPropertiesFromEntry();
  return unit;
}

void MPIOLogicalUnit::rebuildPropertiesFromEntry() {
  if (const auto properties = propertiesForEntryID(host_, serviceEntryID_)) {
    // Once set, an identifier stays: look-ups and the user's command line rely on it.
    if (!logicalUnitID_.load()) {
      logicalUnitID_.store(logicalUnitIdentifierFromPropertiesDict(properties.get()));
    }
    replaceIfPresent(alias_, properties->valueAs<ob::String>(registry::kAlias));
    replaceIfPresent(vendorID_, properties->valueAs<ob::String>(registry::kVendor));
    replaceIfPresent(productID_, properties->valueAs<ob::String>(registry::kProduct));
    takeAlgorithm(*properties);
  }
  rebuildVolumes();  // whether or not the properties could be read
}

void MPIOLogicalUnit::takeAlgorithm(const ob::Dictionary& properties) {
  const auto* name = properties.valueAs<ob::String>(registry::kLoadBalancingAlgorithm);
  if (name == nullptr) return;
  if (name->equals(registry::kLeastBytes)) {
    algorithm_ = kMPIOAlgorithmLeastBytes;
  } else if (name->equals(registry::kLeastQueueDepth)) {
    algorithm_ = kMPIOAlgorithmLeastQueueDepth;
  } else if (name->equals(registry::kModifiedRoundRobin)) {
    algorithm_ = kMPIOAlgorithmRoundRobin;
    // Read for round robin only, on purpose: for the others the count is what it last was.
    const auto* count = properties.valueAs<ob::Number>(registry::kBatchCount);
    const auto low = static_cast<std::uint32_t>(count == nullptr ? 0 : count->bits());
    if (low != 0) batchCount_ = low;
  }
}

ob::Ref<const ob::Dictionary> MPIOLogicalUnit::getProperties() {
  const std::lock_guard lock(logicalUnitMutex);
  rebuildPropertiesFromEntry();

  // Least bytes is the fallback on purpose: it also stands for an algorithm that was never
  // reported.
  const ob::String* algorithm = &keys::kMPIOLogicalUnitAlgorithmLeastBytes;
  if (algorithm_ == kMPIOAlgorithmRoundRobin) {
    algorithm = &keys::kMPIOLogicalUnitAlgorithmRoundRobin;
  } else if (algorithm_ == kMPIOAlgorithmLeastQueueDepth) {
    algorithm = &keys::kMPIOLogicalUnitAlgorithmLeastQueueDepth;
  }

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
  const std::lock_guard lock(logicalUnitMutex);
  if (paths_.contains(pathKey)) return;
  path->setMatchingLogicalUnit(this);
  paths_.set(pathKey, ob::Ref<MPIOLogicalUnitPath>::retain(path));
}

void MPIOLogicalUnit::removePath(MPIOLogicalUnitPath* path) {
  if (path == nullptr) return;
  const std::lock_guard lock(logicalUnitMutex);
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
