// What a logical unit makes of its registry entry, and what it keeps when the entry changes or
// goes.
#include "model/logical_unit.hpp"

#include <gmock/gmock.h>

#include "model/identifier.hpp"
#include "model/keys.hpp"
#include "model/registry_names.hpp"
#include "runtime/pool.hpp"
#include "tests/support/storage.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LogicalUnit : public testing::Test {
 protected:
  LogicalUnit() { addStorage(host.memory, {.units = 2, .paths = 3, .volumes = 2}); }
  ~LogicalUnit() override { EXPECT_EQ(host.memory.registry().openHandles(), 0u); }

  ob::Ref<MPIOLogicalUnit> make(EntryID id = unitID(0)) {
    return MPIOLogicalUnit::initWithKsKitServiceEntry(host, id);
  }
  void set(std::string_view name, Value value) { setProperty(host.memory, unitID(0), name, value); }
  std::vector<std::string> volumeNames(const MPIOLogicalUnit& unit) {
    std::vector<std::string> names;
    for (const auto& volume : unit.logicalUnitVolumesArray()->values()) {
      names.push_back(
          textUnder(ob::as<ob::Dictionary>(volume.get()), keys::kMPIOLogicalUnitVolumeNameKey));
    }
    return names;
  }
  void addMedia(EntryID id, bool leaf, std::string_view content) {
    host.memory.registry().addEntry(id, "KsMedia", {wholeDiskID(0)},
                                    dictionary({{"Leaf", flag(leaf)}, {"Content", text(content)}}));
    host.memory.disks().set(
        id, {.volumeName = ob::String::make(content), .bsdName = {}, .mediaSize = {}});
  }

  WatchedHost host;
};

TEST_F(LogicalUnit, PublishesWhatTheRegistrySays) {
  const auto properties = make()->getProperties();
  EXPECT_EQ(properties->pairs().size(), 7u);
  EXPECT_EQ(textUnder(properties.get(), keys::kMPIOLogicalUnitIdentifierKey),
            "600A0B80000000000000000000000000");
  EXPECT_EQ(textUnder(properties.get(), keys::kMPIOLogicalUnitAliasKey), "unit 0");
  EXPECT_EQ(textUnder(properties.get(), keys::kMPIOLogicalUnitVendorIDKey), "MAKER");
  EXPECT_EQ(textUnder(properties.get(), keys::kMPIOLogicalUnitProductIDKey), "ARRAY");
  EXPECT_EQ(properties->value(keys::kMPIOLogicalUnitAlgorithmKey),
            &keys::kMPIOLogicalUnitAlgorithmRoundRobin);
  EXPECT_EQ(numberUnder(properties.get(), keys::kMPIOLogicalUnitBatchCountKey), 16);
}

TEST_F(LogicalUnit, ThatTheRegistryHardlyDescribesReportsLeastBytesAndNoBatchCount) {
  host.memory.registry().addEntry(7, std::string(registry::kLogicalUnitClass), {}, dictionary({}));
  const auto unit = make(7);
  const auto properties = unit->getProperties();
  EXPECT_EQ(unit->logicalUnitAlgorithm(), 0u);
  EXPECT_EQ(properties->value(keys::kMPIOLogicalUnitAlgorithmKey),
            &keys::kMPIOLogicalUnitAlgorithmLeastBytes);
  EXPECT_EQ(numberUnder(properties.get(), keys::kMPIOLogicalUnitBatchCountKey), 0);
  EXPECT_EQ(properties->pairs().size(), 3u);  // these two and the empty array of volumes
}

TEST_F(LogicalUnit, KeepsWhatDisappearsFromItsEntry) {
  const auto unit = make();
  for (const char* name : {"Logical Unit Alias", "Vendor Identification", "Product Identification",
                           "Load Balancing Algorithm", "Logical Unit Unique Identifier"}) {
    set(name, nullptr);
  }
  const auto properties = unit->getProperties();
  EXPECT_EQ(properties->pairs().size(), 7u);
  EXPECT_EQ(textUnder(properties.get(), keys::kMPIOLogicalUnitAliasKey), "unit 0");
  EXPECT_EQ(unit->logicalUnitAlgorithm(), kMPIOAlgorithmRoundRobin);
}

TEST_F(LogicalUnit, KeepsItsFirstIdentifierAndTakesEveryNewAlias) {
  const auto unit = make();
  set("Logical Unit Unique Identifier", data({0x01}));
  set("Logical Unit Alias", text("renamed"));
  unit->setLogicalUnitAlias(ob::String::make("written by a client"));
  EXPECT_EQ(unit->logicalUnitAlias()->view(), "written by a client");
  const auto properties = unit->getProperties();
  EXPECT_EQ(textUnder(properties.get(), keys::kMPIOLogicalUnitIdentifierKey),
            "600A0B80000000000000000000000000");
  EXPECT_EQ(textUnder(properties.get(), keys::kMPIOLogicalUnitAliasKey), "renamed");
}

