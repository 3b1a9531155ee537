#include "model/path.hpp"

#include "host/entry.hpp"
#include "host/registry_names.hpp"
#include "model/keys.hpp"
#include "model/logical_unit.hpp"
#include "model/public_values.hpp"
#include "model/statistics.hpp"

namespace tavrenix {

ob::TypeID MPIOLogicalUnitPath::getTypeID() {
  static const ob::TypeID id = ob::registerClass();
  return id;
}

ob::Ref<const ob::String> MPIOLogicalUnitPath::logicalUnitPathIdentifierFromPropertiesDict(
    const ob::Dictionary* properties) {
  return identifierFromProperties(properties, registry::kPathIdentifier);
}

ob::Ref<const ob::Dictionary> MPIOLogicalUnitPath::propertiesForEntryID(MPIOHost& host,
                                                                        EntryID entryID) {
  return copyEntryProperties(host.registry(), entryID);
}

ob::Ref<MPIOLogicalUnitPath> MPIOLogicalUnitPath::initWithKsKitServiceEntry(
    MPIOHost& host, EntryID entryID, const MPIOLogicalUnit* unit) {
  const EntryID unitEntryID = unit == nullptr ? 0 : unit->serviceEntryID();
  auto path = ob::make<MPIOLogicalUnitPath>(host, entryID, unitEntryID);
  path->rebuildPropertiesFromEntry();
  return path;
}

void MPIOLogicalUnitPath::rebuildPropertiesFromEntry() {
  MPIODeviceRegistry& registry = host_.registry();
  const ScopedHandle entry(registry, registry.findServiceByEntryID(serviceEntryID_));
  if (!entry) return;
  const auto read = registry.copyProperties(entry.get());
  if (read.status != kSuccess) return;
  const auto& properties = read.value;

  // An identifier never changes once it is set: commands find the path by it.
  if (!pathID_.load()) pathID_.store(logicalUnitPathIdentifierFromPropertiesDict(properties.get()));
  if (const auto* protocol =
          properties->valueAs<ob::Dictionary>(registry::kProtocolCharacteristics)) {
    replaceIfPresent(interconnectType_,
                     protocol->valueAs<ob::String>(registry::kPhysicalInterconnect));
  }
  takeHostPort(entry.get());
  replaceIfPresent(vendorID_, properties->valueAs<ob::String>(registry::kVendor));
  replaceIfPresent(productID_, properties->valueAs<ob::String>(registry::kProduct));
  SCSIPathStatistics statistics;
  if (grabPathStatsBuffer(serviceEntryID_, &statistics, nullptr)) takeState(statistics.state);
}

void MPIOLogicalUnitPath::takeHostPort(RegistryHandle entry) {
  const auto found = host_.registry().searchProperty(entry, registry::kServicePlane,
                                                     registry::kControllerCharacteristics,
                                                     kIterateRecursively | kIterateParents);
  if (const auto* controller = ob::as<ob::Dictionary>(found.get())) {
    replaceIfPresent(hostPort_, controller->valueAs<ob::Data>(registry::kSCSIPortIdentifier));
  }
}

// Takes the state byte of the driver. Of the asymmetric access states of SPC, 0 to 2 have values of
// their own. Every other, such as transitioning or offline, shows as unavailable.
void MPIOLogicalUnitPath::takeState(std::uint8_t state) noexcept {
  const ob::String* name = &keys::kMPIOPathStateUnavailable;
  switch (state & kPathStateAccessMask) {
    case 0:
      name = &keys::kMPIOPathStateActiveOptimized;
      break;
    case 1:
      name = &keys::kMPIOPathStateActiveNonOptimized;
      break;
    case 2:
      name = &keys::kMPIOPathStateStandby;
      break;
    default:
      break;
  }
  setPathState(ob::Ref<const ob::String>::retain(name));
  pathEnabled_.store(ob::Boolean::of((state & kPathStateDisabledBit) == 0));
}

EntryID MPIOLogicalUnitPath::locateLogicalUnitID() const {
  EntryID located = 0;
  forEachRelative(host_.registry(), serviceEntryID_, kIterateRecursively,
                  [&](RegistryHandle entry) {
                    if (!host_.registry().conformsTo(entry, registry::kLogicalUnitClass)) return;
                    const auto [status, entryID] = host_.registry().getEntryID(entry);
                    if (status == kSuccess) located = entryID;  // of several, the last one counts
                  });
  return located;
}

ob::Ref<const ob::Dictionary> MPIOLogicalUnitPath::getProperties() const {
  ob::DictionaryBuilder builder(5);
  builder.add(keys::kMPIOLogicalUnitPathIdentifierKey, pathID());
  builder.add(keys::kMPIOLogicalUnitPathStateKey, pathState());
  builder.add(keys::kMPIOLogicalUnitPathEnabledKey,
              ob::Ref<const ob::Boolean>::retain(pathEnabled_.load()));
  builder.add(keys::kMPIOLogicalUnitPathInterconnectKey, interconnectType());
  builder.add(keys::kMPIOLogicalUnitPathHostPortIdentifierKey, scsiInitiatorPortIdentifier());
  return builder.build();
}

bool MPIOLogicalUnitPath::isEnabled(ErrorOut error) const {
  SCSIPathStatistics statistics;
  return grabPathStatsBuffer(serviceEntryID_, &statistics, error) &&
         (statistics.state & kPathStateDisabledBit) == 0;
}

bool MPIOLogicalUnitPath::enable(ErrorOut error) {
  const auto unit = matchingLogicalUnit();
  return unit && unit->enablePath(this, error);
}

bool MPIOLogicalUnitPath::disable(ErrorOut error) {
  const auto unit = matchingLogicalUnit();
  return unit && unit->disablePath(this, error);
}

bool MPIOLogicalUnitPath::grabPathStatsBuffer(EntryID pathEntryID, SCSIPathStatistics* statistics,
                                              ErrorOut error) const {
  if (statistics == nullptr) return false;
  SCSIPathStatistics record;
  const SCSIMPIOStatisticsRequest request{.requestType = kPathStatistics,
                                          .logicalUnitEntryID = matchingLogicalUnitEntryID_,
                                          .pathEntryID = pathEntryID};
  const int result = readStatistics(host_.tunable(), request, &record, sizeof record);
  if (result != 0) {
    // An error object is made only if the caller wants it. Otherwise a scan of many paths without
    // statistics would fill its pool with them.
    if (error != nullptr) {
      *error = MPIOErrorCreate("sysctlbyname failed", kErrorStatisticsUnavailable, result);
    }
    return false;
  }
  *statistics = record;
  return true;
}

ob::Ref<const ob::Dictionary> MPIOLogicalUnitPath::getCurrentStatistics() {
  SCSIPathStatistics record;
  if (!grabPathStatsBuffer(serviceEntryID_, &record, nullptr)) return nullptr;
  takeState(record.state);
  ob::DictionaryBuilder builder(6);
  addCounters(builder,
              {keys::kMPIOLogicalUnitPathStatisticsSamplingDateKey,
               keys::kMPIOLogicalUnitPathStatisticsBytesSentKey,
               keys::kMPIOLogicalUnitPathStatisticsBytesReceivedKey,
               keys::kMPIOLogicalUnitPathStatisticsTotalBytesKey,
               keys::kMPIOLogicalUnitPathStatisticsTotalCommandsKey},
              {record.bytesSent, record.bytesReceived, record.commandsProcessed});
  builder.add(keys::kMPIOLogicalUnitPathStatisticsPathStateKey,
              ob::Number::make(std::uint64_t{record.state}));  // the whole byte, not masked
  return builder.build();
}

ob::Ref<MPIOLogicalUnit> MPIOLogicalUnitPath::matchingLogicalUnit() const {
  const auto cell = matchingLogicalUnit_.load();
  return cell ? cell->load() : nullptr;
}

void MPIOLogicalUnitPath::setMatchingLogicalUnit(MPIOLogicalUnit* unit) {
  matchingLogicalUnit_.store(unit == nullptr ? nullptr : unit->weakCell());
}

}  // namespace tavrenix
