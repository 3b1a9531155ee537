#include "bench/process.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace tavrenix::bench {

namespace {

constexpr int kStarts = 400;

// Returns the time of one run in microseconds, or a negative number if the program cannot be
// started.
double timeOf(const char* program) {
  posix_spawn_file_actions_t quiet;
  posix_spawn_file_actions_init(&quiet);
  posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
  char* argv[] = {const_cast<char*>(program), nullptr};
  char* environment[] = {nullptr};
  const auto start = std::chrono::steady_clock::now();
  pid_t child = 0;
  const int failed = posix_spawn(&child, program, &quiet, nullptr, argv, environment);
  if (failed == 0) waitpid(child, nullptr, 0);
  const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - start;
  posix_spawn_file_actions_destroy(&quiet);
  return failed == 0 ? taken.count() : -1;
}

double median(std::vector<double>& times) {
  std::nth_element(times.begin(), times.begin() + kStarts / 2, times.end());
  return times[kStarts / 2];
}

}  // namespace

StartTimes measureStart() {
  std::vector<double> tool, emptyTool;
  for (int start = 0; start < kStarts; ++start) {
    tool.push_back(timeOf(TAVRENIX_TOOL));
    emptyTool.push_back(timeOf("/bin/true"));
    if (tool.back() < 0 || emptyTool.back() < 0) return {0, 0};
  }
  return {median(tool), median(emptyTool)};
}

}  // namespace tavrenix::bench
