// The usage text.
#pragma once

namespace tavrenix::cli {

/// Prints the 27 lines of the usage text to standard output.
void printUsage();

}  // namespace tavrenix::cli