TEST_F(LogicalUnit, ReadsTheBatchCountForRoundRobinOnly) {
  const auto unit = make();
  struct Case {
    const char* algorithm;
    Value count;
    std::uint32_t code, kept;
  };
  const Case cases[] = {
      {"Modified Round Robin", number(0), 16, 16},
      {"Modified Round Robin", nullptr, 16, 16},
      {"Modified Round Robin", text("9"), 16, 16},
      {"Modified Round Robin", number(0x1'0000'0000), 16, 16},  // its low 32 bits are zero
      {"Modified Round Robin", number(0x1'0000'0007), 16, 7},
      {"Least Queue Depth", number(99), 8, 7},
      {"Least Bytes", number(99), 4, 7},
      {"least bytes", number(99), 4, 7},  // not a name: nothing changes
      {"Modified Round Robin", number(99), 16, 99},
  };
  for (const Case& each : cases) {
    set("Load Balancing Algorithm", text(each.algorithm));
    set("Batch Count", each.count);
    unit->getProperties();
    EXPECT_EQ(unit->logicalUnitAlgorithm(), each.code) << each.algorithm;
    EXPECT_EQ(unit->logicalUnitBatchCount(), each.kept) << each.algorithm;
  }
}

TEST_F(LogicalUnit, ListsLeavesAndSharedVolumesButNoComponents) {
  EXPECT_THAT(volumeNames(*make()), ElementsAre("Volume 0", "Volume 1"));
  addMedia(1000, false, "Zorva_Quil");
  addMedia(1001, true, "Zorva_Quil_Component");
  addMedia(1002, true, "Zorva_Quil");
  addMedia(1003, false, "Other");
  host.memory.registry().addEntry(1004, "KsMedia", {unitID(0)},
                                  dictionary({}));  // neither property
  host.memory.registry().addEntry(1005, "KsPartitionScheme", {unitID(0)},
                                  dictionary({{"Leaf", flag(true)}}));
  host.memory.disks().set(
      1004, {.volumeName = ob::String::make("no leaf"), .bsdName = {}, .mediaSize = {}});
  host.memory.disks().set(
      1005, {.volumeName = ob::String::make("no media"), .bsdName = {}, .mediaSize = {}});
  host.memory.disks().forget(volumeID(0, 1));  // unformatted
  EXPECT_THAT(volumeNames(*make()), ElementsAre("Volume 0", "Zorva_Quil", "Zorva_Quil"));
}

TEST_F(LogicalUnit, DescribesAVolumeByWhatIsKnownOfIt) {
  const auto unit = make();
  const auto* volume = ob::as<ob::Dictionary>(unit->logicalUnitVolumesArray()->values()[1].get());
  EXPECT_EQ(numberUnder(volume, keys::kMPIOLogicalUnitVolumeSizeKey), 1'000'000'000);
  EXPECT_EQ(textUnder(volume, keys::kMPIOLogicalUnitVolumeMountPointKey), "disk0s2");
  EXPECT_FALSE(MPIOLogicalUnit::volumeInfoForLUNVolume(host, 0));
  addMedia(1000, true, "bare");
  const ScopedHandle media(host.registry(), host.registry().findServiceByEntryID(1000));
  EXPECT_EQ(MPIOLogicalUnit::volumeInfoForLUNVolume(host, media.get())->pairs().size(), 1u);
}

TEST_F(LogicalUnit, WhoseEntryVanishedKeepsAllItKnew) {
  const auto unit = make();
  const auto before = unit->getProperties();
  host.memory.registry().removeEntry(unitID(0));
  EXPECT_TRUE(before->equals(*unit->getProperties()));
  EXPECT_FALSE(MPIOLogicalUnit::propertiesForEntryID(host, unitID(0)));
}

TEST_F(LogicalUnit, KeepsItsVolumesWhereTheWalkCannotBeMade) {
  const auto unit = make();
  const auto volumes = unit->logicalUnitVolumesArray();
  host.watch.failAll(Operation::kCreateIterator);
  unit->getProperties();
  EXPECT_EQ(unit->logicalUnitVolumesArray(), volumes);
  host.watch.reset();
  unit->getProperties();
  EXPECT_NE(unit->logicalUnitVolumesArray(), volumes);  // replaced by each walk
}

TEST_F(LogicalUnit, WalksItsMediaEvenWhereItsPropertiesCannotBeRead) {
  const auto unit = make();
  addMedia(1000, true, "new");
  host.watch.failAll(Operation::kCopyProperties);
  EXPECT_EQ(textUnder(unit->getProperties().get(), keys::kMPIOLogicalUnitAliasKey), "unit 0");
  EXPECT_THAT(volumeNames(*unit), ElementsAre("Volume 0", "Volume 1", "new"));
}

TEST_F(LogicalUnit, NamesACombinedAlgorithmLeastBytes) {
  set("Load Balancing Algorithm", nullptr);
  const auto unit = make();
  const ob::Pool pool;
  for (const std::uint32_t code : {12u, 20u, 24u}) {
    ASSERT_TRUE(unit->setAlgorithm(code, nullptr));
    EXPECT_EQ(unit->getProperties()->value(keys::kMPIOLogicalUnitAlgorithmKey),
              &keys::kMPIOLogicalUnitAlgorithmLeastBytes);
  }
}

TEST_F(LogicalUnit, KeepsTheFirstPathUnderAKey) {
  const auto unit = make();
  const auto first = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, pathID(0, 0), unit.get());
  const auto second =
      MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, pathID(0, 0), unit.get());
  unit->addPath(nullptr, 1);
  unit->addPath(first.get(), pathID(0, 0));
  unit->addPath(second.get(), pathID(0, 0));
  EXPECT_THAT(unit->getPaths()->values(), ElementsAre(first));
  EXPECT_EQ(first->matchingLogicalUnit(), unit);
  EXPECT_FALSE(second->matchingLogicalUnit());
  EXPECT_EQ(ob::as<ob::Number>(unit->getPathIDs()->values()[0].get())->asUInt64(), pathID(0, 0));
}

