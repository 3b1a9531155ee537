// The front end run within a fuzzing program, and what its output must look like.
#pragma once

#include <string>
#include <vector>

namespace tavrenix::fuzz {

struct Ran {
  int status;
  std::string output;
  std::string diagnostics;
};

// One run of the tool as the superuser, by its words after its name.
Ran runFrontEnd(std::vector<std::string> words);

// Every line is one of the reports, in exactly the width of its columns, and what devices said has
// become printable ASCII.
void expectReport(const std::string& output);

}  // namespace tavrenix::fuzz
