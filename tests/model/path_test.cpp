// What a path makes of its registry entry and of the driver's state byte.
#include "model/path.hpp"

#include <gtest/gtest.h>

#include "model/keys.hpp"
#include "model/logical_unit.hpp"
#include "model/registry_names.hpp"
#include "runtime/pool.hpp"
#include "tests/support/storage.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {
namespace {

class Path : public testing::Test {
 protected:
  Path() {
    addStorage(host.memory, {.units = 1, .paths = 2, .volumes = 0});
    unit = MPIOLogicalUnit::initWithKsKitServiceEntry(host, unitID(0));
    path = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, id, unit.get());
  }
  ~Path() override { EXPECT_EQ(host.memory.registry().openHandles(), 0u); }

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
  const auto properties = path->getProperties();
  EXPECT_EQ(properties->pairs().size(), 5u);
  EXPECT_EQ(textUnder(properties.get(), keys::kMPIOLogicalUnitPathIdentifierKey), "0001");
  EXPECT_EQ(properties->value(keys::kMPIOLogicalUnitPathStateKey),
            &keys::kMPIOPathStateActiveOptimized);
  EXPECT_EQ(properties->value(keys::kMPIOLogicalUnitPathEnabledKey), ob::Boolean::of(true));
  EXPECT_EQ(textUnder(properties.get(), keys::kMPIOLogicalUnitPathInterconnectKey),
            "Fibre Channel Interface");
  const auto* port = properties->valueAs<ob::Data>(keys::kMPIOLogicalUnitPathHostPortIdentifierKey);
  ASSERT_NE(port, nullptr);
  EXPECT_TRUE(port->equals(*data({0x50, 0x01, 1})));  // found on the entry above
  EXPECT_EQ(path->vendorID()->view(), "MAKER");
  EXPECT_EQ(path->productID()->view(), "ARRAY");
  EXPECT_EQ(path->matchingLogicalUnitEntryID(), unitID(0));
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
  auto found = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, 502, unit.get());
  ASSERT_TRUE(found->scsiInitiatorPortIdentifier());
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
  const auto statistics = path->getCurrentStatistics();  // which does take note
  EXPECT_EQ(path->pathEnabled(), ob::Boolean::of(false));
  EXPECT_EQ(state(), "Standby");
  EXPECT_EQ(numberUnder(statistics.get(), keys::kMPIOLogicalUnitPathStatisticsPathStateKey), 0x82);
}

TEST_F(Path, ReportsSixStatistics) {
  host.memory.tunable().setPathStatistics(id, {UINT64_MAX, 2, 3, 0x81});
  const auto statistics = path->getCurrentStatistics();
  EXPECT_EQ(statistics->pairs().size(), 6u);
  EXPECT_EQ(
      statistics->valueAs<ob::Number>(keys::kMPIOLogicalUnitPathStatisticsBytesSentKey)->asUInt64(),
      UINT64_MAX);
  EXPECT_EQ(numberUnder(statistics.get(), keys::kMPIOLogicalUnitPathStatisticsBytesReceivedKey), 2);
  EXPECT_EQ(numberUnder(statistics.get(), keys::kMPIOLogicalUnitPathStatisticsTotalBytesKey), 1);
  EXPECT_EQ(numberUnder(statistics.get(), keys::kMPIOLogicalUnitPathStatisticsTotalCommandsKey), 3);
  EXPECT_NE(statistics->valueAs<ob::Date>(keys::kMPIOLogicalUnitPathStatisticsSamplingDateKey),
            nullptr);
  EXPECT_EQ(numberUnder(statistics.get(), keys::kMPIOLogicalUnitPathStatisticsPathStateKey), 129);
}

TEST_F(Path, KeepsItsStateWhereTheDriverIsSilent) {
  host.watch.failAll(Operation::kTunable);
  testing::internal::CaptureStderr();
  path->rebuildPropertiesFromEntry();
  EXPECT_FALSE(path->getCurrentStatistics());
  const ob::Error* error = nullptr;
  EXPECT_FALSE(path->isEnabled(&error));
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "sysctlbyname failed to get stats block: -1\nsysctlbyname failed to get stats block: -1\n"
      "sysctlbyname failed to get stats block: -1\n");
  EXPECT_EQ(state(), "Active Optimized");
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain().view(), "sysctlbyname failed");
  EXPECT_EQ(error->code(), 0x08000005);
  EXPECT_EQ(numberUnder(error->userInfo(), keys::kMPIOErrorResultCodeKey), -1);
  EXPECT_EQ(error->userInfo()->pairs().size(), 1u);
}

TEST_F(Path, KeepsWhatItKnewWhicheverReadFails) {
  const auto whole = path->getProperties();
  host.watch.reset();
  path->rebuildPropertiesFromEntry();
  const std::size_t reads = host.watch.failable();
  EXPECT_EQ(reads, 4u);
  for (std::size_t position = 0; position < reads; ++position) {
    host.watch.reset();
    host.watch.failAt(position);
    testing::internal::CaptureStderr();
    path->rebuildPropertiesFromEntry();
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(whole->equals(*path->getProperties())) << position;
  }
}

