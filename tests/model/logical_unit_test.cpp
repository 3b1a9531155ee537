// What a logical unit makes of its registry entry, and what it keeps when the entry changes or
// goes.
#include "model/logical_unit.hpp"

#include <gmock/gmock.h>

#include "model/identifier.hpp"
#include "model/keys.hpp"
#include "model/registry_names.hpp"
#include "runtime/pool.hpp"
#include "tests/support/every_failure.hpp"
#include "tests/support/storage.hpp"

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
  // With a volume of that name.
  void addMedia(EntryID id, const char* name, const ob::Ref<const ob::Dictionary>& properties,
                const char* className = "KsMedia") {
    host.memory.registry().addEntry(id, className, {wholeDiskID(0)}, properties);
    host.memory.disks().set(id,
                            {.volumeName = ob::String::make(name), .bsdName = {}, .mediaSize = {}});
  }

  WatchedHost host;
  const Value yes = flag(true), no = flag(false);
};

TEST_F(LogicalUnit, PublishesWhatTheRegistrySays) {
  const auto unit = make();
  const auto expected =
      dictionary({{"Logical Unit Identifier", text("600A0B80000000000000000000000000")},
                  {"Logical Unit Alias", text("unit 0")},
                  {"Logical Unit Vendor ID", text("MAKER")},
                  {"Logical Unit Product ID", text("ARRAY")},
                  {"Logical Unit Algorithm", text("Logical Unit Algorithm Round Robin")},
                  {"Logical Unit Batch Count", number(16)},
                  {"Logical Unit Volumes Dictionary Array", unit->logicalUnitVolumesArray()}});
  EXPECT_TRUE(unit->getProperties()->equals(*expected));
}

TEST_F(LogicalUnit, OfAnUnknownOrCombinedAlgorithmReportsLeastBytes) {
  host.memory.registry().addEntry(7, std::string(registry::kLogicalUnitClass), {}, dictionary({}));
  const auto unit = make(7);
  const ob::Pool pool;
  for (const std::uint32_t code : {0u, 12u, 20u, 24u}) {
    unit->setAlgorithm(code, nullptr);
    EXPECT_EQ(unit->logicalUnitAlgorithm(), code);
    EXPECT_TRUE(unit->getProperties()->equals(
        *dictionary({{"Logical Unit Algorithm", text("Logical Unit Algorithm Least Bytes")},
                     {"Logical Unit Batch Count", number(0)},
                     {"Logical Unit Volumes Dictionary Array", unit->logicalUnitVolumesArray()}})));
  }
}

TEST_F(LogicalUnit, KeepsWhatTheRegistryDoesNotSay) {
  const auto unit = make();
  const auto before = unit->getProperties();
  ob::Ref<const ob::Dictionary> after;
  const auto read = [&] { after = unit->getProperties(); };
  failEveryOperation(host.watch, read, [&] {
    for (const auto& [key, value] : before->pairs()) {
      if (key->view() == "Logical Unit Volumes Dictionary Array") continue;
      EXPECT_TRUE(value->equals(*after->value(*key))) << key->view();
    }
  });
  for (const char* name : {"Logical Unit Alias", "Vendor Identification", "Product Identification",
                           "Load Balancing Algorithm", "Logical Unit Unique Identifier"}) {
    set(name, nullptr);
  }
  EXPECT_TRUE(before->equals(*unit->getProperties()));
  set("Logical Unit Unique Identifier", data({0x01}));
  EXPECT_TRUE(before->equals(*unit->getProperties())) << "the first identifier stays";
  host.memory.registry().removeEntry(unitID(0));
  EXPECT_TRUE(before->equals(*unit->getProperties()));
  unit->setLogicalUnitAlias(ob::String::make("set here"));
  EXPECT_EQ(textUnder(unit->getProperties().get(), keys::kMPIOLogicalUnitAliasKey), "set here");
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
  addMedia(1000, "spans", dictionary({{"Leaf", no}, {"Content", text("Zorva_Quil")}}));
  addMedia(1001, "part", dictionary({{"Leaf", yes}, {"Content", text("Zorva_Quil_Component")}}));
  addMedia(1002, "both", dictionary({{"Leaf", yes}, {"Content", text("Zorva_Quil")}}));
  addMedia(1003, "neither", dictionary({{"Leaf", no}, {"Content", text("Other")}}));
  addMedia(1004, "unknown", dictionary({}));
  addMedia(1005, "no media", dictionary({{"Leaf", yes}}), "KsPartitionScheme");
  host.memory.disks().forget(volumeID(0, 1));  // unformatted
  EXPECT_THAT(volumeNames(*make()), ElementsAre("Volume 0", "spans", "both"));
}

