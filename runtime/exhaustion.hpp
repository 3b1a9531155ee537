// The one place where running out of memory, threads or descriptors is caught.
//
// The C++ side reports exhaustion by std::bad_alloc and std::system_error. No exception may cross
// the C interface or leave a thread's main function, so the outermost function of each runs its
// work through catchExhaustion. Any other exception is a defect and ends the process.
#pragma once

#include <new>
#include <system_error>

namespace ob {

// Runs the work and returns its result, or `failure` if the host ran out of something on the way.
template <class Result, class Work>
Result catchExhaustion(Result failure, Work work) noexcept {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return failure;
  } catch (const std::system_error&) {
    return failure;
  }
}

// Runs work that returns nothing. Returns false if the host ran out of something on the way.
template <class Work>
bool catchExhaustion(Work work) noexcept {
  return catchExhaustion(false, [&] {
    work();
    return true;
  });
}

}  // namespace ob
