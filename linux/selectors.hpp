// Path selectors of the driver, and the registry's names of the algorithms that they are.
#pragma once

#include <array>
#include <string_view>

#include "runtime/string.hpp"

namespace tavrenix::sys {

struct Selector {
  std::string_view name;        // the driver's
  const ob::String* algorithm;  // the registry's
  bool takesThroughput;         // a path's second argument is its relative throughput
};

inline constexpr std::string_view kRoundRobinSelector = "round-robin";

// Null where there is none of that name.
const Selector* selectorNamed(std::string_view name);
const Selector* selectorForAlgorithm(std::string_view algorithm);

}  // namespace tavrenix::sys
