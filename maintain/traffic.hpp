// Whether paths that came back carry requests again.
#pragma once

#include "maintain/world.hpp"

namespace tavrenix::maintain {

// Watches the counters of the enabled paths of the journal until each has risen, for at most `wait`
// seconds, and tells the world of each path. A standby path, or one of a group that is not in use,
// is only ready. Returns a line of visible text for each path that carries nothing although its
// unit is busy.
std::vector<std::string> idlePaths(World& world, const Journal& journal, double wait);

}  // namespace tavrenix::maintain
