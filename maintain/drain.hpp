// Taking paths out, one by one.
#pragma once

#include "maintain/world.hpp"

namespace tavrenix::maintain {

// Takes out every path of the journal that is planned or was being taken out, and verifies each
// before the next. At the first surprise, and if the administrator stops the run, brings every path
// back that may be out. wait: seconds for which requests under way are awaited.
// REQUIRES: the journal is on disk and its state is draining.
// Returns true if every path is out. Otherwise the journal's surprises say why, and its state
// whether every path is back.
bool drain(World& world, Journal& journal, double wait);

}  // namespace tavrenix::maintain
