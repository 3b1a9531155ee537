// The verbs of tavrenix-monitor. Each gets the words from the verb on and returns the exit status.
// Errors: each throws Failure.
#pragma once

#include "monitor/baseline.hpp"
#include "monitor/verb_options.hpp"

namespace tavrenix::monitor {

int runStatus(int argc, char** argv);
int runCheck(int argc, char** argv);
int runBaseline(int argc, char** argv);
int runJson(int argc, char** argv);
int runMetrics(int argc, char** argv);
int runPicture(int argc, char** argv);
int runTop(int argc, char** argv);
int runWatch(int argc, char** argv);

// What a unit should have: the number of --paths, or what the file of --baseline has recorded.
class Expectation {
 public:
  // Errors: throws Failure if the number or the file is no good, or if both are given.
  explicit Expectation(const CommandLine& line);
  std::optional<std::uint64_t> pathsOf(const Unit& unit) const;
  // Null if there is none.
  const Baseline* baseline() const { return baseline_ ? &*baseline_ : nullptr; }

 private:
  std::optional<std::uint64_t> paths_;
  std::optional<Baseline> baseline_;
};
inline constexpr KnownOption kBaselineOption = {"baseline", 'b', true};
inline constexpr KnownOption kPathsOption = {"paths", 'p', true};

}  // namespace tavrenix::monitor
