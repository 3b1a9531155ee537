// What is wrong with a unit and with a path. All reports judge by this alone.
#pragma once

#include <cstdint>

#include "monitor/storage_facts.hpp"

namespace tavrenix::monitor {

// Returns true if requests can go down the path now: it is enabled, the driver has not failed it,
// and the array reports one of the two active states.
bool isUsable(const Path& path);
std::size_t usablePaths(const Unit& unit);

// Returns the one port of the host, or of the array, that all usable paths go through. Nothing if
// there are several or none, or if one is not known.
std::optional<std::string> onlyPort(const Unit& unit, std::optional<std::string> Path::*port);

// Returns what is wrong with the path, one clause for a person in visible text, empty if it is
// well. A standby path is well.
std::string faultOf(const Path& path);

struct Finding {
  bool isCritical = false;  // no request can be answered, now or with the next failure of a path
  std::string text;         // visible text, without the unit's name
};

// Returns everything that is wrong with the unit, the worst first. expected: how many usable paths
// there should be; nothing if that is not known.
std::vector<Finding> findingsOf(const Unit& unit, std::optional<std::uint64_t> expected);

}  // namespace tavrenix::monitor
