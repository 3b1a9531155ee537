// The table at the end of a run: figures, their goals, and the ratio of the two.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace tavrenix::bench {

// Prints each benchmark when it ends, and remembers the time of one iteration. That is the
// processor time, because other work on the machine disturbs it least. Benchmarks of several
// threads are the exception: for them it is the elapsed time.
class Recorder : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  // Returns the time of an iteration in the benchmark's unit, or 0 if it was not run.
  double time(const std::string& name) const;

 private:
  std::map<std::string, double> times_;
};

// Prints the table. Also measures the start of the command and the memory of the library.
void printGoals(std::FILE* out, const Recorder& recorder);

}  // namespace tavrenix::bench
