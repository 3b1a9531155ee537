// The words and options of the command line: the argument vector, the option tables, and their
// reader.
#pragma once

#include <getopt.h>

#include <vector>

namespace tavrenix::cli {

/// The argument vector of main.
struct Arguments {
  int count;
  char** vector;
};

/// The words among the arguments: the verb, then its direct object if any. Options and what belongs
/// to them are passed over, so that they may stand before the words as well as behind them.
/// Borrowed from the arguments.
std::vector<const char*> wordsOf(const Arguments& arguments);

/// What getopt_long takes: the short options, and the long ones up to an all-zero row.
struct OptionTable {
  const char* letters;
  option rows[7];
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
  const Arguments arguments_;
  const OptionTable& table_;
};

}  // namespace tavrenix::cli
