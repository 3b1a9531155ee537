#include "cli/options.hpp"

#include <cstdlib>

namespace tavrenix::cli {

const OptionTable infoOptions = {"i:", {{"id", required_argument, nullptr, 'i'}, {}}};

const OptionTable modifyLunOptions = {"i:a:b:",
                                      {{"algorithm", required_argument, nullptr, 'a'},
                                       {"id", required_argument, nullptr, 'i'},
                                       {"batchCount", required_argument, nullptr, 'b'},
                                       {}}};

// The usage shows --enable and --disable as if they took an argument. They take none.
const OptionTable modifyPathOptions = {"i:l:ed",
                                       {{"id", required_argument, nullptr, 'i'},
                                        {"lun", required_argument, nullptr, 'l'},
                                        {"enable", no_argument, nullptr, 'e'},
                                        {"disable", no_argument, nullptr, 'd'},
                                        {}}};

namespace {

// The options of all verbs together: enough to tell an option's argument from a word.
const OptionTable anyOptions = {"i:a:b:l:ed",
                                {{"id", required_argument, nullptr, 'i'},
                                 {"algorithm", required_argument, nullptr, 'a'},
                                 {"batchCount", required_argument, nullptr, 'b'},
                                 {"lun", required_argument, nullptr, 'l'},
                                 {"enable", no_argument, nullptr, 'e'},
                                 {"disable", no_argument, nullptr, 'd'},
                                 {}}};

}  // namespace

std::vector<const char*> wordsOf(const Arguments& arguments) {
  std::vector<char*> copy(arguments.vector, arguments.vector + arguments.count);
  OptionReader options({arguments.count, copy.data()}, anyOptions);
  opterr = 0;  // what is wrong with an option is told when its verb reads it
  while (options.next() != -1) continue;
  opterr = 1;
  return {copy.begin() + optind, copy.end()};  // getopt_long has moved the words behind the options
}

OptionReader::OptionReader(const Arguments& arguments, const OptionTable& table)
    : arguments_(arguments), table_(table) {
  // The environment configures nothing here; this variable would end the options at the verb.
  unsetenv("POSIXLY_CORRECT");
  // 0 rather than 1 makes getopt_long forget the place where an earlier parse stopped.
  optind = 0;
}

int OptionReader::next() {
  return getopt_long(arguments_.count, arguments_.vector, table_.letters, table_.rows, nullptr);
}

}  // namespace tavrenix::cli