TEST_F(Path, MakesNoErrorThatNobodyWants) {
  const auto uses = keys::kMPIOErrorResultCodeKey.retainCount();
  host.watch.failAll(Operation::kTunable);
  testing::internal::CaptureStderr();
  path->rebuildPropertiesFromEntry();
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(keys::kMPIOErrorResultCodeKey.retainCount(), uses);
}

TEST_F(Path, WritesTheCallersRecordOnlyOnSuccess) {
  EXPECT_FALSE(path->grabPathStatsBuffer(id, nullptr, nullptr));
  EXPECT_EQ(host.watch.count(Operation::kTunable), 1u);  // the one of its making
  SCSIPathStatistics record{.bytesSent = 42};
  testing::internal::CaptureStderr();
  EXPECT_FALSE(path->grabPathStatsBuffer(424242, &record, nullptr));
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(+record.bytesSent, 42u);
}

TEST_F(Path, ThatHasNeverBeenReadHasNeitherStateNorFlag) {
  host.memory.tunable().forget(id);
  testing::internal::CaptureStderr();
  const auto unread = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, id, unit.get());
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(unread->getProperties()->pairs().size(), 3u);
  const auto vanished = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, 99, unit.get());
  EXPECT_EQ(vanished->getProperties()->pairs().size(), 0u);
  EXPECT_EQ(vanished->serviceEntryID(), 99u);
  EXPECT_EQ(MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, id, nullptr)
                ->matchingLogicalUnitEntryID(),
            0u);
}

TEST_F(Path, KeepsItsFirstIdentifierEvenAnEmptyOne) {
  set("Logical Unit Path Identifier", data({0x77}));
  path->rebuildPropertiesFromEntry();
  EXPECT_EQ(path->pathID()->view(), "0001");

  set("Logical Unit Path Identifier", data({}));
  const auto empty = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, id, unit.get());
  EXPECT_EQ(empty->pathID()->view(), "");
  set("Logical Unit Path Identifier", data({0x00, 0xFF}));
  empty->rebuildPropertiesFromEntry();
  EXPECT_EQ(empty->pathID()->view(), "");
  EXPECT_EQ(MPIOLogicalUnitPath::logicalUnitPathIdentifierFromPropertiesDict(
                host.memory.registry().properties(id).get())
                ->view(),
            "00FF");
  EXPECT_FALSE(MPIOLogicalUnitPath::logicalUnitPathIdentifierFromPropertiesDict(nullptr));
}

TEST_F(Path, KeepsWhatItIsGivenUntilTheRegistrySaysOtherwise) {
  const std::uint8_t port[] = {7};
  path->setPathState(ob::String::make("Resting"));
  path->setInterconnectType(ob::String::make("Wire"));
  path->setScsiInitiatorPortIdentifier(ob::Data::make(port));
  const auto given = path->getProperties();
  EXPECT_EQ(textUnder(given.get(), keys::kMPIOLogicalUnitPathStateKey), "Resting");
  EXPECT_EQ(textUnder(given.get(), keys::kMPIOLogicalUnitPathInterconnectKey), "Wire");
  EXPECT_TRUE(given->value(keys::kMPIOLogicalUnitPathHostPortIdentifierKey)->equals(*data({7})));
  path->rebuildPropertiesFromEntry();
  EXPECT_EQ(state(), "Active Optimized");
  EXPECT_EQ(path->interconnectType()->view(), "Fibre Channel Interface");
  EXPECT_TRUE(path->scsiInitiatorPortIdentifier()->equals(*data({0x50, 0x01, 1})));
}

TEST_F(Path, CopiesThePropertiesOfItsEntry) {
  const auto whole = MPIOLogicalUnitPath::propertiesForEntryID(host, id);
  ASSERT_TRUE(whole);
  EXPECT_TRUE(whole->equals(*host.memory.registry().properties(id)));
  EXPECT_FALSE(MPIOLogicalUnitPath::propertiesForEntryID(host, 99));
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

TEST_F(Path, ToleratesValuesOfTheWrongKind) {
  set("Protocol Characteristics", text("no dictionary"));
  set("Controller Characteristics", dictionary({{"Unique SCSI Port Identifier", text("no data")}}));
  set("Logical Unit Path Identifier", number(4));
  set("Vendor Identification", flag(true));
  const auto odd = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, id, unit.get());
  EXPECT_FALSE(odd->pathID());
  EXPECT_FALSE(odd->interconnectType());
  EXPECT_FALSE(odd->scsiInitiatorPortIdentifier());
  EXPECT_FALSE(odd->vendorID());
  EXPECT_EQ(odd->productID()->view(), "ARRAY");
}

}  // namespace
}  // namespace tavrenix::test
