// What top's model makes of looks at storage, without a terminal.
#include <gmock/gmock.h>

#include "monitor/json_document.hpp"
#include "monitor/public_value.hpp"
#include "monitor/top_model.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::monitor {

namespace {

using testing::ElementsAre;

Path path(const char* name, std::uint64_t bytes, const char* state = kStates[0]) {
  Path path;
  path.identifier = name;
  path.state = state;
  path.enabled = true;
  path.counters = {bytes, 0, 1};
  return path;
}

Unit unit(const char* name, std::uint64_t bytes, std::vector<Path> paths = {path("p", 1)}) {
  Unit unit;
  unit.identifier = name;
  unit.counters = {bytes, bytes, bytes};
  unit.paths = std::move(paths);
  return unit;
}

std::vector<std::string> names(const TopModel& model) {
  std::vector<std::string> names;
  for (const TopRow& row : model.rows()) {
    names.push_back((&row == &model.rows()[model.selected()] ? "*" : "") + row.name);
  }
  return names;
}

TEST(TopModel, RatesNeedTwoReadingsThatGrow) {
  TopModel model;
  const auto written = [&](std::uint64_t bytes, double seconds) {
    model.observe({{}, {unit("u", bytes)}}, seconds);
    const auto& rates = model.rows()[0].rates;
    return rates ? rates->written : -1;
  };
  EXPECT_EQ(written(100, 1), -1);
  EXPECT_EQ(written(1100, 3), 500);
  EXPECT_EQ(written(1100, 3), -1) << "no time has passed";
  EXPECT_EQ(written(50, 4), -1) << "the device is a new one";
  EXPECT_EQ(written(60, 5), 10);
  EXPECT_EQ(written(0, 6), -1) << "not readable";
  EXPECT_EQ(written(1u << 30, 7), -1) << "not all of it in one second";
}

TEST(TopModel, SharesAndSkewAndTheLastChange) {
  TopModel model;
  model.foldAll(false);
  const auto look = [&](std::uint64_t bytes, double seconds, const char* state) {
    model.observe(
        {{}, {unit("u", 0, {path("a", bytes), path("b", bytes * 3), path("c", bytes * 4, state)})}},
        seconds);
  };
  look(0, 1, kStates[1]);
  look(100, 2, kStates[1]);
  const auto& rows = model.rows();  // u c b a
  EXPECT_EQ(rows[1].share, 0.5);
  EXPECT_EQ(rows[1].skew, std::nullopt) << "alone in its access state";
  EXPECT_EQ(rows[2].skew, 1.5);
  EXPECT_EQ(rows[0].skew, 1.5);
  look(100, 10, kStates[2]);
  look(100, 14, kStates[2]);
  EXPECT_EQ(rows[0].sinceChange, 4);
  EXPECT_EQ(rows[3].sinceChange, 4);  // a, b, c now, as nothing moves
  EXPECT_EQ(rows[1].sinceChange, std::nullopt);
}

TEST(TopModel, TheSelectionStaysWithItsUnit) {
  TopModel model;
  model.observe({{}, {unit("a", 0), unit("b", 0), unit("c", 0)}}, 1);
  model.move(1);
  model.observe({{}, {unit("a", 1), unit("b", 2), unit("c", 3)}}, 2);
  EXPECT_THAT(names(model), ElementsAre("c", "*b", "a"));
  model.sortBy(TopOrder::name);
  model.reverse();
  model.move(-9);
  model.toggleFold();
  model.move(1);
  EXPECT_THAT(names(model), ElementsAre("c", "*p", "b", "a"));
  model.foldAll(true);
  EXPECT_THAT(names(model), ElementsAre("*c", "b", "a"));
  model.observe({{}, {unit("a", 1), unit("b", 2)}}, 3);
  EXPECT_THAT(names(model), ElementsAre("*b", "a")) << "the next one takes the place";
  model.filter("A");
  EXPECT_THAT(names(model), ElementsAre("*a"));
  model.filter("nothing");
  model.move(1);
  model.toggleFold();
  EXPECT_THAT(names(model), ElementsAre());
}

TEST(Collector, AsksTheHostAtMostTwiceWhatAListWithCountersAsks) {
  test::LibraryHost host;
  test::addStorage(host->memory, {.units = 250, .paths = 8, .volumes = 1});
  readStorage();
  host->watch.reset();
  const Owned<ObArrayRef> units(MPIOCopyLogicalUnits());
  forEach(units.get(), [](ObTypeRef one) {
    const auto handle = static_cast<MPIOLogicalUnitRef>(one);
    const Owned<ObDictionaryRef> properties(MPIOLogicalUnitCopyProperties(handle));
    const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(handle));
    forEach(paths.get(), [](ObTypeRef path) {
      ObRelease(MPIOLogicalUnitPathCopyStatistics(static_cast<MPIOLogicalUnitPathRef>(path)));
    });
  });
  const std::size_t least = host->watch.failable();
  host->watch.reset();
  const std::string document = textOf(documentOfUnits(readStorage(), true), true);
  EXPECT_GT(least, 2000u);
  EXPECT_LE(host->watch.failable(), 2 * least) << least;
  EXPECT_GT(document.size(), 250'000u);
}

}  // namespace

}  // namespace tavrenix::monitor
