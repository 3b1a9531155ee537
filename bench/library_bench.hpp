// What is measured of the library and the front end.
#pragma once

namespace tavrenix::bench {

// Registers the benchmarks of scan, list, info and property copies, each with its floor.
void registerLibraryBenchmarks();

// What the manager keeps, at 10,000 units.
struct Memory {
  double bytesPerPath;
  double bytesPerUnit;  // without its paths
};
Memory measureMemory();

}  // namespace tavrenix::bench
