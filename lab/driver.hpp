// The simulated multipath driver: what a request to a logical unit does.
#pragma once

#include "lab/image/image.hpp"

namespace tavrenix::lab {

// The driver's answer to a request that it does not understand.
inline constexpr KernelStatus kBadRequest = -536870206;

// Carries out a request: a write of `value` to the property `name` of the entry.
//
// Returns kSuccess if it has carried out the whole request and changed the generation, or
// kBadRequest if it has changed nothing. Requests:
//   {"Algorithm": WORD, "Batch Count": 0 to 2^32-1}  sets both for the unit.
//   {"PathState": {IDENTIFIER: 0 or 3, ...}}         enables (0) or disables (3) each path of the
//                                                    unit that has the identifier.
KernelStatus actOnWrite(Image& image, EntryID entryID, const ob::String& name,
                        const ob::Object& value);

}  // namespace tavrenix::lab
