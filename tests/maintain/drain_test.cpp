// Drains that are killed, stopped or surprised at every operation in turn.
#include <gmock/gmock.h>

#include <functional>
#include <set>

#include "maintain/bring_back.hpp"
#include "maintain/drain.hpp"
#include "maintain/journal_json.hpp"
#include "maintain/live_paths.hpp"
#include "maintain/plan.hpp"
#include "monitor/failure.hpp"
#include "monitor/health.hpp"

namespace tavrenix::maintain {

namespace {

using monitor::Failure;
using monitor::kStates;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

monitor::Path path(const char* name, const char* hostPort, const char* state, bool enabled = true) {
  monitor::Path path;
  path.identifier = name;
  path.hostPort = hostPort;
  path.state = state;
  path.enabled = enabled;
  path.counters.emplace();
  path.inFlight = 0;
  return path;
}

struct Killed {};  // not an exception that any code under test catches

// Storage in memory, and a journal that outlives the process that writes it. A disk still has two
// requests under way when its path is taken out, and answers one in each pause. Each operation can
// be made to fail.
class TestWorld final : public World {
 public:
  TestWorld() {
    monitor::Unit one, two;
    one.identifier = "one";
    one.paths = {path("a", "left", kStates[0]), path("b", "right", kStates[0]),
                 path("c", "left", kStates[1], false), path("d", "right", kStates[2])};
    two.identifier = "two";
    two.paths = {path("e", "left", kStates[1]), path("f", "right", kStates[1]),
                 path("g", "left", kStates[2])};
    storage.units = {one, two};
  }

  monitor::Storage read() override {
    count();
    return storage;
  }
  void setUsed(const monitor::Unit& unit, const monitor::Path& wanted, bool isUsed) override {
    count();
    if (refusals.contains(wanted.identifier + (isUsed ? " in" : " out"))) throw Failure("refused");
    monitor::Path& path = at(wanted.identifier.c_str());
    path.enabled = isUsed;
    path.inFlight = isUsed ? 0 : 2;
    const auto& now =
        *std::ranges::find(storage.units, unit.identifier, &monitor::Unit::identifier);
    EXPECT_TRUE(usablePaths(now) != 0 || isSurprised) << unit.identifier;
    count();  // the driver may have done it before the answer
  }
  void keep(const Journal& journal) override {
    count();
    if (isDiskFull) throw Failure("no space");
    disk = monitor::textOf(documentOf(journal), true);
  }
  void pause() override {
    count();
    clock += 1;
    for (auto& unit : storage.units) {
      for (auto& path : unit.paths) {
        if (path.enabled && path.identifier == broken) path.driverState = "failed";
        if (*path.inFlight > 0 && !isStuck) --*path.inFlight;
        const std::uint64_t commands = isUsable(path) && path.identifier != idle ? 100 : 0;
        path.counters->commands += isBusy ? commands : 0;
        unit.counters.commands += isBusy ? commands : 0;
      }
    }
  }
  double seconds() override { return clock; }
  std::string now() override { return "now"; }
  bool isStopped() override { return isStoppedNow; }
  bool isConfirmed(const std::string&) override { return true; }
  void tell(const std::string& line) override {
    count();
    told.push_back(line);
  }
  void showProgress(const std::string&) override {}

  monitor::Path& at(const char* name) {
    for (auto& unit : storage.units) {
      for (auto& path : unit.paths) {
        if (path.identifier == name) return path;
      }
    }
    throw std::out_of_range(name);
  }
  void remove(const char* name) {
    for (auto& unit : storage.units) {
      std::erase_if(unit.paths, [&](const auto& path) { return path.identifier == name; });
    }
  }
  std::string used() const {
    std::string names;
    for (const auto& unit : storage.units) {
      for (const auto& path : unit.paths) names += path.enabled ? path.identifier : "";
    }
    return names;
  }
  // Begins anew, as a second process: the journal is what is on disk.
  std::optional<Journal> restarted() {
    before = nullptr;
    return disk.empty() ? std::nullopt : std::optional(journalIn(disk));
  }

  std::string disk;  // the journal
  monitor::Storage storage;
  std::function<void()> before;  // called at the operation failAt
  int failAt = -1, operations = 0;
  double clock = 0;
  std::set<std::string> refusals;
  bool isSurprised = false, isDiskFull = false, isStoppedNow = false, isBusy = true,
       isStuck = false;
  std::string idle;    // the path that carries nothing
  std::string broken;  // the path that fails at its first request
  std::vector<std::string> told;

