#include "maintain/live_paths.hpp"

#include <algorithm>

#include "monitor/health.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Path;
using monitor::Storage;
using monitor::Unit;

// How well a path serves its unit: 0 is best.
std::ptrdiff_t rankOf(bool isUsed, const std::string& state) {
  const auto known = std::ranges::find(monitor::kStates, state);
  return isUsed ? known - std::begin(monitor::kStates) : std::ssize(monitor::kStates);
}

bool hasPortsOf(const Path& path, const PathRecord& record) {
  return path.hostPort && path.targetPort && path.hostPort == record.hostPort &&
         path.targetPort == record.targetPort;
}

// Returns nothing if the path is as the journal has it.
std::string driftOfPath(const PathRecord& record, const Path* path) {
  if (path == nullptr) return record.step == Step::gone ? "" : "is gone";
  const std::string now = "is " + stateOf(*path) + " now";
  switch (record.step) {
    case Step::disabled:
      return isOut(*path) ? "" : now + ", although it was drained";
    case Step::disabling:
    case Step::enabling:
      return std::string("is noted as ") + nameOf(record.step) + ", and " + now;
    case Step::out:
      return isOut(*path) ? "" : now + ", and was out before";
    default:
      return isWorse(*path, record) ? now + ", and was " + record.state : "";
  }
}

}  // namespace

bool isOut(const Path& path) {
  return !path.enabled || path.driverState == "failed";
}

const Unit* findUnit(const Storage& storage, const UnitRecord& record) {
  const auto found = std::ranges::find_if(storage.units, [&](const Unit& unit) {
    return unit.identifier == record.identifier && unit.wwid == record.wwid;
  });
  return found == storage.units.end() ? nullptr : &*found;
}

const Path* findPath(const Unit& unit, const PathRecord& record) {
  const bool knowsPorts = record.hostPort && record.targetPort;
  const auto same = std::ranges::find(unit.paths, record.identifier, &Path::identifier);
  if (same != unit.paths.end() &&
      (!knowsPorts || !same->hostPort || !same->targetPort || hasPortsOf(*same, record))) {
    return &*same;
  }
  const auto hasPorts = [&](const Path& path) { return hasPortsOf(path, record); };
  if (!knowsPorts || std::ranges::count_if(unit.paths, hasPorts) != 1) return nullptr;
  return &*std::ranges::find_if(unit.paths, hasPorts);
}

Live liveOf(const Storage& storage, const UnitRecord& unit, const PathRecord& path) {
  const Unit* const found = findUnit(storage, unit);
  return {found, found == nullptr ? nullptr : findPath(*found, path)};
}

PathRecord recordOf(const Path& path) {
  return {path.identifier, path.device,     path.address,
          path.hostPort,   path.targetPort, path.state,
          !isOut(path),    Step::stays,     ""};
}

bool isWorse(const Path& path, const PathRecord& before) {
  return rankOf(!isOut(path), path.state) > rankOf(before.wasUsed, before.state);
}

std::string stateOf(const Path& path) {
  return isOut(path) ? "out of use" : path.state;
}

std::vector<std::string> driftOf(const Journal& journal, const Storage& storage,
                                 const std::string& bootID) {
  std::vector<std::string> lines;
  if (journal.bootID != bootID) {
    lines.push_back("the machine has been started anew since: no path stays out over that");
  }
  for (const UnitRecord& record : journal.units) {
    const Unit* const unit = findUnit(storage, record);
    if (unit == nullptr) {
      lines.push_back(shown(record) + ": the unit is gone");
      continue;
    }
    for (const PathRecord& path : record.paths) {
      const std::string drift = driftOfPath(path, findPath(*unit, path));
      if (!drift.empty()) lines.push_back(shown(record, path) + ' ' + drift);
    }
    if (usablePaths(*unit) == 0) lines.push_back(shown(record) + ": no usable path is left");
  }
  return lines;
}

}  // namespace tavrenix::maintain
