// What units and paths read from their registry entries and from the driver, what they keep if an
// entry changes or goes, and the requests that units write.
#include "model/logical_unit.hpp"

#include <gmock/gmock.h>

#include "host/registry_names.hpp"
#include "model/keys.hpp"
#include "model/public_values.hpp"
#include "runtime/pool.hpp"
#include "tests/support/sample_storage.hpp"
#include "tests/support/value_text.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {
namespace {

using testing::ElementsAre;

class LogicalUnit : public testing::Test {
 protected:
  LogicalUnit() { addStorage(host.memory, {.units = 1, .paths = 3, .volumes = 2}); }
  ~LogicalUnit() override { EXPECT_EQ(host.memory.registry().openHandles(), 0u); }

  ob::Ref<MPIOLogicalUnit> make(EntryID id = unitID(0)) {
    return MPIOLogicalUnit::initWithKsKitServiceEntry(host, id);
  }
  void set(std::string_view name, Value value) { setProperty(host.memory, unitID(0), name, value); }
  // Adds a medium with a volume of that name.
  void addMedia(EntryID id, const char* name, Value leaf, const char* content,
                const char* className = "KsMedia") {
    host.memory.registry().addEntry(id, className, {wholeDiskID(0)},
                                    dictionary({{"Leaf", leaf}, {"Content", text(content)}}));
    host.memory.disks().set(id,
                            {.volumeName = ob::String::make(name), .bsdName = {}, .mediaSize = {}});
  }

  const ob::Pool pool;
  WatchedHost host;
};

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
}

TEST_F(LogicalUnit, ReadsTheBatchCountForRoundRobinOnly) {
  const auto unit = make();
  const struct {
    const char* algorithm;
    Value count;
    std::uint32_t code, kept;
  } cases[] = {
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
  for (const auto& each : cases) {
    set("Load Balancing Algorithm", text(each.algorithm));
    set("Batch Count", each.count);
    unit->getProperties();
    EXPECT_EQ(unit->logicalUnitAlgorithm(), each.code) << each.algorithm;
    EXPECT_EQ(unit->logicalUnitBatchCount(), each.kept) << each.algorithm;
  }
}

TEST_F(LogicalUnit, ListsLeavesAndSharedVolumesButNoComponents) {
  const Value yes = flag(true), no = flag(false);
  addMedia(1000, "spans", no, "Zorva_Quil");
  addMedia(1001, "part", yes, "Zorva_Quil_Component");
  addMedia(1002, "both", number(1), "Zorva_Quil");
  addMedia(1003, "neither", no, "Other");
  addMedia(1004, "unknown", nullptr, "");
  addMedia(1005, "no media", yes, "Data", "KsPartitionScheme");
  host.memory.disks().forget(volumeID(0, 1));  // unformatted
  EXPECT_EQ(textOf(make()->logicalUnitVolumesArray().get()),
            "{0: {Logical Unit Volume Mount Point: disk0s1, Logical Unit Volume Name: Volume 0, "
            "Logical Unit Volume Size: 1000000000}, 1: {Logical Unit Volume Name: spans}, "
            "2: {Logical Unit Volume Name: both}}");
}

TEST_F(LogicalUnit, AddsAndRemovesPaths) {
  auto unit = make();
  const auto first = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, pathID(0, 0), unit.get());
  const auto twin = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, pathID(0, 0), unit.get());
  for (const auto& path : {first, twin}) unit->addPath(path.get(), pathID(0, 0));
  EXPECT_THAT(unit->getPaths()->values(), ElementsAre(first));
  EXPECT_FALSE(twin->matchingLogicalUnit());
  unit->removePath(first.get());
  EXPECT_FALSE(first->matchingLogicalUnit());
  unit->addPath(twin.get(), pathID(0, 0));
  unit->removeAllPaths();
  EXPECT_THAT(unit->getPaths()->values(), testing::IsEmpty());
  EXPECT_EQ(twin->matchingLogicalUnit(), unit);  // left as it was
  unit = nullptr;
  EXPECT_FALSE(twin->matchingLogicalUnit());  // and reads as none once the unit is gone
}

