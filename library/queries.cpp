// The public functions that only read. Some check whether the device is present, and some rescan
// first. Fixed: clients rely on which function does what.
#include "library/call.hpp"

using namespace tavrenix;

namespace {

// Returns the handle for an entry of the registry, which `known` looks up by entry ID, or null.
template <class CRef, class Model>
CRef copyForService(MPIORegistryObject service, ob::Ref<Model> (*known)(EntryID)) {
  const auto [status, entryID] = sharedHost().registry().getEntryID(service);
  if (status != kSuccess) return nullptr;
  return handOut<CRef>(known(entryID));
}

}  // namespace

extern "C" {

ObTypeID MPIOLogicalUnitGetTypeID(void) {
  return MPIOLogicalUnit::getTypeID();
}
ObTypeID MPIOLogicalUnitPathGetTypeID(void) {
  return MPIOLogicalUnitPath::getTypeID();
}

ObArrayRef MPIOCopyLogicalUnits(void) {
  return withPool<ObArrayRef>([]() -> ObArrayRef {
    MPIOManagerRescan(MPIORescanAll, nullptr);
    return handOut<ObArrayRef>(allLogicalUnits());
  });
}

ObDictionaryRef MPIOLogicalUnitCopyProperties(MPIOLogicalUnitRef handle) {
  return withHandle<MPIOLogicalUnit, ObDictionaryRef>(handle, [](auto& unit) -> ObDictionaryRef {
    if (!isPresent(unit)) return nullptr;
    return handOut<ObDictionaryRef>(unit.getProperties());
  });
}

ObArrayRef MPIOLogicalUnitCopyPaths(MPIOLogicalUnitRef handle) {
  return withHandle<MPIOLogicalUnit, ObArrayRef>(handle, [](auto& unit) {
    MPIOManagerRescan(MPIORescanLogicalUnit, &unit);
    return handOut<ObArrayRef>(unit.getPaths());  // of this handle, not of one from the scan
  });
}

ObDictionaryRef MPIOLogicalUnitPathCopyProperties(MPIOLogicalUnitPathRef handle) {
  return withHandle<MPIOLogicalUnitPath, ObDictionaryRef>(handle, [](auto& path) {
    MPIOManagerRescan(MPIORescanPathLogicalUnit, &path);
    return handOut<ObDictionaryRef>(path.getProperties());
  });
}

MPIOLogicalUnitRef MPIOLogicalUnitPathCopyLogicalUnit(MPIOLogicalUnitPathRef handle) {
  return withHandle<MPIOLogicalUnitPath, MPIOLogicalUnitRef>(
      handle, [](auto& path) -> MPIOLogicalUnitRef {
        if (!isPresent(path)) return nullptr;
        return handOut<MPIOLogicalUnitRef>(path.matchingLogicalUnit());
      });
}

ObDictionaryRef MPIOLogicalUnitCopyStatistics(MPIOLogicalUnitRef handle) {
  return withHandle<MPIOLogicalUnit, ObDictionaryRef>(handle, [](auto& unit) -> ObDictionaryRef {
    if (!isPresent(unit)) return nullptr;
    return handOut<ObDictionaryRef>(unit.getCurrentStatistics());
  });
}

ObDictionaryRef MPIOLogicalUnitPathCopyStatistics(MPIOLogicalUnitPathRef handle) {
  return withHandle<MPIOLogicalUnitPath, ObDictionaryRef>(
      handle, [](auto& path) -> ObDictionaryRef {
        if (!isPresent(path)) return nullptr;
        return handOut<ObDictionaryRef>(path.getCurrentStatistics());
      });
}

// On purpose this makes no pool, but the same function for paths does.
MPIOLogicalUnitRef MPIOCopyLogicalUnitForService(MPIORegistryObject service) {
  if (service == 0) return nullptr;
  return ob::catchExhaustion(MPIOLogicalUnitRef{}, [&] {
    return copyForService<MPIOLogicalUnitRef>(service, knownLogicalUnit);
  });
}

MPIOLogicalUnitPathRef MPIOCopyLogicalUnitPathForService(MPIORegistryObject service) {
  if (service == 0) return nullptr;
  return withPool<MPIOLogicalUnitPathRef>(
      [&] { return copyForService<MPIOLogicalUnitPathRef>(service, knownPath); });
}

}  // extern "C"
