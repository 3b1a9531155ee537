// What the command lines of the lab's programs have in common.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tavrenix::lab {

// The exit status of a program that was called in a wrong way or with a useless image.
inline constexpr int kBadUse = 2;

struct Program {
  const char* name;
  const char* help;
  bool hasCheck = false;  // true if the program takes --check
  std::size_t leastWords = 1;
  std::size_t mostWords = 1;
};

// Prints the program's name and the line to standard error.
void complain(const Program& program, std::string_view line);

struct CommandLine {
  std::optional<int> exitStatus;  // set if the program must end now, with this status
  bool isCheck = false;
  std::span<char*> words{};  // the arguments after the options, borrowed from argv
  char* name = nullptr;      // argv[0]

  // Returns the arguments of the front end: the program's name in place of the image, the other
  // words, and a null pointer at the end.
  std::vector<char*> frontEndArguments() const;
};

// Reads the options before the first word. Carries out --help and --version. Prints what is wrong
// if the program was called in a wrong way.
//
// Thread safety: call it once, before any other thread is started.
CommandLine readCommandLine(const Program& program, int argc, char** argv);

// Reads the command line, does the work unless the command line sets an exit status, and returns
// the exit status. If the work throws, prints the message and returns kBadUse.
int runProgram(const Program& program, int argc, char** argv,
               const std::function<int(const CommandLine&)>& work);

}  // namespace tavrenix::lab
