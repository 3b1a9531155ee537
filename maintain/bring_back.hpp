// Bringing the very paths back that a maintenance took out.
#pragma once

#include "maintain/world.hpp"

namespace tavrenix::maintain {

enum class Purpose : std::uint8_t {
  putBack,  // the end of a drain that met a surprise: heeds no stop
  undo,     // the administrator gives the maintenance up
  restore,  // the work is done: each path must carry requests again
};

// Asks the driver to use every path that may be out because of the journal, the last one first, and
// verifies each. Goes on after a path that does not come back. wait: seconds for a path to be as it
// was, and, to restore, for its requests to be seen.
// The journal is closed if every path is back, and stays open otherwise. A path whose device has
// gone keeps it open for restore, and does not for undo.
// Returns false if there was a surprise. The journal's surprises say which.
bool bringBack(World& world, Journal& journal, Purpose purpose, double wait);

}  // namespace tavrenix::maintain
