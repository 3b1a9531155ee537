// The driver's path selectors, and the registry's names of the algorithms that they carry out.
//
// Thread safety: all functions are pure and may be called on any thread.
#pragma once

#include "linux/text/multipath_lines.hpp"
#include "runtime/string.hpp"

namespace tavrenix::sys {

struct Selector {
  std::string_view name;        // the driver's
  const ob::String* algorithm;  // the registry's
  bool takesThroughput;         // a path's second argument is its relative throughput
};

inline constexpr std::string_view kRoundRobinSelector = "round-robin";

// Return the selector, or null if none has that name or carries out that algorithm.
const Selector* selectorNamed(std::string_view name);
const Selector* selectorForAlgorithm(std::string_view algorithm);

// Returns the name of the selector that all groups have. Returns an empty text if they differ or
// there is no group.
std::string commonSelector(const MultipathTable& table);

// Returns how many requests in a row go to one path. Takes the number from the first path with a
// known selector, because others may use the argument for something else. Returns 0 if there is
// none.
std::uint64_t repeatCount(const MultipathTable& table);

// Returns the table with that selector in every group and that repeat count for every path. Keeps
// each path's throughput if both the old and the new selector take one.
MultipathTable withSelector(MultipathTable table, const Selector& selector, std::uint64_t repeat);

// Returns true if the tables differ only in selectors, their arguments, the initial group and
// kQueueFeature. The driver prints the last two as they are at the moment, and not as they were
// loaded.
bool differInSelectorsAlone(MultipathTable table, MultipathTable other);

}  // namespace tavrenix::sys
