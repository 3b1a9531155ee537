// The table at the end: figures of this run, their goals, and how far the one is from the other.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace tavrenix::bench {

// Prints benchmarks as they come and remembers the processor time of each iteration, which other
// work on the machine disturbs least; the elapsed time of those that are measured by it.
class Recorder : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  // 0 where that benchmark was not run.
  double time(const std::string& name) const;

 private:
  std::map<std::string, double> times_;
};

void printGoals(std::FILE* out, const Recorder& recorder);

}  // namespace tavrenix::bench
