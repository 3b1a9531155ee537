// What a path makes of its registry entry and of the driver's state byte.
#include "model/path.hpp"

#include <gtest/gtest.h>

#include "model/keys.hpp"
#include "model/logical_unit.hpp"
#include "model/registry_names.hpp"
#include "runtime/pool.hpp"
#include "tests/support/every_failure.hpp"
#include "tests/support/storage.hpp"

namespace tavrenix::test {
namespace {

class Path : public testing::Test {
 protected:
  Path() {
    addStorage(host.memory, {.units = 1, .paths = 2, .volumes = 0});
    unit = MPIOLogicalUnit::initWithKsKitServiceEntry(host, unitID(0));
    path = make(id);
  }
  ~Path() override { EXPECT_EQ(host.memory.registry().openHandles(), 0u); }

  ob::Ref<MPIOLogicalUnitPath> make(EntryID entry) {
    return MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, entry, unit.get());
  }
  void set(std::string_view name, Value value) { setProperty(host.memory, id, name, value); }
  void setState(std::uint8_t state) {
    host.memory.tunable().setPathStatistics(id, {1, 2, 3, state});
  }
  std::string state() {
    return textUnder(path->getProperties().get(), keys::kMPIOLogicalUnitPathStateKey);
  }

  const ob::Pool pool;
  WatchedHost host;
  const EntryID id = pathID(0, 1);
  ob::Ref<MPIOLogicalUnit> unit;
  ob::Ref<MPIOLogicalUnitPath> path;
};

TEST_F(Path, PublishesWhatRegistryAndDriverSay) {
  const auto read = path->getProperties();
  EXPECT_TRUE(read->equals(
      *dictionary({{"Logical Unit Path Identifier", text("0001")},
                   {"Logical Unit Path State", text("Active Optimized")},
                   {"Logical Unit Path Enabled", flag(true)},
                   {"Logical Unit Path Interconnect", text("Fibre Channel Interface")},
                   // Found on the entry above.
                   {"Logical Unit Path Host Port Identifier", data({0x50, 0x01, 1})}})));
  EXPECT_EQ(path->vendorID()->view(), "MAKER");
  EXPECT_EQ(path->productID()->view(), "ARRAY");
  // What a client puts there stays until the next reading.
  const std::uint8_t port[] = {7};
  path->setPathState(ob::String::make("Resting"));
  path->setInterconnectType(ob::String::make("Wire"));
  path->setScsiInitiatorPortIdentifier(ob::Data::make(port));
  EXPECT_TRUE(path->getProperties()->equals(
      *dictionary({{"Logical Unit Path Identifier", text("0001")},
                   {"Logical Unit Path State", text("Resting")},
                   {"Logical Unit Path Enabled", flag(true)},
                   {"Logical Unit Path Interconnect", text("Wire")},
                   {"Logical Unit Path Host Port Identifier", data({7})}})));
  path->rebuildPropertiesFromEntry();
  EXPECT_TRUE(path->getProperties()->equals(*read));
}

TEST_F(Path, ReadsTheStateByte) {
  struct Case {
    std::uint8_t byte;
    const char* state;
    bool enabled;
  };
  const Case cases[] = {{0x00, "Active Optimized", true},
                        {0x01, "Active Non-Optimized", true},
                        {0x02, "Standby", true},
                        {0x03, "Unavailable", true},
                        {0x0F, "Unavailable", true},
                        {0x13, "Unavailable", true},
                        {0x70, "Active Optimized", true},
                        {0x80, "Active Optimized", false},
                        {0x81, "Active Non-Optimized", false},
                        {0x8E, "Unavailable", false}};
  for (const Case& each : cases) {
    SCOPED_TRACE(static_cast<int>(each.byte));
    setState(each.byte);
    path->rebuildPropertiesFromEntry();
    EXPECT_EQ(state(), each.state);
    EXPECT_EQ(path->pathEnabled(), ob::Boolean::of(each.enabled));
    EXPECT_EQ(path->isEnabled(nullptr), each.enabled);
  }
}

TEST_F(Path, AsksTheDriverAfreshWhetherItIsEnabledWithoutTakingNote) {
  setState(0x82);
  EXPECT_FALSE(path->isEnabled(nullptr));
  EXPECT_EQ(path->pathEnabled(), ob::Boolean::of(true));
  EXPECT_EQ(state(), "Active Optimized");
  path->getCurrentStatistics();  // which does take note
  EXPECT_EQ(path->pathEnabled(), ob::Boolean::of(false));
  EXPECT_EQ(state(), "Standby");
}

TEST_F(Path, KeepsWhatItKnewWhicheverReadFails) {
  const auto whole = path->getProperties();
  const std::size_t reads = failEveryOperation(
      host.watch, [&] { path->rebuildPropertiesFromEntry(); },
      [&] { EXPECT_TRUE(whole->equals(*path->getProperties())); });
  EXPECT_EQ(reads, 4u);
}

TEST_F(Path, KeepsItsFirstIdentifierEvenAnEmptyOne) {
  set("Logical Unit Path Identifier", data({}));
  path->rebuildPropertiesFromEntry();
  EXPECT_EQ(path->pathID()->view(), "0001");
  const auto empty = make(id);
  set("Logical Unit Path Identifier", data({0x00, 0xFF}));
  empty->rebuildPropertiesFromEntry();
  EXPECT_EQ(empty->pathID()->view(), "");
  EXPECT_EQ(make(id)->pathID()->view(), "00FF");
}

TEST_F(Path, LooksItsEntryUpAfreshAndTheLastUnitBelowIt) {
  EXPECT_TRUE(MPIOLogicalUnitPath::propertiesForEntryID(host, id)->equals(
      *host.memory.registry().properties(id)));
  EXPECT_EQ(path->locateLogicalUnitID(), unitID(0));
  const std::string unitClass(registry::kLogicalUnitClass);
  host.memory.registry().addEntry(900, unitClass, {id}, dictionary({}));
  EXPECT_EQ(path->locateLogicalUnitID(), 900u);
  host.memory.registry().removeEntry(id);
  EXPECT_EQ(path->locateLogicalUnitID(), 0u);
  EXPECT_FALSE(MPIOLogicalUnitPath::propertiesForEntryID(host, id));
  EXPECT_EQ(make(id)->getProperties()->pairs().size(), 0u) << "made all the same";
}

TEST_F(Path, WithoutUnitRefusesChangesWithoutAWord) {
  const auto* const untouched = MPIOErrorCreate("before", kErrorBadArgument);
  const ob::Error* error = untouched;
  EXPECT_FALSE(path->enable(&error));
  EXPECT_FALSE(path->disable(&error));
  EXPECT_EQ(error, untouched);
}

}  // namespace
}  // namespace tavrenix::test
