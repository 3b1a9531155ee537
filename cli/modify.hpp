// The commands that change something. They report failures on standard output and are silent if all
// went well.
#pragma once

#include "cli/arguments.hpp"

namespace tavrenix::cli {

// "modify lun": changes the algorithm and the round-robin batch count of a logical unit.
void modifyLun(const Arguments& arguments);

// "modify path": enables or disables one path of a logical unit.
void modifyPath(const Arguments& arguments);

}  // namespace tavrenix::cli
