// An operator new that can be told to fail, for this thread, and that counts.
#pragma once

#include <cstddef>

namespace tavrenix::test {

// Lets that many allocations of this thread succeed, fails the one after them, and then lets all
// succeed.
void failAllocationAfter(std::size_t successes) noexcept;
// Forgets the order; whether it had been carried out.
bool allocationFailed() noexcept;
// Calls attempt with its first allocation failing, then with its second and so on, until none
// fails; after each calls check with whether one failed. Returns how many can fail.
template <class Attempt, class Check>
std::size_t failEveryAllocation(Attempt attempt, Check check) {
  for (std::size_t site = 0;; ++site) {
    failAllocationAfter(site);
    attempt();
    const bool failed = allocationFailed();
    check(failed);
    if (!failed) return site;
  }
}
// Allocations of all threads that have not been given back.
std::size_t liveAllocations() noexcept;

}  // namespace tavrenix::test
