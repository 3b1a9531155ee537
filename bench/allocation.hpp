// How much memory is allocated now.
#pragma once

#include <cstdint>

namespace tavrenix::bench {

// Bytes that operator new has handed out and not got back, as the allocator rounds them.
std::int64_t allocatedBytes() noexcept;

}  // namespace tavrenix::bench