TEST_F(LogicalUnit, RemovesOnePathOrAllWithTheirDifferences) {
  auto unit = make();
  const auto first = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, pathID(0, 0), unit.get());
  const auto second =
      MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, pathID(0, 1), unit.get());
  unit->addPath(first.get(), pathID(0, 0));
  unit->addPath(second.get(), pathID(0, 1));
  unit->removePath(nullptr);
  unit->removePath(first.get());
  EXPECT_FALSE(first->matchingLogicalUnit());
  ASSERT_EQ(unit->getPaths()->values().size(), 1u);
  EXPECT_EQ(unit->getPaths()->values()[0].get(), second.get());
  unit->removeAllPaths();
  EXPECT_THAT(unit->getPaths()->values(), IsEmpty());
  EXPECT_EQ(second->matchingLogicalUnit(), unit);  // left as it was
  unit = nullptr;
  EXPECT_FALSE(second->matchingLogicalUnit());  // and reads as none once the unit is gone
}

TEST_F(LogicalUnit, AddsUpItsStatistics) {
  const auto unit = make();
  host.memory.tunable().setLogicalUnitStatistics(unitID(0), {UINT64_MAX, 3, 7});
  const auto statistics = unit->getCurrentStatistics();
  EXPECT_EQ(statistics->pairs().size(), 5u);
  EXPECT_EQ(
      statistics->valueAs<ob::Number>(keys::kMPIOLogicalUnitStatisticsBytesSentKey)->asUInt64(),
      UINT64_MAX);
  EXPECT_EQ(numberUnder(statistics.get(), keys::kMPIOLogicalUnitStatisticsBytesReceivedKey), 3);
  EXPECT_EQ(numberUnder(statistics.get(), keys::kMPIOLogicalUnitStatisticsTotalBytesKey),
            2);  // wraps
  EXPECT_EQ(numberUnder(statistics.get(), keys::kMPIOLogicalUnitStatisticsTotalCommandsKey), 7);
  EXPECT_NE(statistics->valueAs<ob::Date>(keys::kMPIOLogicalUnitStatisticsSamplingDateKey),
            nullptr);
}

TEST_F(LogicalUnit, WhoseDriverIsSilentHasStatisticsOfZeros) {
  const auto unit = make();
  host.watch.failAll(Operation::kTunable);
  testing::internal::CaptureStderr();
  const auto statistics = unit->getCurrentStatistics();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "sysctlbyname failed to get stats block: -1\n");
  EXPECT_EQ(statistics->pairs().size(), 5u);
  for (const ob::String* key : {&keys::kMPIOLogicalUnitStatisticsBytesSentKey,
                                &keys::kMPIOLogicalUnitStatisticsBytesReceivedKey,
                                &keys::kMPIOLogicalUnitStatisticsTotalCommandsKey}) {
    EXPECT_EQ(numberUnder(statistics.get(), *key), 0) << key->view();
  }
}

TEST(IdentifierText, HasTwoDigitsAByte) {
  const auto of = [](std::vector<std::uint8_t> bytes) {
    return std::string(identifierText(*ob::Data::make(bytes))->view());
  };
  EXPECT_EQ(of({0x60, 0x0A, 0xFF}), "600AFF");
  EXPECT_EQ(of({}), "");
  EXPECT_EQ(of(std::vector<std::uint8_t>(127, 0xAB)).size(), 254u);
}

TEST(IdentifierTextDeathTest, EndsTheProcessRatherThanCutAnIdentifier) {
  const auto tooLong = ob::Data::make(std::vector<std::uint8_t>(128, 0));
  EXPECT_DEATH(identifierText(*tooLong), "fatal: a device identifier is longer than 127 bytes");
}

}  // namespace
}  // namespace tavrenix::test
