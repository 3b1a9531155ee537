#include "cli/reports.hpp"

#include <tavrenix/mpio.h>

#include <cstdio>
#include <string>

#include "cli/columns.hpp"
#include "cli/lookup.hpp"
#include "cli/owned.hpp"
#include "cli/state.hpp"

namespace tavrenix::cli {

namespace {

void printLine(std::string line) {
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stdout);
}

// The properties of a handle; none where it has none or where they do not pass the filter.
template <typename Handle>
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

void printLogicalUnitRow(ObTypeRef unit, void* identifier) {
  const auto properties = filteredUnit(unit, identifier);
  if (!properties) return;
  if (gRowNumber == 1) printLine("   " + headerLine(unitColumns));
  char number[12];
  std::snprintf(number, sizeof number, "%3d", gRowNumber);
  printLine(number + rowLine(unitColumns, properties.get()));
  if (identifier != nullptr) ObArrayApplyFunction(gLogicalUnits, printLogicalUnitPaths, identifier);
  ++gRowNumber;
}

void printLogicalUnitPaths(ObTypeRef unit, void* identifier) {
  if (!filteredUnit(unit, identifier)) return;
  printLine("");
  printLine(headerLine(pathColumns));
  const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(static_cast<MPIOLogicalUnitRef>(unit)));
  ObArrayApplyFunction(paths.get(), printPathRow, nullptr);
  ObArrayApplyFunction(gLogicalUnits, printLogicalUnitVolumes, identifier);
  printLine("");
}

void printPathRow(ObTypeRef path, void* identifier) {
  const auto properties = filtered(path, MPIOLogicalUnitPathCopyProperties,
                                   kMPIOLogicalUnitPathIdentifierKey, identifier);
  if (properties) printLine(rowLine(pathColumns, properties.get()));
}

void printLogicalUnitVolumes(ObTypeRef unit, void* identifier) {
  const auto properties = filteredUnit(unit, identifier);
  if (!properties) return;
  const ObTypeRef volumes = ObDictionaryGetValue(properties.get(), kMPIOLogicalUnitVolumesKey);
  if (volumes == nullptr) return;
  printLine("\n    Volumes:\n");
  printLine(headerLine(volumeColumns));
  ObArrayApplyFunction(static_cast<ObArrayRef>(volumes), printVolumeRow, nullptr);
}

void printVolumeRow(ObTypeRef volume, void* /*unused*/) {
  if (volume == nullptr) return;
  printLine(rowLine(volumeColumns, static_cast<ObDictionaryRef>(volume)));
}

}  // namespace tavrenix::cli
