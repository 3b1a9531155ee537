// What one maintenance is to do and has done: the plan, and the record that survives the program.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "monitor/storage_facts.hpp"

namespace tavrenix::maintain {

// What happened to a path. Steps only go on: planned, disabling, disabled, enabling, enabled.
enum class Step : std::uint8_t {
  stays,      // not selected
  out,        // selected, but out of use before: left alone for good
  planned,    // to be taken out
  disabling,  // the driver may have been asked: written before it is
  disabled,   // verified to be out, with no request under way
  enabling,   // the driver may have been asked to use it again
  enabled,    // verified to be in use again
  gone,       // the device is no longer there, so nothing is left to enable
};

struct PathRecord {
  std::string identifier;
  std::optional<std::string> device, address, hostPort, targetPort;
  std::string state;     // before: one of monitor::kStates
  bool wasUsed = false;  // before: enabled, and not failed by the driver
  Step step = Step::stays;
  std::string time;  // of the step, in UTC; empty until there is one
};

struct UnitRecord {
  std::string identifier;
  std::optional<std::string> wwid;
  std::string title;
  bool isAccepted = false;  // may lose its last usable or last optimized path
  std::vector<PathRecord> paths;
};

enum class State : std::uint8_t {
  planned,
  draining,
  drained,
  undoing,
  undone,
  restoring,
  restored
};

struct Journal {
  State state = State::planned;
  std::string host, bootID, user, reason, begun, ended;  // times in UTC
  std::vector<std::string> selection;                    // as the administrator wrote it
  std::vector<std::string> surprises;                    // visible text
  std::vector<UnitRecord> units;                         // those with a selected path
};

// Return the word that stands for it in files and reports.
const char* nameOf(Step step);
const char* nameOf(State state);
std::optional<Step> stepNamed(const std::string& name);
std::optional<State> stateNamed(const std::string& name);

// Returns true if paths may still be out because of this maintenance.
bool isOpen(State state);
// Returns true if this maintenance takes the path out, or has done so.
bool isTaken(const PathRecord& path);
// Returns true if the path may be out because of this maintenance.
bool mayBeOut(const PathRecord& path);

// How many paths of a unit requests can go down, by access state as in monitor::kStates.
struct Usable {
  std::size_t byState[3] = {};  // active/optimized, active/non-optimized, standby
  std::size_t active() const { return byState[0] + byState[1]; }
};
Usable usableBefore(const UnitRecord& unit);
// Without the paths that the maintenance takes.
Usable usableAfter(const UnitRecord& unit);

std::size_t takenPaths(const Journal& journal);

// Return visible text: "finance", and "finance: path sdc".
std::string shown(const UnitRecord& unit);
std::string shown(const UnitRecord& unit, const PathRecord& path);

}  // namespace tavrenix::maintain
