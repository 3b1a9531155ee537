// Counts the memory that operator new has allocated.
#pragma once

#include <cstdint>

namespace tavrenix::bench {

// Returns the number of bytes that are allocated now, as the allocator rounds them.
std::int64_t allocatedBytes() noexcept;

}  // namespace tavrenix::bench
