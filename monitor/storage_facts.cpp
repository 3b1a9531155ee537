#include "monitor/storage_facts.hpp"

#include <fnmatch.h>

#include <algorithm>

#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/public_value.hpp"

namespace tavrenix::monitor {

namespace {

std::string nameOfState(ObTypeRef state) {
  const ObStringRef known[] = {kMPIOPathStateActiveOptimized, kMPIOPathStateActiveNonOptimized,
                               kMPIOPathStateStandby};
  for (std::size_t i = 0; i < std::size(known); ++i) {
    if (ObEqual(state, known[i])) return kStates[i];
  }
  return "unavailable";
}

std::optional<std::string> nameOfAlgorithm(ObTypeRef algorithm) {
  if (ObEqual(algorithm, kMPIOLogicalUnitAlgorithmRoundRobin)) return "round_robin";
  if (ObEqual(algorithm, kMPIOLogicalUnitAlgorithmLeastQueueDepth)) return "least_queue_depth";
  if (ObEqual(algorithm, kMPIOLogicalUnitAlgorithmLeastBytes)) return "least_bytes";
  return std::nullopt;
}

Path readPath(MPIOLogicalUnitPathRef handle) {
  const Owned<ObDictionaryRef> properties(MPIOLogicalUnitPathCopyProperties(handle));
  const Owned<ObDictionaryRef> details(MPIOLogicalUnitPathCopyDetails(handle));
  const Owned<ObDictionaryRef> counters(MPIOLogicalUnitPathCopyStatistics(handle));
  const auto known = [&](ObStringRef key) { return text(details.get(), key); };
  const auto counted = [&](ObStringRef key) { return number(details.get(), key); };
  Path path;
  path.identifier = text(properties.get(), kMPIOLogicalUnitPathIdentifierKey).value_or("");
  path.state = nameOfState(ObDictionaryGetValue(properties.get(), kMPIOLogicalUnitPathStateKey));
  path.enabled = boolean(properties.get(), kMPIOLogicalUnitPathEnabledKey).value_or(false);
  path.interconnect = text(properties.get(), kMPIOLogicalUnitPathInterconnectKey);
  path.hostPort = known(kMPIOLogicalUnitPathDetailHostPortKey);
  if (!path.hostPort) {
    path.hostPort = bytesAsText(properties.get(), kMPIOLogicalUnitPathHostPortIdentifierKey);
  }
  path.targetPort = known(kMPIOLogicalUnitPathDetailTargetPortKey);
  path.device = known(kMPIOLogicalUnitPathDetailDeviceKey);
  path.deviceNumber = known(kMPIOLogicalUnitPathDetailDeviceNumberKey);
  path.address = known(kMPIOLogicalUnitPathDetailAddressKey);
  path.driverState = known(kMPIOLogicalUnitPathDetailDriverStateKey);
  path.deviceState = known(kMPIOLogicalUnitPathDetailDeviceStateKey);
  path.accessState = known(kMPIOLogicalUnitPathDetailAccessStateKey);
  path.group = counted(kMPIOLogicalUnitPathDetailGroupKey);
  path.failures = counted(kMPIOLogicalUnitPathDetailFailureCountKey);
  path.errors = counted(kMPIOLogicalUnitPathDetailErrorCountKey);
  path.timeouts = counted(kMPIOLogicalUnitPathDetailTimeoutCountKey);
  path.inFlight = counted(kMPIOLogicalUnitPathDetailInFlightKey);
  if (counters) {
    path.counters = {
        number(counters.get(), kMPIOLogicalUnitPathStatisticsBytesSentKey).value_or(0),
        number(counters.get(), kMPIOLogicalUnitPathStatisticsBytesReceivedKey).value_or(0),
        number(counters.get(), kMPIOLogicalUnitPathStatisticsTotalCommandsKey).value_or(0)};
  }
  return path;
}

std::vector<Volume> readVolumes(ObDictionaryRef properties) {
  std::vector<Volume> volumes;
  forEach(array(properties, kMPIOLogicalUnitVolumesKey), [&](ObTypeRef value) {
    if (ObGetTypeID(value) != ObDictionaryGetTypeID()) return;
    const auto volume = static_cast<ObDictionaryRef>(value);
    volumes.push_back({text(volume, kMPIOLogicalUnitVolumeNameKey),
                       text(volume, kMPIOLogicalUnitVolumeMountPointKey),
                       number(volume, kMPIOLogicalUnitVolumeSizeKey)});
  });
  return volumes;
}

void readDetails(MPIOLogicalUnitRef handle, Unit& unit) {
  const Owned<ObDictionaryRef> details(MPIOLogicalUnitCopyDetails(handle));
  const ObDictionaryRef from = details.get();
  unit.device = text(from, kMPIOLogicalUnitDetailDeviceKey);
  unit.mapName = text(from, kMPIOLogicalUnitDetailMapNameKey);
  unit.wwid = text(from, kMPIOLogicalUnitDetailWWIDKey);
  unit.selector = text(from, kMPIOLogicalUnitDetailSelectorKey);
  unit.handler = text(from, kMPIOLogicalUnitDetailHardwareHandlerKey);
  unit.size = number(from, kMPIOLogicalUnitDetailSizeKey);
  unit.openCount = number(from, kMPIOLogicalUnitDetailOpenCountKey);
  unit.queueing = boolean(from, kMPIOLogicalUnitDetailQueueingKey);
  unit.suspended = boolean(from, kMPIOLogicalUnitDetailSuspendedKey);
  forEach(array(from, kMPIOLogicalUnitDetailGroupStatesKey),
          [&](ObTypeRef state) { unit.groups.push_back(textOf(state).value_or("")); });
}

// Nothing if the unit has gone since it was listed.
std::optional<Unit> readUnit(MPIOLogicalUnitRef handle) {
  const Owned<ObDictionaryRef> properties(MPIOLogicalUnitCopyProperties(handle));
  if (!properties) return std::nullopt;
  const ObDictionaryRef from = properties.get();
  Unit unit;
  unit.identifier = text(from, kMPIOLogicalUnitIdentifierKey).value_or("");
  unit.alias = text(from, kMPIOLogicalUnitAliasKey);
  unit.vendor = text(from, kMPIOLogicalUnitVendorIDKey);
  unit.product = text(from, kMPIOLogicalUnitProductIDKey);
  unit.algorithm = nameOfAlgorithm(ObDictionaryGetValue(from, kMPIOLogicalUnitAlgorithmKey));
  if (unit.algorithm == "round_robin") {
    unit.batchCount = number(from, kMPIOLogicalUnitBatchCountKey);
  }
  unit.volumes = readVolumes(from);
  readDetails(handle, unit);
  const Owned<ObDictionaryRef> counters(MPIOLogicalUnitCopyStatistics(handle));
  unit.counters = {number(counters.get(), kMPIOLogicalUnitStatisticsBytesSentKey).value_or(0),
                   number(counters.get(), kMPIOLogicalUnitStatisticsBytesReceivedKey).value_or(0),
                   number(counters.get(), kMPIOLogicalUnitStatisticsTotalCommandsKey).value_or(0)};
  const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(handle));
  forEach(paths.get(), [&](ObTypeRef path) {
    unit.paths.push_back(readPath(static_cast<MPIOLogicalUnitPathRef>(path)));
  });
  std::ranges::sort(unit.paths, {}, &Path::identifier);
  return unit;
}

Host readHost() {
  const Owned<ObDictionaryRef> details(MPIOHostCopyDetails());
  if (!details) throw Failure("out of memory");
  return {text(details.get(), kMPIOHostDetailBackingKey),
          text(details.get(), kMPIOHostDetailKernelReleaseKey),
          boolean(details.get(), kMPIOHostDetailDriverPresentKey),
          boolean(details.get(), kMPIOHostDetailPermittedKey),
          number(details.get(), kMPIOHostDetailGenerationKey)};
}

std::vector<Unit> readUnits(Progress* progress) {
  const Owned<ObArrayRef> handles(MPIOCopyLogicalUnits());
  if (!handles) throw Failure("out of memory");
  std::vector<Unit> units;
  std::size_t done = 0;
  forEach(handles.get(), [&](ObTypeRef handle) {
    if (auto unit = readUnit(static_cast<MPIOLogicalUnitRef>(handle))) {
      units.push_back(std::move(*unit));
    }
    if (progress != nullptr) progress->show(++done, ObArrayGetCount(handles.get()));
  });
  std::ranges::sort(units, [](const Unit& a, const Unit& b) {
    return std::tie(a.identifier, a.device) < std::tie(b.identifier, b.device);
  });
  return units;
}

// Shows its progress unless that is null.
Storage readStorage(Progress* progress) {
  constexpr int kAttempts = 5;  // a machine on which something changes all the time is shown too
  Storage storage;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    storage.host = readHost();
    if (storage.host.permitted == false) {
      throw Failure(
          "only the superuser, with CAP_SYS_ADMIN, may ask the multipath driver; run it as root");
    }
    storage.units = readUnits(progress);
    if (readGeneration() == storage.host.generation) break;
    MPIOHostRefresh();
  }
  return storage;
}

}  // namespace

const std::string& Unit::title() const {
  if (alias && !alias->empty()) return *alias;
  return mapName ? *mapName : identifier;
}

Storage readStorage() {
  return readStorage(nullptr);
}

Storage readStorageWithProgress() {
  Progress progress("reading units");
  return readStorage(&progress);
}

std::optional<std::uint64_t> readGeneration() {
  return readHost().generation;
}

bool isNamed(const Unit& unit, const std::string& text, bool pattern) {
  const auto matches = [&](const std::optional<std::string>& name) {
    if (!name) return false;
    if (pattern) return ::fnmatch(text.c_str(), name->c_str(), FNM_CASEFOLD) == 0;
    return std::ranges::equal(*name, text, [](unsigned char a, unsigned char b) {
      return std::tolower(a) == std::tolower(b);
    });
  };
  return matches(unit.identifier) || matches(unit.alias) || matches(unit.device) ||
         matches(unit.mapName) || matches(unit.wwid);
}

}  // namespace tavrenix::monitor
