// The reports. Each printer can be applied to the elements of an array: it takes an element and a
// filter, the identifier (zero-terminated text, or NULL for none) that the element must have to be
// printed. A printer prints nothing for an element without properties.
#pragma once

#include <tavrenix/ob.h>

namespace tavrenix::cli {

/// A logical unit: its row, under the table's header where it is the first row of the run. With a
/// filter, the paths and volumes of all units of that identifier follow.
void printLogicalUnitRow(ObTypeRef unit, void* identifier);

/// The paths section of a logical unit, and the volumes sections of all units of that identifier.
void printLogicalUnitPaths(ObTypeRef unit, void* identifier);

/// A path: its row.
void printPathRow(ObTypeRef path, void* identifier);

/// The volumes section of a logical unit, nothing where it has no volumes array.
void printLogicalUnitVolumes(ObTypeRef unit, void* identifier);

/// A volume dictionary: its row. There is nothing to filter by.
void printVolumeRow(ObTypeRef volume, void* unused);

}  // namespace tavrenix::cli
