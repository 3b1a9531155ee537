// What a machine should have: its units and their paths as they were recorded, as a JSON file.
#pragma once

#include "monitor/json_document.hpp"

namespace tavrenix::monitor {

struct Baseline {
  struct Path {
    std::string identifier;
    // A path is known again by its two ports if both are known, since Linux numbers hosts anew at
    // each start; otherwise by its identifier.
    std::optional<std::string> hostPort, targetPort;
    bool operator==(const Path& other) const;
  };
  struct Unit {
    std::string identifier;
    std::string title;
    std::vector<Path> paths;
    // How many of them should be usable: all but those that stood by for others.
    std::uint64_t usablePaths = 0;
  };
  std::vector<Unit> units;

  // Returns how many usable paths the unit should have, or nothing if it is not in the baseline.
  std::optional<std::uint64_t> expectedPaths(const monitor::Unit& unit) const;
};

Baseline baselineOf(const Storage& storage);
std::string textOf(const Baseline& baseline);
// Errors: throws Failure, which names the file and what is wrong in it.
Baseline readBaseline(const std::string& file);

struct Difference {
  bool isMissing = false;  // since the baseline; otherwise new
  bool isUnit = false;     // otherwise a path
  std::string unit;        // its title, as recorded or as it is now
  std::string path;        // identifier or device; empty for a unit
};
// Returns what is missing and what is new, unit by unit.
std::vector<Difference> compare(const Baseline& baseline, const Storage& storage);
// One line for a person in visible text: "Finance: path 0101 is missing".
std::string describe(const Difference& difference);

}  // namespace tavrenix::monitor
