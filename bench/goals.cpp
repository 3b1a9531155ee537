#include "bench/goals.hpp"

#include "bench/library_bench.hpp"
#include "bench/process.hpp"

namespace tavrenix::bench {

namespace {

// The end of the names of benchmarks in which several threads work: their elapsed time counts.
constexpr char kElapsed[] = "/real_time";

}  // namespace

void Recorder::ReportRuns(const std::vector<Run>& runs) {
  ConsoleReporter::ReportRuns(runs);
  for (const Run& run : runs) {
    if (run.error_occurred) continue;
    const std::string name = run.benchmark_name();
    const bool isElapsed = name.ends_with(kElapsed);
    times_[name] = isElapsed ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
  }
}

double Recorder::time(const std::string& name) const {
  const auto found = times_.find(name);
  return found == times_.end() ? 0 : found->second;
}

namespace {

void printGoal(std::FILE* out, const std::string& figure, double value, double goal) {
  if (value <= 0) return;  // not measured in this run
  std::fprintf(out, "%-62s %10.2f %10.2f %8.2f %s\n", figure.c_str(), value, goal, value / goal,
               value <= goal ? "met" : "NOT MET");
}

double ratio(const Recorder& recorder, const std::string& measured, const std::string& floor,
             const std::string& size) {
  const double below = recorder.time(floor + "/" + size);
  return below <= 0 ? 0 : recorder.time(measured + "/" + size) / below;
}

// Returns the time with `many` units or registrations, divided by the time with `few`. Returns 0 if
// it was not measured.
double growth(const Recorder& recorder, const std::string& name, int few, int many,
              const std::string& nameEnd = "") {
  const auto time = [&](int number) {
    return recorder.time(name + "/" + std::to_string(number) + nameEnd);
  };
  return time(few) <= 0 ? 0 : time(many) / time(few);
}

void printGrowthGoals(std::FILE* out, const Recorder& recorder) {
  constexpr int few = 1'000, many = 100'000;
  for (const char* name : {"first_scan", "first_scan_and_list", "list_again", "info_of_the_last"}) {
    printGoal(out, std::string(name) + ": cost of a unit at 100,000 to that at 1,000",
              growth(recorder, name, few, many) * few / many, 1.5);
  }
  for (const char* name : {"unit_properties", "path_properties"}) {
    printGoal(out, std::string(name) + ": cost of a copy at 100,000 units to that at 1,000",
              growth(recorder, name, few, many), 1.5);
  }
}

}  // namespace

void printGoals(std::FILE* out, const Recorder& recorder) {
  std::fprintf(out, "\n%-62s %10s %10s %8s\n", "figure", "value", "goal", "of goal");
  printGrowthGoals(out, recorder);
  for (const char* name :
       {"queue/one_path", "queue/all_paths", "run_loop/one_path", "run_loop/all_paths"}) {
    const std::string figure = std::string("notify/") + name;
    printGoal(out, figure + ": a registration of 100 to one alone",
              growth(recorder, figure, 1, 100, kElapsed) / 100, 1);
  }
  for (const char* size : {"100", "1000", "10000", "100000"}) {
    const std::string units = std::string(size) + " units";
    printGoal(out, "first scan and list, times its floor, " + units,
              ratio(recorder, "first_scan_and_list", "first_scan_and_list_floor", size), 8);
    printGoal(out, "list again, times its floor, " + units,
              ratio(recorder, "list_again", "list_floor", size), 5);
  }
  const StartTimes starts = measureStart();
  if (starts.emptyTool > 0) {
    printGoal(out, "tavrenix without arguments, times /bin/true", starts.tool / starts.emptyTool,
              2);
  }
  const Memory memory = measureMemory();
  printGoal(out, "KiB of memory a path", memory.bytesPerPath / 1024, 2);
  printGoal(out, "KiB of memory a unit", memory.bytesPerUnit / 1024, 4);
}

}  // namespace tavrenix::bench
