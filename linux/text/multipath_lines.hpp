// The two lines of a multipath map: the table that was loaded into the driver, and the status that
// the driver reports. The grammar is in the kernel's drivers/md/dm-mpath.c:
//
//   table:   <#features> feature... <#handler words> word... <#groups> <initial group>
//            { <selector> <#selector arguments> argument... <#paths> <#arguments per path>
//              { <major:minor> argument... }... }...
//   status:  <#2> <queued ios> <handler waits> <#handler words> word... <#groups> <current group>
//            { <A|D|E> <#selector words> word... <#paths> <#words per path>
//              { <major:minor> <A|F> <failures> word... }... }...
//
// Thread safety: all functions are pure and may be called on any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "linux/text/words.hpp"

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

// The feature that queues requests while no path is usable. The daemon switches it by messages. The
// table that the driver prints shows its present setting.
inline constexpr std::string_view kQueueFeature = "queue_if_no_path";

struct MultipathTable {
  std::vector<std::string> features;
  std::vector<std::string> handler;
  std::uint64_t initialGroup = 0;  // counted from 1; 0 if there are no groups
  std::vector<TableGroup> groups;  // in order of priority
  bool operator==(const MultipathTable&) const = default;
};

// Returns std::nullopt if the line does not follow the grammar to its last word.
std::optional<MultipathTable> parseMultipathTable(std::string_view line);
// Writes the line that parseMultipathTable() reads as the same table.
std::string formatMultipathTable(const MultipathTable& table);

struct StatusPath {
  DeviceNumber device;
  bool used = false;           // 'A': the driver sends requests to it when its group's turn comes
  std::uint64_t failures = 0;  // since the table was loaded
  bool operator==(const StatusPath&) const = default;
};

struct StatusGroup {
  char state = 'E';  // 'A' in use, 'E' enabled, 'D' disabled
  std::vector<StatusPath> paths;
  bool operator==(const StatusGroup&) const = default;
};

struct MultipathStatus {
  std::vector<StatusGroup> groups;
  // Returns whether the driver uses the path, or std::nullopt if the map has no such path.
  std::optional<bool> uses(DeviceNumber device) const;
};

// Returns std::nullopt if the line does not follow the grammar to its last word.
std::optional<MultipathStatus> parseMultipathStatus(std::string_view line);

}  // namespace tavrenix::sys
