// What the host has and what the library shows, in the same words, so that they can be compared.
#pragma once

#include <map>
#include <string>

#include "tests/soak/hand.hpp"

namespace tavrenix::soak {

// A unit with its paths and volumes, and each path, by entry ID.
using Shown = std::map<EntryID, std::string>;

// From the image file. How the library shows what it reads there is written out once more here.
Shown truthOf(const Json& image);

// From the library, by every way that leads to a unit or path: the list, the paths of each unit,
// and the look-ups of registry entries. A reference too many or too few to a handle is told of as
// well: nobody else may use the library meanwhile, nor hold handles.
Shown shownByLibrary(memory::MemoryRegistry& registry);

}  // namespace tavrenix::soak
