// The simulated multipath driver: what a write to a logical unit's entry does.
#pragma once

#include "lab/image.hpp"

namespace tavrenix::lab {

// What the driver answers to a request that it cannot make sense of.
inline constexpr KernelStatus kBadRequest = -536870206;

// Acts on value, written under name to the entry of that ID, and answers its status. A request is
// done whole, and moves the image's generation, or refused whole with kBadRequest, and then nothing
// changed.
KernelStatus actOnWrite(Image& image, EntryID entryID, const ob::String& name,
                        const ob::Object& value);

}  // namespace tavrenix::lab
