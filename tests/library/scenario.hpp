// One client's whole session with the library: every public function once, everything released.
#pragma once

#include "tests/library/owned.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::test {

// Errors that a change handed out, all of which must be of the table of codes.
inline bool isKnown(const Owned<ObErrorRef>& error) {
  const auto code = ObErrorGetCode(error.get());
  return !error || (code >= kMPIOErrorBadArgument && code <= kMPIOErrorNoResources);
}

// Calls everything on the first unit and path; true where every error that came was one of the
// table.
inline bool useEverything(WatchedHost& host) {
  bool known = true;
  const auto change = [&](auto call) {
    Owned<ObErrorRef> error;
    call(error.out());
    known = known && isKnown(error);
  };
  touch(host.memory);
  const Handles handles;
  const MPIOLogicalUnitRef unit = handles.unit();
  if (unit == nullptr) return known;
  Owned<ObDictionaryRef>(MPIOLogicalUnitCopyProperties(unit));
  Owned<ObDictionaryRef>(MPIOLogicalUnitCopyStatistics(unit));
  change([&](ObErrorRef* error) {
    MPIOLogicalUnitSetAlgorithm(unit, kMPIOLogicalUnitAlgorithmLeastBytes, error);
  });
  change([&](ObErrorRef* error) { MPIOLogicalUnitSetBatchCount(unit, 3, error); });
  change([&](ObErrorRef* error) { MPIOLogicalUnitEnableAllPaths(unit, error); });
  change([&](ObErrorRef* error) { MPIOLogicalUnitDisableAllPaths(unit, error); });
  touch(host.memory);
  const auto paths = handles.paths();
  if (const auto path = at<MPIOLogicalUnitPathRef>(paths, 0)) {
    touch(host.memory);
    Owned<ObDictionaryRef>(MPIOLogicalUnitPathCopyProperties(path));
    Owned<ObDictionaryRef>(MPIOLogicalUnitPathCopyStatistics(path));
    Owned<MPIOLogicalUnitRef>(MPIOLogicalUnitPathCopyLogicalUnit(path));
    change([&](ObErrorRef* error) { MPIOLogicalUnitPathEnable(path, error); });
    change([&](ObErrorRef* error) { MPIOLogicalUnitPathDisable(path, error); });
  }
  MPIODeviceRegistry& registry = host.registry();
  const ScopedHandle service(registry, registry.findServiceByEntryID(unitID(0)));
  Owned<MPIOLogicalUnitRef>(MPIOCopyLogicalUnitForService(service.get()));
  Owned<MPIOLogicalUnitPathRef>(MPIOCopyLogicalUnitPathForService(service.get()));
  return known;
}

}  // namespace tavrenix::test
