// Rates between two readings of counters.
#pragma once

#include "monitor/storage_facts.hpp"

namespace tavrenix::monitor {

// Per second.
struct Rates {
  double read = 0, written = 0, commands = 0;
  double bytes() const { return read + written; }
};

struct Reading {
  std::optional<Counters> counters;
  double seconds = 0;  // of a clock that only goes forward
};

// Nothing if either reading is not known, if a counter went backwards, or if no time passed.
std::optional<Rates> ratesBetween(const Reading& before, const Reading& after);

// The reading to compare the next with. The library gives a unit whose counters cannot be read
// zeros; they count as not known if there was more before.
Reading readingAfter(const Reading& before, const std::optional<Counters>& counters,
                     double seconds);

}  // namespace tavrenix::monitor