 private:
  void count() {
    if (operations++ == failAt && before) before();
  }
};

constexpr double kWait = 5;

Journal plan(TestWorld& world, std::vector<const char*> words = {"drain", "--host-port", "left"}) {
  words.push_back(nullptr);
  const Selection selection(monitor::CommandLine(static_cast<int>(words.size() - 1),
                                                 const_cast<char**>(words.data()),
                                                 Selection::kOptions, 0));
  Journal journal = planFor(world.storage, selection, {});
  EXPECT_THAT(refusalsOf(journal), IsEmpty());
  journal.state = State::draining;
  world.keep(journal);
  return journal;
}

bool bringAllBack(TestWorld& world, Journal journal, Purpose purpose) {
  journal.state = purpose == Purpose::undo ? State::undoing : State::restoring;
  world.keep(journal);
  return bringBack(world, journal, purpose, kWait);
}

// All that can happen to a maintenance that goes well.
void live(TestWorld& world) {
  Journal journal = plan(world);
  ASSERT_TRUE(drain(world, journal, kWait));
  EXPECT_EQ(world.used(), "bdf");
  ASSERT_TRUE(bringAllBack(world, journal, Purpose::restore));
}

// Calls attempt with a new world again and again: `event` happens at its first operation, then at
// its second, and so on. After each, calls check. Ends after the attempt that has fewer operations.
template <class Event, class Attempt, class Check>
void atEveryOperation(Event event, Attempt attempt, Check check) {
  for (int at = 0;; ++at) {
    SCOPED_TRACE("operation " + std::to_string(at));
    TestWorld world;
    world.failAt = at;
    world.before = [&] { event(world); };
    attempt(world);
    const bool isLast = world.operations <= at;
    check(world);
    if (isLast) return;
  }
}

void expectTruth(const TestWorld& world, const std::optional<Journal>& journal) {
  std::string mayBeMissing;
  if (journal) {
    for (const UnitRecord& unit : journal->units) {
      for (const PathRecord& path : unit.paths) {
        if (mayBeOut(path)) mayBeMissing += path.identifier;
      }
    }
  }
  for (const auto& unit : world.storage.units) {
    for (const auto& path : unit.paths) {
      const bool isKnown = mayBeMissing.find(path.identifier) != std::string::npos;
      EXPECT_TRUE(path.enabled || isKnown || path.identifier == "c") << path.identifier;
    }
  }
}

TEST(Drain, KilledAtAnyOperationIsUndoneOrResumedFromTheJournalOnDisk) {
  const auto kill = [](TestWorld&) { throw Killed(); };
  const auto killed = [](TestWorld& world) {
    try {
      live(world);
    } catch (const Killed&) {
    }
  };
  for (const bool isUndo : {true, false}) {
    atEveryOperation(kill, killed, [&](TestWorld& world) {
      auto journal = world.restarted();
      expectTruth(world, journal);
      if (!journal || !isOpen(journal->state)) {
        EXPECT_EQ(world.used(), "abdefg");
        return;
      }
      if (!isUndo && journal->state == State::draining) {
        EXPECT_TRUE(drain(world, *journal, kWait));
        EXPECT_EQ(world.used(), "bdf");
      }
      EXPECT_TRUE(bringAllBack(world, *journal, isUndo ? Purpose::undo : Purpose::restore));
      EXPECT_EQ(world.used(), "abdefg") << "and c, which was out before, is left alone";
      EXPECT_EQ(world.restarted()->state, isUndo ? State::undone : State::restored);
    });
  }
}

TEST(Drain, PutsBackWhatItDidAtASurpriseDuringAnyOperation) {
  struct Case {
    const char* name;
    std::function<void(TestWorld&)> event;
    const char* used;  // afterwards
    int unseen;        // operations at which it is too early or too late to be a surprise
    bool isClosed = true;
  };
  const Case cases[] = {
      {"a path of another port fails", [](auto& world) { world.at("b").driverState = "failed"; },
       "abdefg", 1},
      {"its state becomes worse", [](auto& world) { world.at("f").state = kStates[2]; }, "abdefg",
       1},
      {"it vanishes", [](auto& world) { world.remove("b"); }, "adefg", 1},
      {"a unit vanishes", [](auto& world) { world.storage.units.pop_back(); }, "abd", 1, false},
      {"somebody enables a path", [](auto& world) { world.at("a").enabled = true; }, "abdefg", 4},
      {"a path that was out comes back", [](auto& world) { world.at("c").enabled = true; },
       "abcdefg", 1},
      {"the driver refuses", [](auto& world) { world.refusals = {"g out"}; }, "abdefg", 12},
      {"the journal's disk is full", [](auto& world) { world.isDiskFull = true; }, "abdefg", 0,
       false},
      {"requests are not answered", [](auto& world) { world.isStuck = true; }, "abdefg", 7},
      {"the administrator stops it", [](auto& world) { world.isStoppedNow = true; }, "abdefg", 4}};
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    int unseen = 0;
    Journal journal;
    const auto attempt = [&](TestWorld& world) {
      world.operations -= 1;  // the plan is written before anything happens
      world.isSurprised = true;
      journal = plan(world);
      if (drain(world, journal, kWait)) {
        if (world.operations > world.failAt) ++unseen;
        return;
      }
      EXPECT_EQ(world.used(), each.used);
      EXPECT_THAT(journal.surprises, testing::Not(IsEmpty()));
      EXPECT_TRUE(journal.state == State::undone || !each.isClosed);
      world.isDiskFull = false;
      expectTruth(world, world.restarted());
    };
    atEveryOperation(each.event, attempt, [](TestWorld&) {});
    EXPECT_EQ(unseen, each.unseen);
  }
}

TEST(Drain, GoesOnPuttingBackAndStaysOpenIfOnePathDoesNotComeBack) {
  TestWorld world;
  world.refusals = {"g out", "a in"};
  Journal journal = plan(world);
  EXPECT_FALSE(drain(world, journal, kWait));
  EXPECT_EQ(world.used(), "bdefg");
  EXPECT_EQ(world.restarted()->state, State::undoing);
  EXPECT_THAT(journal.surprises, Contains(HasSubstr("path a is not back: refused")));
  EXPECT_THAT(driftOf(journal, world.storage, "another start"), testing::SizeIs(2));
  world.refusals.clear();
  EXPECT_TRUE(bringAllBack(world, journal, Purpose::undo));
  EXPECT_EQ(world.used(), "abdefg");
}

TEST(Restore, ChecksThatEachPathIsAsBeforeAndCarriesRequests) {
  struct Case {
    std::function<void(TestWorld&)> event;
    const char* told;
    bool isSurprise, isClosed;
  };
  const Case cases[] = {
      {[](auto&) {}, "one: path a carries I/O", false, true},
      {[](auto&) {}, "two: path g is standby and needs no I/O", false, true},
      {[](auto& world) { world.isBusy = false; }, "one: no I/O to be seen", false, true},
      {[](auto& world) { world.idle = "a"; }, "one: path a carries no I/O although its unit does",
       true, true},
      {[](auto& world) { world.broken = "a"; }, "one: path a is out of use again", true, true},
      {[](auto& world) { world.at("e").state = kStates[2]; },
       "two: path e was active_nonoptimized and came back standby", true, true},
      {[](auto& world) { world.remove("e"); }, "two: path e is gone and cannot be brought back",
       true, false},
      {[](auto& world) { world.isStoppedNow = true; },
       "stopped before two: path g was brought back", true, false}};
  for (const Case& each : cases) {
    SCOPED_TRACE(each.told);
    TestWorld world;
    Journal journal = plan(world);
    ASSERT_TRUE(drain(world, journal, kWait));
    each.event(world);
    EXPECT_EQ(bringAllBack(world, journal, Purpose::restore), !each.isSurprise);
    EXPECT_EQ(isOpen(world.restarted()->state), !each.isClosed);
    if (each.isSurprise) {
      EXPECT_THAT(world.restarted()->surprises, Contains(each.told));
    } else {
      EXPECT_THAT(world.told, Contains(each.told));
    }
    world.isStoppedNow = false;
    if (!each.isClosed) bringAllBack(world, *world.restarted(), Purpose::undo);
    EXPECT_EQ(world.restarted()->state, each.isClosed ? State::restored : State::undone);
  }
}

// A machine that was started anew has numbered its hosts in another order.
TEST(Restore, KnowsAPathAgainByItsPorts) {
  TestWorld world;
  for (const char* name : {"a", "b"}) world.at(name).targetPort = "array";
  Journal journal = plan(world, {"drain", "--path", "a"});
  ASSERT_TRUE(drain(world, journal, kWait));
  std::swap(world.at("a").identifier, world.at("b").identifier);
  EXPECT_EQ(world.used(), "adefg");
  EXPECT_TRUE(bringAllBack(world, journal, Purpose::undo));
  EXPECT_EQ(world.used(), "badefg");
}

}  // namespace

}  // namespace tavrenix::maintain
