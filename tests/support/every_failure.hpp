// One failure after another, at every place where there can be one.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/watched.hpp"

namespace tavrenix::test {

// Calls attempt with its first operation of the host failing, then with its second and so on, until
// none fails; after each calls check, with the host in order again. Returns how many can fail.
template <class Attempt, class Check>
std::size_t failEveryOperation(Watch& watch, Attempt attempt, Check check) {
  for (std::size_t site = 0;; ++site) {
    SCOPED_TRACE(site);
    watch.reset();
    watch.failAt(site);
    testing::internal::CaptureStderr();
    attempt();
    testing::internal::GetCapturedStderr();
    const bool failed = watch.failable() > site;
    watch.reset();
    check();
    if (!failed) return site;
  }
}

}  // namespace tavrenix::test
