// The table line of a multipath map: what was loaded into the driver. Grammar in the kernel's
// drivers/md/dm-mpath.c:
//   <#features> feature... <#handler words> handler... <#groups> <initial group>
//   { <selector> <#selector args> arg... <#paths> <#args per path> { <major:minor> arg... }... }...
#pragma once

#include <vector>

#include "linux/device_number.hpp"

namespace tavrenix::sys {

struct TablePath {
  DeviceNumber device;
  std::vector<std::string> arguments;
  bool operator==(const TablePath&) const = default;
};

struct TableGroup {
  std::string selector;  // "round-robin", "queue-length", "service-time" or another
  std::vector<std::string> selectorArguments;
  std::vector<TablePath> paths;
  bool operator==(const TableGroup&) const = default;
};

struct MultipathTable {
  std::vector<std::string> features;
  std::vector<std::string> handler;
  std::uint64_t initialGroup = 0;  // from 1; 0 where there are no groups
  std::vector<TableGroup> groups;  // in order of priority
  bool operator==(const MultipathTable&) const = default;
};

// Nothing where the line does not follow the grammar to its last word.
std::optional<MultipathTable> parseMultipathTable(std::string_view line);
std::string formatMultipathTable(const MultipathTable& table);

// How many requests in a row go down a path, by the first path that says so; 0 where none does.
// The selectors that are known here take it as their first argument of a path; others may take
// anything.
std::uint64_t repeatCount(const MultipathTable& table);

// The selector of all groups; empty where there is no group or where they differ.
std::string commonSelector(const MultipathTable& table);

}  // namespace tavrenix::sys
