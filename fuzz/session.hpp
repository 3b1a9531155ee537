// A client's session with the library on whatever storage there is: every public function and every
// command copes, and what they hand out is of the kinds that the public header promises.
#pragma once

#include <tavrenix/mpio.h>

#include "tests/library/owned.hpp"

namespace tavrenix::fuzz {

// Every public function that takes a handle, on the units and on all of their paths.
void useAll(const test::Owned<ObArrayRef>& units);

// list, and the other commands on each unit by its identifier.
void runCommands(const test::Owned<ObArrayRef>& units);

}  // namespace tavrenix::fuzz
