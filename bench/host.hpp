// The in-memory host that the benchmarks run on, one size at a time.
#pragma once

#include <cstdint>

#include "model/memory/host.hpp"

namespace tavrenix::bench {

// Storage of that many units, made when first asked for, in place of the one before.
memory::MemoryHost& hostWith(std::uint64_t units, std::uint64_t paths);

}  // namespace tavrenix::bench
