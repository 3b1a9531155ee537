// What is measured of the companion that watches.
#pragma once

namespace tavrenix::bench {

// Registers the benchmarks of its documents, in the same process as those of the library.
void registerMonitorBenchmarks();

// Bytes that are allocated after 100,000 refreshes of metrics, top and picture, to those after
// 1,000.
double measureGrowth();

}  // namespace tavrenix::bench
