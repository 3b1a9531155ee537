// The words and options of the command line: the argument vector, the option tables, and their
// reader.
#pragma once

#include <getopt.h>

namespace tavrenix::cli {

/// The argument vector of main. words[0] is the tool, words[1] the verb.
struct Arguments {
  int count;
  char** words;
};

/// What getopt_long takes: the short options, and the long ones up to an all-zero row.
struct OptionTable {
  const char* letters;
  option rows[5];
};

extern const OptionTable infoOptions;
extern const OptionTable modifyLunOptions;
extern const OptionTable modifyPathOptions;

/// Reads the options of a command, wherever they stand between the words. getopt_long has one state
/// a process, so that there may be one reader at a time.
class OptionReader {
 public:
  OptionReader(const Arguments& arguments, const OptionTable& table);

  /// The letter of the next option, its argument in optarg; -1 behind the last. '?' stands for an
  /// option that getopt_long refused; it has then told why on standard error.
  int next();

 private:
  const Arguments& arguments_;
  const OptionTable& table_;
};

}  // namespace tavrenix::cli
