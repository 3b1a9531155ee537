// The benchmarks of the library and of the command.
#pragma once

namespace tavrenix::bench {

// Registers the benchmarks of scan, list, info and property copies, each with its floor.
void registerLibraryBenchmarks();

// The memory that the manager keeps, measured with 10,000 units.
struct Memory {
  double bytesPerPath;
  double bytesPerUnit;  // without its paths
};
Memory measureMemory();

}  // namespace tavrenix::bench
