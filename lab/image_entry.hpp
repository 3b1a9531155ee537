// One element of an image's "entries", and the order among them.
#pragma once

#include "lab/image.hpp"

namespace tavrenix::lab {

// Throws ImageError. Whether the parents are there is the image's to say.
ImageEntry entryFromJSON(const Json& json, const Place& place, const Classes& classes);

// As Image::parentsFirst. Throws ImageError where an entry is its own ancestor. Every parent is
// there.
std::vector<std::size_t> orderParentsFirst(const std::vector<ImageEntry>& entries,
                                           const ob::NumberMap<std::size_t>& positions,
                                           const Place& place);

}  // namespace tavrenix::lab
