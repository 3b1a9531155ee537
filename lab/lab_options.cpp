#include "lab/lab_options.hpp"

#include <getopt.h>

#include <cstdio>
#include <exception>
#include <string>

#include "runtime/byte_text.hpp"

namespace tavrenix::lab {

namespace {

// Prints the text and returns the exit status: 1 if it could not be written, as on a full disk.
int show(const std::string& text) {
  return std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace

void complain(const Program& program, std::string_view line) {
  std::fprintf(stderr, "%s: %.*s\n", program.name, static_cast<int>(line.size()), line.data());
}

CommandLine readCommandLine(const Program& program, int argc, char** argv) {
  static constexpr option kOptions[] = {{"help", no_argument, nullptr, 'h'},
                                        {"version", no_argument, nullptr, 'v'},
                                        {"check", no_argument, nullptr, 'c'},
                                        {nullptr, 0, nullptr, 0}};
  CommandLine line;
  line.name = argv[0];
  opterr = 0;
  for (;;) {
    const char* word = argv[optind];
    // "+" ends the options at the first word, the image: the arguments after it belong to tavrenix.
    const int letter = getopt_long(argc, argv, "+h", kOptions, nullptr);
    if (letter == -1) break;
    if (letter == 'h') return {.exitStatus = show(program.help)};
    if (letter == 'v') {
      return {.exitStatus = show(std::string(program.name) + " " TAVRENIX_VERSION "\n")};
    }
    line.isCheck = letter == 'c' && program.hasCheck;
    if (line.isCheck) continue;
    complain(program, "bad option " + ob::escaped(word, 60) + "; see " + program.name + " --help");
    return {.exitStatus = kBadUse};
  }
  opterr = 1;
  line.words = std::span(argv, static_cast<std::size_t>(argc)).subspan(std::size_t(optind));
  const std::size_t count = line.words.size();
  const bool isWrong = count < program.leastWords || count > program.mostWords ||
                       (line.isCheck && count != 1) || (count > 0 && *line.words[0] == '\0');
  if (!isWrong) return line;
  std::fputs(program.help, stderr);
  return {.exitStatus = kBadUse};
}

std::vector<char*> CommandLine::frontEndArguments() const {
  std::vector<char*> arguments(words.begin(), words.end());
  arguments.front() = name;
  arguments.push_back(nullptr);
  return arguments;
}

int runProgram(const Program& program, int argc, char** argv,
               const std::function<int(const CommandLine&)>& work) {
  try {
    const CommandLine line = readCommandLine(program, argc, argv);
    return line.exitStatus ? *line.exitStatus : work(line);
  } catch (const std::exception& error) {
    complain(program, error.what());
    return kBadUse;
  }
}

}  // namespace tavrenix::lab
