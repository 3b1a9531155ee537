// What a path reads from its registry entry and from the driver's state byte.
#include "model/path.hpp"

#include <gtest/gtest.h>

#include "host/registry_names.hpp"
#include "model/keys.hpp"
#include "model/logical_unit.hpp"
#include "tests/support/sample_storage.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {
namespace {

class Path : public testing::Test {
 protected:
  Path() {
    addStorage(host.memory, {.units = 1, .paths = 2, .volumes = 0});
    path = make(id);
  }
  ~Path() override { EXPECT_EQ(host.memory.registry().openHandles(), 0u); }

  ob::Ref<MPIOLogicalUnitPath> make(EntryID entry) {
    return MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, entry, nullptr);
  }

  WatchedHost host;
  const EntryID id = pathID(0, 1);
  ob::Ref<MPIOLogicalUnitPath> path;
};

TEST_F(Path, TakesItsStateFromTheCountersThatWereReadLast) {
  const struct {
    std::uint8_t byte;
    const char* state;
    bool enabled;
  } cases[] = {{0x81, "Active Non-Optimized", false}, {0x02, "Standby", true},
               {0x03, "Unavailable", true},           {0x80, "Active Optimized", false},
               {0x0F, "Unavailable", true},           {0x70, "Active Optimized", true},
               {0x8E, "Unavailable", false}};
  for (const auto& each : cases) {
    SCOPED_TRACE(static_cast<int>(each.byte));
    const auto before = path->getProperties();
    host.memory.tunable().setPathStatistics(id, {1, 2, 3, each.byte});
    EXPECT_EQ(path->isEnabled(nullptr), each.enabled);
    EXPECT_TRUE(path->getProperties()->equals(*before)) << "asking takes nothing over";
    EXPECT_EQ(numberUnder(path->getCurrentStatistics().get(),
                          keys::kMPIOLogicalUnitPathStatisticsPathStateKey),
              each.byte);
    EXPECT_EQ(path->pathState()->view(), each.state);
    EXPECT_EQ(path->pathEnabled(), ob::Boolean::of(each.enabled));
  }
}

TEST_F(Path, KeepsWhatItKnewWhicheverReadFails) {
  const auto whole = path->getProperties();
  const std::size_t reads = failEveryOperation(
      host.watch, [&] { path->rebuildPropertiesFromEntry(); },
      [&] { EXPECT_TRUE(whole->equals(*path->getProperties())); });
  EXPECT_EQ(reads, 4u);
}

TEST_F(Path, KeepsItsFirstIdentifierEvenAnEmptyOne) {
  setProperty(host.memory, id, "Logical Unit Path Identifier", data({}));
  path->rebuildPropertiesFromEntry();
  EXPECT_EQ(path->pathID()->view(), "0001");
  const auto empty = make(id);
  setProperty(host.memory, id, "Logical Unit Path Identifier", data({0x00, 0xFF}));
  empty->rebuildPropertiesFromEntry();
  EXPECT_EQ(empty->pathID()->view(), "");
  EXPECT_EQ(make(id)->pathID()->view(), "00FF");
}

TEST_F(Path, LooksItsEntryUpAfreshAndTheLastUnitBelowIt) {
  const std::string unitClass(registry::kLogicalUnitClass);
  host.memory.registry().addEntry(900, unitClass, {id}, dictionary({}));
  EXPECT_EQ(path->locateLogicalUnitID(), 900u);
  host.memory.registry().removeEntry(id);
  EXPECT_EQ(path->locateLogicalUnitID(), 0u);
  EXPECT_EQ(make(id)->getProperties()->pairs().size(), 0u) << "made all the same";
}

}  // namespace
}  // namespace tavrenix::test
