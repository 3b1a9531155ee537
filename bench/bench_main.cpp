// Runs the benchmarks. The output of the measured tool goes to /dev/null, and the figures go to
// standard output.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <iostream>

#include "bench/goals.hpp"
#include "bench/library_bench.hpp"
#include "bench/notifications.hpp"

// Makes the process keep the memory that it frees. Otherwise a first scan of many units would get
// new pages each time, but one of few units would not.
static void keepFreedMemory() {
  mallopt(M_TRIM_THRESHOLD, -1);  // never give the top of the heap back
  mallopt(M_MMAP_MAX, 0);         // take large blocks from the heap, too
}

int main(int argc, char** argv) {
  keepFreedMemory();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  std::FILE* out = fdopen(dup(STDOUT_FILENO), "w");
  if (out == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  std::ofstream figures("/dev/fd/" + std::to_string(fileno(out)));

  tavrenix::bench::registerLibraryBenchmarks();
  tavrenix::bench::registerNotificationBenchmarks();
  tavrenix::bench::Recorder recorder;
  recorder.SetOutputStream(&figures);
  recorder.SetErrorStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&recorder);
  figures.flush();
  tavrenix::bench::printGoals(out, recorder);
  std::fclose(out);
  return 0;
}
