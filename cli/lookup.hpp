// Logical units and paths by their identifiers.
#pragma once

#include <tavrenix/mpio.h>

namespace tavrenix::cli {

/// 0 where the string under key is text, literally: letter case and blanks count. Otherwise, also
/// where there is no string or text is not UTF-8, something else.
int compareStringProperty(ObDictionaryRef properties, ObStringRef key, const char* text);

/// The last unit of gLogicalUnits that has this identifier, borrowed from the array. NULL where
/// none has.
MPIOLogicalUnitRef findLogicalUnitByIdentifier(const char* identifier);

/// The last of the path handles that has this identifier, borrowed from the array. NULL where none
/// has.
MPIOLogicalUnitPathRef findPathByIdentifier(ObArrayRef paths, const char* identifier);

}  // namespace tavrenix::cli
