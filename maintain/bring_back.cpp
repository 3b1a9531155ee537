#include "maintain/bring_back.hpp"

#include <algorithm>

#include "maintain/live_paths.hpp"
#include "maintain/traffic.hpp"
#include "monitor/failure.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Failure;
using monitor::Path;

class Return {
 public:
  Return(World& world, Journal& journal, Purpose purpose, double wait)
      : world_(world), journal_(journal), purpose_(purpose), wait_(wait) {}

  bool run() {
    for (auto unit = journal_.units.rbegin(); unit != journal_.units.rend(); ++unit) {
      for (auto path = unit->paths.rbegin(); path != unit->paths.rend(); ++path) {
        if (mayBeOut(*path) && !isEnded_) bringBack(*unit, *path);
      }
    }
    const bool isLeft = std::ranges::any_of(journal_.units, [](const UnitRecord& unit) {
      return std::ranges::any_of(unit.paths, mayBeOut);
    });
    if (purpose_ == Purpose::restore && !isLeft) checkTraffic();
    if (!isLeft) {
      journal_.state = purpose_ == Purpose::restore ? State::restored : State::undone;
      journal_.ended = world_.now();
    }
    keep();
    return !isSurprised_;
  }

 private:
  void surprise(const std::string& text) {
    // A run that is repeated may meet the same again.
    const bool isKnown = std::ranges::find(journal_.surprises, text) != journal_.surprises.end();
    if (!isKnown) journal_.surprises.push_back(text);
    isSurprised_ = true;
    world_.tell(text);
  }

  void checkTraffic() {
    try {
      for (const auto& fault : idlePaths(world_, journal_, wait_)) surprise(fault);
    } catch (const std::exception& error) {
      surprise(error.what());
    }
  }

  // A journal that cannot be written keeps no path out.
  void keep() {
    try {
      world_.keep(journal_);
    } catch (const std::exception& error) {
      if (!isJournalLost_) surprise(error.what());
      isJournalLost_ = true;
    }
  }

  void noteStep(PathRecord& path, Step step) {
    path.step = step;
    path.time = world_.now();
    keep();
  }

  bool mayGoOn(const UnitRecord& unit, const PathRecord& path) {
    if (purpose_ == Purpose::putBack) return true;
    return world_.isConfirmed(shown(unit, path) + " is to be brought back") && !world_.isStopped();
  }

  void bringBack(const UnitRecord& unit, PathRecord& path) {
    if (!mayGoOn(unit, path)) {
      isEnded_ = true;
      surprise("stopped before " + shown(unit, path) + " was brought back");
      return;
    }
    try {
      if (liveOf(world_.read(), unit, path).path == nullptr) return noteGone(unit, path);
      noteStep(path, Step::enabling);
      const double end = world_.seconds() + wait_;
      askUntilTaken(unit, path, end);
      const Path now = awaitUse(unit, path, end);
      noteStep(path, Step::enabled);
      if (isWorse(now, path)) {
        surprise(shown(unit, path) + " was " + path.state + " and came back " + stateOf(now));
      } else {
        world_.tell(shown(unit, path) + " is back");
      }
    } catch (const std::exception& error) {
      surprise(shown(unit, path) + " is not back: " + error.what());
    }
  }

  void noteGone(const UnitRecord& unit, PathRecord& path) {
    if (purpose_ == Purpose::undo) noteStep(path, Step::gone);
    surprise(shown(unit, path) + " is gone and cannot be brought back");
  }

  // The driver refuses requests for a moment while a daemon loads another table.
  void askUntilTaken(const UnitRecord& unit, const PathRecord& path, double end) {
    for (;;) {
      try {
        const monitor::Storage storage = world_.read();
        const Live live = liveOf(storage, unit, path);
        if (live.path == nullptr) throw Failure("it is gone");
        return world_.setUsed(*live.unit, *live.path, true);
      } catch (const Failure&) {
        if (world_.seconds() >= end) throw;
        world_.pause();
      }
    }
  }

  // Returns the path once it is as before, or in use at the end of the wait.
  Path awaitUse(const UnitRecord& unit, const PathRecord& path, double end) {
    for (;;) {
      const monitor::Storage storage = world_.read();
      const Path* const now = liveOf(storage, unit, path).path;
      if (now == nullptr) throw Failure("it is gone");
      if (!isWorse(*now, path)) return *now;
      if (world_.seconds() >= end) {
        if (isOut(*now)) throw Failure("it stays out of use after the request");
        return *now;
      }
      world_.showProgress(shown(unit, path) + ": waiting for it to be " + path.state);
      world_.pause();
    }
  }

  World& world_;
  Journal& journal_;
  const Purpose purpose_;
  const double wait_;
  bool isSurprised_ = false;
  bool isJournalLost_ = false;
  bool isEnded_ = false;
};

}  // namespace

bool bringBack(World& world, Journal& journal, Purpose purpose, double wait) {
  return Return(world, journal, purpose, wait).run();
}

}  // namespace tavrenix::maintain
