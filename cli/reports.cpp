#include "cli/reports.hpp"

#include <tavrenix/mpio.h>

#include <cstdio>
#include <string>

#include "cli/columns.hpp"
#include "cli/objects.hpp"

namespace tavrenix::cli {

namespace {

void printLine(std::string line) {
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stdout);
}

// Returns the properties of a handle. Returns none if it has no properties, or if `identifier` is
// not null and the handle has another one.
template <class Handle>
Owned<ObDictionaryRef> filtered(ObTypeRef element, ObDictionaryRef (*copyProperties)(Handle),
                                ObStringRef key, void* identifier) {
  Owned<ObDictionaryRef> properties(copyProperties(static_cast<Handle>(element)));
  if (properties && identifier != nullptr &&
      compareStringProperty(properties.get(), key, static_cast<const char*>(identifier)) != 0) {
    properties.reset();
  }
  return properties;
}

Owned<ObDictionaryRef> filteredUnit(ObTypeRef unit, void* identifier) {
  return filtered(unit, MPIOLogicalUnitCopyProperties, kMPIOLogicalUnitIdentifierKey, identifier);
}

}  // namespace

std::int32_t gRowNumber = 1;

void printLogicalUnitRow(ObTypeRef unit, void* identifier) {
  const auto properties = filteredUnit(unit, identifier);
  if (!properties) return;
  if (gRowNumber == 1) printLine("   " + headerLine(kUnitColumns));
  char number[12];
  std::snprintf(number, sizeof number, "%3d", gRowNumber);
  printLine(number + rowLine(kUnitColumns, properties.get()));
  if (identifier != nullptr) ObArrayApplyFunction(gLogicalUnits, printLogicalUnitPaths, identifier);
  ++gRowNumber;
}

void printLogicalUnitPaths(ObTypeRef unit, void* identifier) {
  if (!filteredUnit(unit, identifier)) return;
  printLine("");
  printLine(headerLine(kPathColumns));
  const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(static_cast<MPIOLogicalUnitRef>(unit)));
  ObArrayApplyFunction(paths.get(), printPathRow, nullptr);
  ObArrayApplyFunction(gLogicalUnits, printLogicalUnitVolumes, identifier);
  printLine("");
}

void printPathRow(ObTypeRef path, void* identifier) {
  const auto properties = filtered(path, MPIOLogicalUnitPathCopyProperties,
                                   kMPIOLogicalUnitPathIdentifierKey, identifier);
  if (properties) printLine(rowLine(kPathColumns, properties.get()));
}

void printLogicalUnitVolumes(ObTypeRef unit, void* identifier) {
  const auto properties = filteredUnit(unit, identifier);
  if (!properties) return;
  const ObTypeRef volumes = ObDictionaryGetValue(properties.get(), kMPIOLogicalUnitVolumesKey);
  if (volumes == nullptr) return;
  printLine("\n    Volumes:\n");
  printLine(headerLine(kVolumeColumns));
  ObArrayApplyFunction(static_cast<ObArrayRef>(volumes), printVolumeRow, nullptr);
}

void printVolumeRow(ObTypeRef volume, void* /*unused*/) {
  if (volume == nullptr) return;
  printLine(rowLine(kVolumeColumns, static_cast<ObDictionaryRef>(volume)));
}

}  // namespace tavrenix::cli
