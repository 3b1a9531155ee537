// When the manager scans, what a scan makes of the registry, and what it costs.
#include <gmock/gmock.h>

#include <cstring>

#include "model/registry_names.hpp"
#include "tests/library/owned.hpp"
#include "tests/support/every_failure.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::test {
namespace {

class Discovery : public testing::Test {
 protected:
  ~Discovery() override { EXPECT_EQ(host->memory.registry().openHandles(), 0u); }

  void fill(const Shape& shape) { addStorage(host->memory, shape); }
  std::size_t count(Operation operation) { return host->watch.count(operation); }
  static std::size_t unitsNow() { return ObArrayGetCount(Handles().units.get()); }
  static std::size_t pathsNow(const Handles& handles, std::size_t unit = 0) {
    return ObArrayGetCount(handles.paths(unit).get());
  }

  LibraryHost host;
};

TEST_F(Discovery, AnUnchangedGenerationCostsOneQueryAndReturnsTheSameHandles) {
  fill({});
  // 0 is what the manager begins with, so that a driver that answers so is never scanned; here it
  // may be a change, once.
  for (const bool zero : {false, true}) {
    if (zero) host->memory.tunable().setGeneration(0);
    const Handles first;
    EXPECT_EQ(ObArrayGetCount(first.units.get()), 2u);
    host->watch.reset();
    const Handles second;
    EXPECT_TRUE(ObEqual(second.units.get(), first.units.get()));
    EXPECT_EQ(count(Operation::kTunable), 1u);
    EXPECT_EQ(host->watch.registryOperations(), 0u);
  }
}

TEST_F(Discovery, TheGenerationIsTakenAsAnsweredWhateverTheStatus) {
  fill({.units = 2, .paths = 0});
  const std::uint32_t far = 0xFFFF'FF00;
  host->watch.answerTunable = [&](void* room, std::size_t* size, const void* asked,
                                  std::size_t length) {
    const SCSIMPIOStatisticsRequest expected{.requestType = 2};
    EXPECT_TRUE(length == 24 && std::memcmp(asked, &expected, length) == 0);
    EXPECT_TRUE(*size == 4 && std::memcmp(room, "\0\0\0\0", 4) == 0);
    std::memcpy(room, &far, sizeof far);
    return -1;
  };
  EXPECT_EQ(unitsNow(), 2u);
  host->watch.answerTunable = nullptr;
}

TEST_F(Discovery, AFullScanCostsWhatItMustAndNothingMore) {
  constexpr std::size_t kUnits = 5, kPaths = 3, kVolumes = 2;
  fill({.units = kUnits, .paths = kPaths, .volumes = kVolumes});
  host->watch.reset();
  const Handles handles;
  constexpr std::size_t kMedia = kVolumes + 1, kAllPaths = kUnits * kPaths;
  EXPECT_EQ(count(Operation::kFindServicesByClass), 1u);
  EXPECT_EQ(count(Operation::kFindServicesByEntryID), 0u);
  // A unit: its properties and its media. A path: one look-up.
  EXPECT_EQ(count(Operation::kFindServiceByEntryID), 2 * kUnits + kAllPaths);
  // A unit: once for its type, once for its object.
  EXPECT_EQ(count(Operation::kCopyProperties), 2 * kUnits + kAllPaths);
  EXPECT_EQ(count(Operation::kSearchProperty), kAllPaths);
  EXPECT_EQ(count(Operation::kCopyProperty), 2 * kUnits * kMedia);
  EXPECT_EQ(count(Operation::kDescribe), kUnits * kVolumes);
  EXPECT_EQ(count(Operation::kCreateIterator), 2 * kUnits);
  EXPECT_EQ(count(Operation::kIteratorNext),
            (kUnits + 1) + kUnits * (kMedia + 1) + kUnits * (kPaths + 1));
  EXPECT_EQ(count(Operation::kConformsTo), kUnits * kMedia + kAllPaths);
  EXPECT_EQ(count(Operation::kGetEntryID), kUnits + kAllPaths);
  EXPECT_EQ(count(Operation::kTunable), 1 + kAllPaths);
  EXPECT_EQ(count(Operation::kSetProperty), 0u);
}

TEST_F(Discovery, AScanOfOneUnitTouchesThatUnitOnly) {
  fill({.units = 50, .paths = 2, .volumes = 1});
  const Handles handles;
  touch(host->memory);
  host->watch.reset();
  EXPECT_EQ(pathsNow(handles, 7), 2u);
  EXPECT_EQ(count(Operation::kFindServicesByEntryID), 1u);
  EXPECT_EQ(count(Operation::kFindServicesByClass), 0u);
  EXPECT_EQ(count(Operation::kCopyProperties), 2u + 2u);
  EXPECT_EQ(count(Operation::kTunable), 1u + 2u);
  EXPECT_EQ(unitsNow(), 50u);
}

TEST_F(Discovery, TakesAsUnitsWhatHasADeviceTypeOf32BitsThatIsStorage) {
  const Value taken[] = {number(0), number(-1), number(INT32_MIN), number(INT32_MAX)};
  const Value passedOver[] = {number(3),
                              number(12),
                              nullptr,
                              text("0"),
                              number(0x1'0000'0000),
                              number(INT32_MIN - std::int64_t{1}),
                              number(INT32_MAX + std::int64_t{1})};
  fill({.units = std::size(taken) + std::size(passedOver), .paths = 0, .volumes = 0});
  std::uint64_t unit = 0;
  const auto setType = [&](const Value& type) {
    setProperty(host->memory, unitID(unit++), "Peripheral Device Type", type);
  };
  for (const Value& type : taken) setType(type);
  for (const Value& type : passedOver) setType(type);
  EXPECT_EQ(unitsNow(), std::size(taken));
  for (unit = 0; unit < std::size(taken); ++unit) EXPECT_TRUE(knownLogicalUnit(unitID(unit)));
}

TEST_F(Discovery, TakesAsPathsOnlyParentsOfThePathClass) {
  fill({.units = 1, .paths = 2});
  memory::MemoryRegistry& registry = host->memory.registry();
  registry.defineClass("DerivedPath", std::string(registry::kPathClass));
  registry.addEntry(70, "DerivedPath", {}, dictionary({}));
  registry.addEntry(71, "KsSCSITarget", {}, dictionary({}));
  registry.addEntry(72, std::string(registry::kLogicalUnitClass), {70, 71, 70},
                    dictionary({{"Peripheral Device Type", number(0)}}));
  testing::internal::CaptureStderr();
  EXPECT_EQ(pathsNow(Handles(), 1), 1u);
  testing::internal::GetCapturedStderr();
}

TEST_F(Discovery, AScanOfOneUnitLeavesTheHandleItsPathsAndForgetsThem) {
  fill({.units = 2, .paths = 2});
  const Handles handles;
  const auto before = handles.paths();
  host->memory.registry().removeEntry(pathID(0, 1));
  touch(host->memory);
  EXPECT_TRUE(ObEqual(handles.paths().get(), before.get()));
  EXPECT_EQ(knownPath(pathID(0, 1)), nullptr);
  ASSERT_NE(knownPath(pathID(0, 0)), nullptr);
  EXPECT_NE(static_cast<const void*>(knownPath(pathID(0, 0)).get()),
            ObArrayGetValueAtIndex(before.get(), 0));
  ASSERT_NE(knownLogicalUnit(unitID(0)), nullptr);
  EXPECT_NE(static_cast<const void*>(knownLogicalUnit(unitID(0)).get()), handles.unit());
  EXPECT_TRUE(Owned<ObDictionaryRef>(MPIOLogicalUnitCopyProperties(handles.unit())));
  EXPECT_EQ(unitsNow(), 2u);  // the generation has been seen: nothing is scanned again
}

TEST_F(Discovery, AScanByPathEmptiesItsUnitAndLeavesOldPathsKnown) {
  fill({.units = 1, .paths = 2});
  const Handles handles;
  const auto paths = handles.paths();
  const auto gone = at<MPIOLogicalUnitPathRef>(paths, 1);
  host->memory.registry().removeEntry(pathID(0, 1));
  touch(host->memory);
  Owned<ObDictionaryRef> properties(MPIOLogicalUnitPathCopyProperties(gone));
  EXPECT_EQ(textUnder(properties.get(), kMPIOLogicalUnitPathIdentifierKey), "0001");
  EXPECT_EQ(pathsNow(handles), 0u);             // this handle's paths were taken from it
  EXPECT_NE(knownPath(pathID(0, 1)), nullptr);  // still known, until a full scan
  ASSERT_NE(knownLogicalUnit(unitID(0)), nullptr);
  const auto& rebuiltPaths = knownLogicalUnit(unitID(0))->logicalUnitPaths();
  ASSERT_EQ(rebuiltPaths.size(), 1u);
  EXPECT_EQ(knownPath(pathID(0, 0)), rebuiltPaths.begin()->second);  // the old one replaced
  touch(host->memory);
  const Handles rebuilt;
  EXPECT_EQ(knownPath(pathID(0, 1)), nullptr);
}

TEST_F(Discovery, AChangeOfAllPathsTakesNoteOfAMoveWithoutRebuildingUnlessTheUnitIsAbsent) {
  for (const auto change : {MPIOLogicalUnitEnableAllPaths, MPIOLogicalUnitDisableAllPaths}) {
    LibraryHost fresh;
    addStorage(fresh->memory, {});
    const Handles before;
    fresh->memory.registry().removeEntry(unitID(1));
    touch(fresh->memory);
    EXPECT_TRUE(change(before.unit(), nullptr));
    const Handles same;
    EXPECT_EQ(ObArrayGetCount(same.units.get()), 2u);
    EXPECT_EQ(same.unit(), before.unit());
    touch(fresh->memory);
    const Handles without;
    touch(fresh->memory);
    EXPECT_FALSE(change(before.unit(1), nullptr));
    EXPECT_NE(Handles().unit(), without.unit());
  }
}

TEST_F(Discovery, SkipsOnlyWhatCannotBeRead) {
  fill({.units = 2, .paths = 1, .volumes = 0});
  std::size_t withoutAny = 0, withoutOne = 0;
  const auto scan = [&] {
    touch(host->memory);
    const Handles handles;
  };
  failEveryOperation(host->watch, scan, [&] {
    const Handles seen;  // the generation has been, so that nothing is scanned again
    const bool first = knownLogicalUnit(unitID(0)) != nullptr;
    const bool second = knownLogicalUnit(unitID(1)) != nullptr;
    withoutAny += !first && !second;
    withoutOne += first != second;
    EXPECT_EQ(knownLogicalUnit(0), nullptr);
    EXPECT_EQ(knownPath(0), nullptr);
  });
  EXPECT_EQ(withoutAny, 2u) << "the search and its first entry";
  EXPECT_EQ(withoutOne, 5u) << "its second entry, and the properties and the ID of both";
}

}  // namespace
}  // namespace tavrenix::test
