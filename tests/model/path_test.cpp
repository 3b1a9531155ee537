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

TEST_F(Path, CopiesThePropertiesOfItsEntryAndKeepsItsUnitsID) {
  const auto whole = MPIOLogicalUnitPath::propertiesForEntryID(host, id);
  EXPECT_TRUE(whole->equals(*host.memory.registry().properties(id)));
  EXPECT_FALSE(MPIOLogicalUnitPath::propertiesForEntryID(host, 99));
  EXPECT_EQ(path->matchingLogicalUnitEntryID(), unitID(0));
  unit = nullptr;
  EXPECT_EQ(make(id)->matchingLogicalUnitEntryID(), 0u);
}

TEST_F(Path, FindsTheNearestHostPort) {
  const auto controller = [](std::uint8_t last) {
    return dictionary({{"Unique SCSI Port Identifier", data({last})}});
  };
  memory::MemoryRegistry& registry = host.memory.registry();
  registry.addEntry(500, "KsSCSIHost", {},
                    dictionary({{"Controller Characteristics", controller(5)}}));
  registry.addEntry(501, "KsSCSITarget", {500}, dictionary({}));
  registry.addEntry(502, std::string(registry::kPathClass), {501}, dictionary({}));
  const auto found = make(502);
  EXPECT_TRUE(found->scsiInitiatorPortIdentifier()->equals(*data({5})));
  setProperty(host.memory, 502, "Controller Characteristics", controller(2));
  found->rebuildPropertiesFromEntry();
  EXPECT_TRUE(found->scsiInitiatorPortIdentifier()->equals(*data({2})));
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

TEST_F(Path, KeepsItsStateWhereTheDriverIsSilentAndMakesOnlyTheErrorThatIsWanted) {
  host.watch.failAll(Operation::kTunable);
  const auto uses = keys::kMPIOErrorResultCodeKey.retainCount();
  testing::internal::CaptureStderr();
  path->rebuildPropertiesFromEntry();
  EXPECT_FALSE(path->getCurrentStatistics());
  EXPECT_EQ(keys::kMPIOErrorResultCodeKey.retainCount(), uses);
  const ob::Error* error = nullptr;
  EXPECT_FALSE(path->isEnabled(&error));
  const std::string line = "sysctlbyname failed to get stats block: -1\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line + line);
  EXPECT_EQ(state(), "Active Optimized");
  EXPECT_EQ(error->domain().view(), "sysctlbyname failed");
  EXPECT_EQ(error->code(), 0x08000005);
  EXPECT_TRUE(error->userInfo()->equals(*dictionary({{"Error Result Code", number(-1)}})));
}

TEST_F(Path, KeepsWhatItKnewWhicheverReadFails) {
  const auto whole = path->getProperties();
  const std::size_t reads = failEveryOperation(
      host.watch, [&] { path->rebuildPropertiesFromEntry(); },
      [&] { EXPECT_TRUE(whole->equals(*path->getProperties())); });
  EXPECT_EQ(reads, 4u);
}

TEST_F(Path, ThatHasNeverBeenReadHasNeitherStateNorFlag) {
  host.memory.tunable().forget(id);
  testing::internal::CaptureStderr();
  EXPECT_EQ(make(id)->getProperties()->pairs().size(), 3u);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(make(99)->getProperties()->pairs().size(), 0u);
}

TEST_F(Path, KeepsItsFirstIdentifierEvenAnEmptyOne) {
  set("Logical Unit Path Identifier", data({}));
  path->rebuildPropertiesFromEntry();
  EXPECT_EQ(path->pathID()->view(), "0001");
  const auto empty = make(id);
  set("Logical Unit Path Identifier", data({0x00, 0xFF}));
  empty->rebuildPropertiesFromEntry();
  EXPECT_EQ(empty->pathID()->view(), "");
  const auto text = MPIOLogicalUnitPath::logicalUnitPathIdentifierFromPropertiesDict(
      host.memory.registry().properties(id).get());
  EXPECT_EQ(text->view(), "00FF");
  EXPECT_FALSE(MPIOLogicalUnitPath::logicalUnitPathIdentifierFromPropertiesDict(nullptr));
}

TEST_F(Path, LocatesTheLastUnitBelowIt) {
  EXPECT_EQ(path->locateLogicalUnitID(), unitID(0));
  const std::string unitClass(registry::kLogicalUnitClass);
  host.memory.registry().addEntry(900, unitClass, {id}, dictionary({}));
  EXPECT_EQ(path->locateLogicalUnitID(), 900u);
  host.memory.registry().removeEntry(id);
  EXPECT_EQ(path->locateLogicalUnitID(), 0u);
}

TEST_F(Path, WithoutUnitRefusesChangesWithoutAWord) {
  const auto* const untouched = MPIOErrorCreate("before", kErrorBadArgument);
  const ob::Error* error = untouched;
  EXPECT_FALSE(path->enable(&error));
  EXPECT_FALSE(path->disable(&error));
  EXPECT_EQ(error, untouched);
}

TEST_F(Path, PassesOverValuesOfTheWrongKind) {
  set("Protocol Characteristics", text("no dictionary"));
  set("Controller Characteristics", dictionary({{"Unique SCSI Port Identifier", text("no data")}}));
  set("Logical Unit Path Identifier", number(4));
  set("Vendor Identification", flag(true));
  const auto odd = make(id);
  EXPECT_EQ(odd->getProperties()->pairs().size(), 2u);  // its state and whether it is enabled
  EXPECT_FALSE(odd->vendorID());
  EXPECT_EQ(odd->productID()->view(), "ARRAY");
}

}  // namespace
}  // namespace tavrenix::test
