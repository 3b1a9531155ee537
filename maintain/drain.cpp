#include "maintain/drain.hpp"

#include "maintain/bring_back.hpp"
#include "maintain/live_paths.hpp"
#include "maintain/plan.hpp"
#include "monitor/failure.hpp"
#include "monitor/text_table.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Failure;
using monitor::Path;

// Looks at the path after the request. A path of another port may have failed since the last look,
// so the plan is held against this one too. Returns how many requests the path's disk has not
// answered, or nothing if this host does not count them.
std::optional<std::uint64_t> requestsOf(const Journal& journal, const monitor::Storage& storage,
                                        const UnitRecord& unit, const PathRecord& record) {
  expectPlanToHold(journal, storage);
  const Path& path = *liveOf(storage, unit, record).path;
  if (!isOut(path)) throw Failure(shown(unit, record) + " is still in use after the request");
  return path.inFlight;
}

// Waits until the path's disk has answered everything. A request may still be on its way to the
// disk at the first look, so two looks must find none.
void awaitRequests(World& world, const Journal& journal, const UnitRecord& unit,
                   const PathRecord& record, double wait) {
  constexpr int kLooks = 2;
  const double end = world.seconds() + wait;
  for (int quiet = 0; quiet < kLooks;) {
    const auto requests = requestsOf(journal, world.read(), unit, record);
    if (!requests) return;
    quiet = *requests == 0 ? quiet + 1 : 0;
    const std::string under = monitor::counted(*requests, "request") + " under way";
    if (quiet == 0 && world.seconds() >= end) {
      throw Failure(shown(unit, record) + ": " + under + " were not answered in time");
    }
    if (world.isStopped()) throw Failure("stopped");
    if (quiet == 0) world.showProgress(shown(unit, record) + ": waiting for " + under);
    if (quiet < kLooks) world.pause();
  }
}

void takeOut(World& world, Journal& journal, const UnitRecord& unit, PathRecord& path,
             double wait) {
  const bool isConfirmed = world.isConfirmed(shown(unit, path) + " is to be taken out");
  if (world.isStopped()) throw Failure("stopped");
  if (!isConfirmed) throw Failure("not confirmed");
  const monitor::Storage storage = world.read();
  expectPlanToHold(journal, storage);
  note(world, journal, path, Step::disabling);
  const Live live = liveOf(storage, unit, path);
  world.setUsed(*live.unit, *live.path, false);
  awaitRequests(world, journal, unit, path, wait);
  note(world, journal, path, Step::disabled);
}

void takeAllOut(World& world, Journal& journal, double wait) {
  const std::string all = '/' + std::to_string(takenPaths(journal)) + "  ";
  std::size_t done = 0;
  for (UnitRecord& unit : journal.units) {
    for (PathRecord& path : unit.paths) {
      if (!isTaken(path)) continue;
      ++done;
      if (path.step == Step::disabled) continue;
      takeOut(world, journal, unit, path, wait);
      world.tell(std::to_string(done) + all + shown(unit, path) + " is out");
    }
  }
  expectPlanToHold(journal, world.read());
  journal.state = State::drained;
  journal.ended = world.now();
  world.keep(journal);
}

}  // namespace

void note(World& world, Journal& journal, PathRecord& path, Step step) {
  path.step = step;
  path.time = world.now();
  world.keep(journal);
}

bool drain(World& world, Journal& journal, double wait) {
  try {
    takeAllOut(world, journal, wait);
    return true;
  } catch (const std::exception& surprise) {
    journal.surprises.emplace_back(surprise.what());
    world.tell(journal.surprises.back() + ": what was taken out is brought back");
  }
  journal.state = State::undoing;
  bringBack(world, journal, Purpose::putBack, wait);
  return false;
}

}  // namespace tavrenix::maintain
