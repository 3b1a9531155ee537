// What the library shows, in words that can be compared.
#pragma once

#include <map>
#include <nlohmann/json.hpp>

#include "model/registry.hpp"

namespace tavrenix::soak {

using Words = nlohmann::json;
// Each unit with its paths and volumes, and each path, by entry ID.
using Shown = std::map<EntryID, Words>;

// A value that the library handed out, of any kind. Dates say no more than that they are some, and
// arrays are sorted: the library promises no order of units, paths and volumes.
Words wordsOf(const void* value);

// All that it shows, by every way that leads to a unit or path: the list, the paths of each unit,
// and the look-ups of registry entries. Nobody else may use the library meanwhile, nor hold
// handles: a reference too many or too few to a handle is a failure as well.
Shown shownByLibrary(MPIODeviceRegistry& registry);

}  // namespace tavrenix::soak
