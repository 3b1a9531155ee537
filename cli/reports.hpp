// The reports. Each printer has the form that ObArrayApplyFunction calls: it gets an element and a
// filter. The filter is the identifier that the element must have to be printed, as zero-terminated
// text, or NULL. A printer prints nothing for an element without properties.
#pragma once

#include <tavrenix/ob.h>

#include <cstdint>

namespace tavrenix::cli {

// The number of the next row of the logical-unit table. It starts at 1 and is never reset, so the
// reports of one command have consecutive numbers.
extern std::int32_t gRowNumber;

// Prints the row of a logical unit, and the header before row 1. With a filter, also prints the
// paths and volumes of all units with that identifier.
void printLogicalUnitRow(ObTypeRef unit, void* identifier);

// Prints the paths of a logical unit, and then the volumes of all units with that identifier.
void printLogicalUnitPaths(ObTypeRef unit, void* identifier);

// Prints the row of a path.
void printPathRow(ObTypeRef path, void* identifier);

// Prints the volumes of a logical unit. Prints nothing if it has no array of volumes.
void printLogicalUnitVolumes(ObTypeRef unit, void* identifier);

// Prints the row of a volume dictionary. Volumes have no identifier to filter by.
void printVolumeRow(ObTypeRef volume, void* unused);

}  // namespace tavrenix::cli
