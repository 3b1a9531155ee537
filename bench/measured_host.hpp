// The in-memory host that the benchmarks run on, one size at a time.
#pragma once

#include <cstdint>

#include "host/memory/memory_host.hpp"

namespace tavrenix::bench {

// Returns the host with storage of so many units, each with so many paths. If it has another size,
// replaces its storage, and the library scans again.
memory::MemoryHost& hostWith(std::uint64_t units, std::uint64_t paths);

}  // namespace tavrenix::bench
