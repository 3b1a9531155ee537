// The changing commands. Every outcome is told on standard output; success says nothing.
#pragma once

#include "cli/options.hpp"

namespace tavrenix::cli {

/// "modify lun": the algorithm and the round-robin batch count of a logical unit.
void modifyLun(const Arguments& arguments);

/// "modify path": enables or disables one path of a logical unit.
void modifyPath(const Arguments& arguments);

}  // namespace tavrenix::cli
