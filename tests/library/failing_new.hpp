// An operator new that can be told to fail, for this thread, and that counts.
#pragma once

#include <cstddef>

namespace tavrenix::test {

// Lets that many allocations of this thread succeed, fails the one after them, and then lets all
// succeed.
void failAllocationAfter(std::size_t successes) noexcept;
// Forgets the order; whether it had been carried out.
bool allocationFailed() noexcept;
// Allocations of all threads that have not been given back.
std::size_t liveAllocations() noexcept;

}  // namespace tavrenix::test
