// What is different between two looks at the storage.
#pragma once

#include "monitor/json_document.hpp"

namespace tavrenix::monitor {

struct Change {
  const char* event;            // unit_appeared, unit_disappeared, unit_changed, path_appeared, ...
  std::string unit, unitTitle;  // its identifier, and what a person calls it
  std::string path, pathTitle;  // empty for a change of the unit
  const char* what = "";  // the fact that changed, as json names it; empty for comings and goings
  std::optional<std::string> before = {}, after = {};  // nothing if the fact is not known
};

// Returns departures first, then arrivals, then changes of what was there and is. Units and paths
// of equal identifiers are told apart by their order.
std::vector<Change> changesBetween(const Storage& before, const Storage& after);

// One line for a person in visible text, without the time.
std::string describe(const Change& change);
Json asJson(const Change& change);

}  // namespace tavrenix::monitor
