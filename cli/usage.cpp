#include "cli/usage.hpp"

#include <cstdio>

namespace tavrenix::cli {

namespace {

// Scripts compare this text: the uneven indentation, the values that --enable and --disable seem to
// take and the fixed tool name in it are kept as they are.
// clang-format off
const char usage[] =
    "tavrenix\n"
    "Utility to manage multiple paths to logical units\n"
    "\n"
    "Usage:  tavrenix <verb> <direct object> <options>, where <verb> is as follows:\n"
    "\n"
    "   verb:\n"
    "       list\n"
    "\n"
    "       info\n"
    "           required arguments:\n"
    "               --id <lun identifier> | -i <lun identifier>\n"
    "\n"
    "       modify\n"
    "           direct objects:\n"
    "               lun\n"
    "                  --id <lun identifier> | -i <lun identifier>\n"
    "                  --algorithm <load balancing algorithm> | -a <load balancing algorithm>\n"
    "                    RoundRobin, LeastIO, LeastBytes\n"
    "                  optional arguments:\n"
    "                         --batchCount <round robin batch count> | -b <round robin batch count>\n"
    "\n"
    "               path\n"
    "                  --lun <lun identifier> | -l <lun identifier>\n"
    "                  --id <path identifier> | -i <path identifier>\n"
    "                  --enable <enable path> | -e <enable path>\n"
    "                  --disable <disable path> | -d <disable path>\n"
    "\n";
// clang-format on

}  // namespace

void printUsage() {
  std::fputs(usage, stdout);
}

}  // namespace tavrenix::cli
