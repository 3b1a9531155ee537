// Running a command as a person types it.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace tavrenix::lab {

struct Outcome {
  int status;
  std::string output;  // both streams, but for what the command redirects
};

inline Outcome run(const std::string& command) {
  FILE* pipe = ::popen(("{ " + command + "; } 2>&1").c_str(), "r");
  if (pipe == nullptr) return {-1, ""};
  std::string output;
  char buffer[4096];
  while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe))
    output.append(buffer, got);
  const int status = ::pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

}  // namespace tavrenix::lab
