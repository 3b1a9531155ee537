#include "maintain/traffic.hpp"

#include <algorithm>
#include <set>

#include "maintain/live_paths.hpp"
#include "monitor/health.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Storage;

struct Watched {
  const UnitRecord& unit;
  const PathRecord& path;
  std::uint64_t unitCommands, pathCommands;  // at the beginning
};

bool isExpectedToCarry(const Live& now) {
  const auto& groups = now.unit->groups;
  const auto group = now.path->group.value_or(0);
  const bool isInUse = group == 0 || group > groups.size() || groups[group - 1] == "active";
  return isUsable(*now.path) && isInUse;
}

std::vector<Watched> watchedPaths(const Journal& journal, const Storage& storage) {
  std::vector<Watched> watched;
  for (const UnitRecord& unit : journal.units) {
    for (const PathRecord& path : unit.paths) {
      if (path.step != Step::enabled) continue;
      const Live now = liveOf(storage, unit, path);
      if (now.path == nullptr || !now.path->counters) continue;
      watched.push_back({unit, path, now.unit->counters.commands, now.path->counters->commands});
    }
  }
  return watched;
}

// What can be said of a path that has carried nothing at the end of the wait.
struct Verdict {
  bool isFault = false;
  std::string text;
};

Verdict verdictOn(const Watched& one, const Live& now) {
  // A few requests may all go down one path.
  constexpr std::uint64_t kEnoughForEachPath = 16;
  if (now.path == nullptr) return {true, shown(one.unit, one.path) + " is gone"};
  if (isOut(*now.path)) return {true, shown(one.unit, one.path) + " is out of use again"};
  if (!isUsable(*now.path)) {
    return {false, shown(one.unit, one.path) + " is " + stateOf(*now.path) + " and needs no I/O"};
  }
  if (!isExpectedToCarry(now)) {
    return {false, shown(one.unit, one.path) + " is ready, in a group that is not in use"};
  }
  const std::uint64_t enough = kEnoughForEachPath * now.unit->paths.size();
  if (now.unit->counters.commands < one.unitCommands + enough) {
    return {false, shown(one.unit) + ": no I/O to be seen"};
  }
  return {true, shown(one.unit, one.path) + " carries no I/O although its unit does"};
}

// Removes the paths that carry requests, and tells of them.
void dropBusy(World& world, std::vector<Watched>& watched, const Storage& storage) {
  std::vector<Watched> left;
  for (const Watched& one : watched) {
    const Live now = liveOf(storage, one.unit, one.path);
    const bool isBusy = now.path != nullptr && now.path->counters &&
                        now.path->counters->commands > one.pathCommands;
    if (isBusy) {
      world.tell(shown(one.unit, one.path) + " carries I/O");
    } else {
      left.push_back(one);
    }
  }
  watched.swap(left);
}

}  // namespace

std::vector<std::string> idlePaths(World& world, const Journal& journal, double wait) {
  const double end = world.seconds() + wait;
  Storage storage = world.read();
  std::vector<Watched> watched = watchedPaths(journal, storage);
  const auto mayStillCarry = [&](const Watched& one) {
    const Live now = liveOf(storage, one.unit, one.path);
    return now.path != nullptr && isExpectedToCarry(now);
  };
  while (std::ranges::any_of(watched, mayStillCarry) && world.seconds() < end &&
         !world.isStopped()) {
    world.showProgress("waiting for I/O on the paths that are back");
    world.pause();
    storage = world.read();
    dropBusy(world, watched, storage);
  }
  std::vector<std::string> faults;
  std::set<std::string> told;
  for (const Watched& one : watched) {
    const Verdict verdict = verdictOn(one, liveOf(storage, one.unit, one.path));
    if (verdict.isFault) {
      faults.push_back(verdict.text);
    } else if (told.insert(verdict.text).second) {
      world.tell(verdict.text);
    }
  }
  return faults;
}

}  // namespace tavrenix::maintain