TEST_F(LogicalUnit, WritesTheAlgorithmOfACodeAndRefusesBadCodes) {
  const auto unit = make();
  std::vector<Value> written;
  host.memory.registry().setWriteHandler([&](EntryID, const ob::String&, const ob::Object& value) {
    written.push_back(Value::retain(&value));
    return kSuccess;
  });
  const ob::Error* error = nullptr;
  const std::pair<std::uint32_t, const char*> cases[] = {
      {16, "Modified Round Robin"}, {24, "Least Queue Depth"}, {12, "Least Bytes"}};
  for (const auto& [code, name] : cases) {
    error = MPIOErrorCreate("stale", kErrorBadArgument);
    EXPECT_TRUE(unit->setAlgorithm(code, &error)) << code;
    EXPECT_EQ(error, nullptr);
    EXPECT_TRUE(written.back()->equals(
        *dictionary({{"Algorithm", text(name)}, {"Batch Count", number(16)}})));
    EXPECT_EQ(unit->logicalUnitAlgorithm(), code);
  }
  EXPECT_FALSE(unit->setAlgorithm(1, &error));
  EXPECT_EQ(error->description()->view(),
            "Bad parameter. algorithmString string is nil (error 0x08000001)");
  EXPECT_FALSE(unit->setBatchCount(0, &error));
  EXPECT_EQ(error->description()->view(),
            "Bad value for batchCount.  Must be greater than 0 (error 0x08000001)");
  EXPECT_FALSE(unit->setAlgorithm(0, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(written.size(), std::size(cases));
}

TEST_F(LogicalUnit, ReleasesTheEntryOfAChangeAfterItsMutex) {
  const auto unit = make();
  const auto path = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, pathID(0, 0), unit.get());
  // If the mutex were still locked, a host that uses the unit within release would wait for ever.
  std::size_t released = 0;
  host.watch.onRelease = [&] { unit->addPath(path.get(), ++released); };
  EXPECT_TRUE(unit->setBatchCount(4, nullptr));
  EXPECT_EQ(released, 1u);
}

class Path : public LogicalUnit {
 protected:
  static ob::Ref<MPIOLogicalUnitPath> make(WatchedHost& host, EntryID id = pathID(0, 1)) {
    return MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, id, nullptr);
  }

  const EntryID id = pathID(0, 1);
  const ob::Ref<MPIOLogicalUnitPath> path = make(host);
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
    EXPECT_EQ(textOf(path->getCurrentStatistics()->value(
                  keys::kMPIOLogicalUnitPathStatisticsPathStateKey)),
              std::to_string(each.byte));
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
  const auto empty = make(host);
  setProperty(host.memory, id, "Logical Unit Path Identifier", data({0x00, 0xFF}));
  empty->rebuildPropertiesFromEntry();
  EXPECT_EQ(empty->pathID()->view(), "");
  EXPECT_EQ(make(host)->pathID()->view(), "00FF");
}

TEST_F(Path, LooksItsEntryUpAfreshAndTheLastUnitBelowIt) {
  const std::string unitClass(registry::kLogicalUnitClass);
  host.memory.registry().addEntry(900, unitClass, {id}, dictionary({}));
  host.memory.registry().addEntry(901, "Other", {id}, dictionary({}));
  EXPECT_EQ(path->locateLogicalUnitID(), 900u);
  host.memory.registry().removeEntry(id);
  EXPECT_EQ(path->locateLogicalUnitID(), 0u);
  EXPECT_EQ(make(host)->getProperties()->pairs().size(), 0u) << "made all the same";
}

TEST(IdentifierTextDeathTest, HasTwoDigitsAByteAndIsNeverCut) {
  const std::vector<std::uint8_t> bytes(128, 0xAB);
  EXPECT_EQ(identifierText(*ob::Data::make({bytes.data(), 127}))->view().size(), 254u);
  EXPECT_DEATH(identifierText(*ob::Data::make(bytes)),
               "fatal: a device identifier is longer than 127 bytes");
}

}  // namespace
}  // namespace tavrenix::test