TEST_F(LogicalUnit, DescribesAVolumeByWhatIsKnownOfIt) {
  const auto volumes = make()->logicalUnitVolumesArray();
  EXPECT_TRUE(volumes->values()[1]->equals(
      *dictionary({{"Logical Unit Volume Name", text("Volume 1")},
                   {"Logical Unit Volume Size", number(1'000'000'000)},
                   {"Logical Unit Volume Mount Point", text("disk0s2")}})));
  EXPECT_FALSE(MPIOLogicalUnit::volumeInfoForLUNVolume(host, 0));
  addMedia(1000, "bare", dictionary({}));
  const ScopedHandle media(host.registry(), host.registry().findServiceByEntryID(1000));
  EXPECT_EQ(MPIOLogicalUnit::volumeInfoForLUNVolume(host, media.get())->pairs().size(), 1u);
}

TEST_F(LogicalUnit, ReadsItsPropertiesAndItsVolumesEachForItself) {
  const auto unit = make();
  const auto volumes = unit->logicalUnitVolumesArray();
  addMedia(1000, "new", dictionary({{"Leaf", yes}}));
  host.watch.failAll(Operation::kCreateIterator);
  unit->getProperties();
  EXPECT_EQ(unit->logicalUnitVolumesArray(), volumes);
  host.watch.failAll(Operation::kCopyProperties);
  EXPECT_EQ(textUnder(unit->getProperties().get(), keys::kMPIOLogicalUnitAliasKey), "unit 0");
  EXPECT_THAT(volumeNames(*unit), ElementsAre("Volume 0", "Volume 1", "new"));
}

TEST_F(LogicalUnit, KeepsTheFirstPathUnderAKeyAndRemovesOneOrAllWithTheirDifferences) {
  auto unit = make();
  const auto makePath = [&](EntryID id) {
    return MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, id, unit.get());
  };
  const auto first = makePath(pathID(0, 0));
  const auto twin = makePath(pathID(0, 0));
  const auto second = makePath(pathID(0, 1));
  unit->addPath(nullptr, 1);
  unit->addPath(first.get(), pathID(0, 0));
  unit->addPath(twin.get(), pathID(0, 0));
  unit->addPath(second.get(), pathID(0, 1));
  EXPECT_THAT(unit->getPaths()->values(), ElementsAre(first, second));
  EXPECT_EQ(ob::as<ob::Number>(unit->getPathIDs()->values()[0].get())->asUInt64(), pathID(0, 0));
  EXPECT_EQ(first->matchingLogicalUnit(), unit);
  EXPECT_FALSE(twin->matchingLogicalUnit());

  unit->removePath(nullptr);
  unit->removePath(first.get());
  EXPECT_FALSE(first->matchingLogicalUnit());
  EXPECT_THAT(unit->getPaths()->values(), ElementsAre(second));
  unit->removeAllPaths();
  EXPECT_THAT(unit->getPaths()->values(), IsEmpty());
  EXPECT_EQ(second->matchingLogicalUnit(), unit);  // left as it was
  unit = nullptr;
  EXPECT_FALSE(second->matchingLogicalUnit());  // and reads as none once the unit is gone
}

TEST(IdentifierTextDeathTest, HasTwoDigitsAByteAndIsNeverCut) {
  const auto of = [](const std::vector<std::uint8_t>& bytes) {
    return std::string(identifierText(*ob::Data::make(bytes))->view());
  };
  EXPECT_EQ(of({}), "");
  EXPECT_EQ(of(std::vector<std::uint8_t>(127, 0xAB)).size(), 254u);
  EXPECT_DEATH(of(std::vector<std::uint8_t>(128, 0)),
               "fatal: a device identifier is longer than 127 bytes");
}

}  // namespace
}  // namespace tavrenix::test
