#include "cli/arguments.hpp"

#include <cstdio>
#include <cstdlib>

namespace tavrenix::cli {

const OptionTable kInfoOptions = {"i:", {{"id", required_argument, nullptr, 'i'}, {}}};

const OptionTable kModifyLunOptions = {"i:a:b:",
                                       {{"algorithm", required_argument, nullptr, 'a'},
                                        {"id", required_argument, nullptr, 'i'},
                                        {"batchCount", required_argument, nullptr, 'b'},
                                        {}}};

// Fixed: the usage shows --enable and --disable as if they took an argument, but they take none.
const OptionTable kModifyPathOptions = {"i:l:ed",
                                        {{"id", required_argument, nullptr, 'i'},
                                         {"lun", required_argument, nullptr, 'l'},
                                         {"enable", no_argument, nullptr, 'e'},
                                         {"disable", no_argument, nullptr, 'd'},
                                         {}}};

namespace {

// The options of all verbs. wordsOf needs them to see which arguments belong to options and which
// are words.
const OptionTable kAnyOptions = {"i:a:b:l:ed",
                                 {{"id", required_argument, nullptr, 'i'},
                                  {"algorithm", required_argument, nullptr, 'a'},
                                  {"batchCount", required_argument, nullptr, 'b'},
                                  {"lun", required_argument, nullptr, 'l'},
                                  {"enable", no_argument, nullptr, 'e'},
                                  {"disable", no_argument, nullptr, 'd'},
                                  {}}};

// Fixed: scripts compare this text, with its uneven indentation, its tool name, and the values that
// --enable and --disable seem to take.
// clang-format off
constexpr char kUsage[] =
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

std::vector<const char*> wordsOf(const Arguments& arguments) {
  std::vector<char*> copy(arguments.vector, arguments.vector + arguments.count);
  OptionReader options({arguments.count, copy.data()}, kAnyOptions);
  opterr = 0;  // the verb reports wrong options when it reads them
  while (options.next() != -1) continue;
  opterr = 1;
  // getopt_long has moved the words behind the options.
  return {copy.begin() + optind, copy.end()};
}

OptionReader::OptionReader(const Arguments& arguments, const OptionTable& table)
    : arguments_(arguments), table_(table) {
  // The environment must not change what the command does. With this variable, getopt_long would
  // take the verb for the end of the options.
  unsetenv("POSIXLY_CORRECT");
  // 0, unlike 1, also makes getopt_long forget where it was within an argument (getopt(3)).
  optind = 0;
}

int OptionReader::next() {
  return getopt_long(arguments_.count, arguments_.vector, table_.letters, table_.rows, nullptr);
}

void printUsage() {
  std::fputs(kUsage, stdout);
}

}  // namespace tavrenix::cli
