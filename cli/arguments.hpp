// The command line: its words, its options and their reader, and the usage text.
#pragma once

#include <getopt.h>

#include <vector>

namespace tavrenix::cli {

// The argument vector of main.
struct Arguments {
  int count;
  char** vector;
};

// Returns the words of the command line: the verb, and then its direct object, if any. Skips the
// options and their arguments, which may come before, between and after the words. Ownership: the
// words are borrowed from the arguments.
std::vector<const char*> wordsOf(const Arguments& arguments);

// The options of a verb, as getopt_long takes them: the letters, and the rows of long options up to
// a row of zeros.
struct OptionTable {
  const char* letters;
  option rows[7];  // as many as any table needs
};

extern const OptionTable kInfoOptions;
extern const OptionTable kModifyLunOptions;
extern const OptionTable kModifyPathOptions;

// Reads the options of a verb.
// REQUIRES: one reader at a time, because getopt_long has one state per process.
class OptionReader {
 public:
  OptionReader(const Arguments& arguments, const OptionTable& table);

  // Returns the letter of the next option and leaves its argument in optarg. Returns -1 after the
  // last option, and '?' for a wrong one, which getopt_long has reported on standard error.
  int next();

 private:
  const Arguments arguments_;
  const OptionTable& table_;
};

// Prints the 27 lines of the usage text to standard output.
void printUsage();

}  // namespace tavrenix::cli
