#include "maintain/journal.hpp"

#include <algorithm>

#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

constexpr const char* kSteps[] = {"stays",    "out",      "planned", "disabling",
                                  "disabled", "enabling", "enabled", "gone"};
constexpr const char* kJournalStates[] = {"planned", "draining",  "drained", "undoing",
                                          "undone",  "restoring", "restored"};

template <class Value, std::size_t N>
std::optional<Value> valueNamed(const char* const (&names)[N], const std::string& name) {
  const auto found = std::ranges::find(names, name);
  if (found == std::end(names)) return std::nullopt;
  return static_cast<Value>(found - std::begin(names));
}

Usable usable(const UnitRecord& unit, bool withTaken) {
  Usable result;
  for (const PathRecord& path : unit.paths) {
    if (!path.wasUsed || (!withTaken && isTaken(path))) continue;
    for (std::size_t i = 0; i < std::size(result.byState); ++i) {
      if (path.state == monitor::kStates[i]) ++result.byState[i];
    }
  }
  return result;
}

}  // namespace

const char* nameOf(Step step) {
  return kSteps[static_cast<std::size_t>(step)];
}

const char* nameOf(State state) {
  return kJournalStates[static_cast<std::size_t>(state)];
}

std::optional<Step> stepNamed(const std::string& name) {
  return valueNamed<Step>(kSteps, name);
}

std::optional<State> stateNamed(const std::string& name) {
  return valueNamed<State>(kJournalStates, name);
}

bool isOpen(State state) {
  return state == State::draining || state == State::drained || state == State::undoing ||
         state == State::restoring;
}

bool isTaken(const PathRecord& path) {
  return path.step != Step::stays && path.step != Step::out;
}

bool mayBeOut(const PathRecord& path) {
  return path.step == Step::disabling || path.step == Step::disabled || path.step == Step::enabling;
}

Usable usableBefore(const UnitRecord& unit) {
  return usable(unit, true);
}

Usable usableAfter(const UnitRecord& unit) {
  return usable(unit, false);
}

std::size_t takenPaths(const Journal& journal) {
  std::size_t count = 0;
  for (const UnitRecord& unit : journal.units) {
    count += static_cast<std::size_t>(std::ranges::count_if(unit.paths, isTaken));
  }
  return count;
}

std::string shown(const UnitRecord& unit) {
  return monitor::visible(unit.title);
}

std::string shown(const UnitRecord& unit, const PathRecord& path) {
  return shown(unit) + ": path " + monitor::visible(path.device ? *path.device : path.identifier);
}

}  // namespace tavrenix::maintain
