#include "maintain/plan.hpp"

#include <algorithm>

#include "maintain/live_paths.hpp"
#include "monitor/failure.hpp"
#include "monitor/health.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Failure;
using monitor::Path;
using monitor::Storage;
using monitor::Unit;

std::optional<UnitRecord> plannedUnit(const Unit& unit, const Selection& selection) {
  UnitRecord record{unit.identifier, unit.wwid, unit.title(), false, {}};
  bool isSelected = false;
  for (const Path& path : unit.paths) {
    record.paths.push_back(recordOf(path));
    if (!selection.names(unit, path)) continue;
    isSelected = true;
    record.paths.back().step = isOut(path) ? Step::out : Step::planned;
  }
  return isSelected ? std::optional(std::move(record)) : std::nullopt;
}

void accept(Journal& plan, const Storage& storage, const std::string& name) {
  bool isKnown = false;
  for (UnitRecord& record : plan.units) {
    if (!isNamed(*findUnit(storage, record), name, false)) continue;
    record.isAccepted = isKnown = true;
  }
  if (!isKnown) throw Failure("no unit of this plan is called " + monitor::visible(name));
}

// The driver is asked by identifier, so a path without one of its own cannot be taken out.
std::string identifierFault(const UnitRecord& unit, const PathRecord& path) {
  if (path.identifier.empty()) return " has no identifier, by which the driver could be asked";
  if (std::ranges::count(unit.paths, path.identifier, &PathRecord::identifier) < 2) return {};
  return " shares its identifier with another path";
}

// What a unit would lose, from how many usable paths it had and has left.
std::string lossOf(const Usable& had, const Usable& left) {
  if (left.active() == 0) return had.active() == 0 ? "no usable path" : "its last usable path";
  return had.byState[0] != 0 && left.byState[0] == 0 ? "its last optimized path" : "";
}

// The usable paths that the maintenance leaves, as they are now.
Usable leftOf(const Unit& unit, const UnitRecord& record) {
  Usable left;
  for (const Path& path : unit.paths) {
    const bool isTakenOut = std::ranges::any_of(record.paths, [&](const PathRecord& one) {
      return isTaken(one) && findPath(unit, one) == &path;
    });
    if (isTakenOut || !isUsable(path)) continue;
    ++left.byState[path.state == monitor::kStates[0] ? 0 : 1];
  }
  return left;
}

// Returns nothing if the path is as the plan needs it.
std::string surpriseAbout(const PathRecord& record, const Path* path) {
  if (path == nullptr) return record.step == Step::out ? "" : "is gone";
  switch (record.step) {
    case Step::out:
      return isOut(*path) ? "" : "was out of use before and is in use again";
    case Step::planned:
      return isOut(*path) ? "was taken out of use by something else" : "";
    case Step::disabled:
      return isOut(*path) ? "" : "is in use again";
    case Step::stays:
      return isWorse(*path, record) ? "was " + record.state + " and is " + stateOf(*path) : "";
    default:
      return "";
  }
}

}  // namespace

Journal planFor(const Storage& storage, const Selection& selection,
                const std::vector<std::string>& accepted) {
  selection.check(storage);
  Journal plan;
  plan.selection = selection.words();
  for (const Unit& unit : storage.units) {
    if (auto record = plannedUnit(unit, selection)) plan.units.push_back(std::move(*record));
  }
  for (const std::string& name : accepted) accept(plan, storage, name);
  return plan;
}

std::vector<std::string> refusalsOf(const Journal& plan) {
  std::vector<std::string> lines;
  for (const UnitRecord& unit : plan.units) {
    if (std::ranges::none_of(unit.paths, isTaken)) continue;
    for (const PathRecord& path : unit.paths) {
      const std::string fault = isTaken(path) ? identifierFault(unit, path) : "";
      if (!fault.empty()) lines.push_back(shown(unit, path) + fault);
    }
    const std::string loss = lossOf(usableBefore(unit), usableAfter(unit));
    if (loss.empty() || unit.isAccepted) continue;
    lines.push_back(shown(unit) + (loss.starts_with("no") ? " has " : " would lose ") + loss +
                    "; --accept " + shown(unit) + " allows it");
  }
  if (lines.empty() && takenPaths(plan) == 0) {
    lines.emplace_back("every selected path is out of use already: there is nothing to take out");
  }
  return lines;
}

void expectPlanToHold(const Journal& journal, const Storage& storage) {
  for (const UnitRecord& record : journal.units) {
    const Unit* const unit = findUnit(storage, record);
    if (unit == nullptr) throw Failure(shown(record) + ": the unit is gone");
    for (const PathRecord& path : record.paths) {
      const std::string surprise = surpriseAbout(path, findPath(*unit, path));
      if (!surprise.empty()) throw Failure(shown(record, path) + ' ' + surprise);
    }
    const std::string loss = lossOf(usableBefore(record), leftOf(*unit, record));
    if (!loss.empty() && !record.isAccepted) {
      throw Failure(shown(record) + " would lose " + loss + " by now");
    }
  }
}

}  // namespace tavrenix::maintain
