// When the manager scans, which entries it takes, and how many questions to the host that costs.
#include <gmock/gmock.h>
#include <tavrenix/details.h>

#include "host/registry_names.hpp"
#include "tests/library/client.hpp"

namespace tavrenix::test {
namespace {

class Scan : public testing::Test {
 protected:
  ~Scan() override { EXPECT_EQ(tree.openHandles(), 0u); }
  LibraryHost host;
  memory::MemoryRegistry& tree = host->memory.registry();
};

TEST_F(Scan, CostsOneQueryUnlessTheGenerationHasMoved) {
  addStorage(host->memory, {});
  const Handles first;
  host->watch.reset();
  EXPECT_TRUE(ObEqual(Handles().units.get(), first.units.get()));
  EXPECT_EQ(host->watch.failable(), 1u);
  MPIOManagerTeardown();
  host->watch.answerTunable = [](void*, std::size_t*, const void*, std::size_t) { return -1; };
  MPIOManagerInitialize();
  EXPECT_EQ(Handles().unit(), nullptr) << "the driver does not answer";
  host->watch.answerTunable = nullptr;
  EXPECT_NE(Handles().unit(), nullptr);
  host->memory.tunable().setGeneration(0);  // the number that the manager began with
  EXPECT_NE(Handles().unit(), first.unit());
}

TEST_F(Scan, FindsStorageUnitsAndEachOfTheirPathsOnce) {
  tree.defineClass("DerivedPath", std::string(registry::kPathClass));
  tree.addEntry(70, "DerivedPath", {}, dictionary({}));
  tree.addEntry(71, "KsSCSITarget", {}, dictionary({}));
  const Value types[] = {number(0), number(-1), number(INT32_MIN), number(INT32_MAX),
                         // The scan ignores these types:
                         number(3), number(12), nullptr, text("0"), number(0x1'0000'0000),
                         number(INT32_MIN - std::int64_t{1}), number(INT32_MAX + std::int64_t{1})};
  for (std::uint64_t unit = 0; unit < std::size(types); ++unit) {
    tree.addEntry(unitID(unit), std::string(registry::kLogicalUnitClass), {70, 71, 70},
                  dictionary({{"Peripheral Device Type", types[unit]}}));
  }
  touch(host->memory);
  host->memory.tunable().setPathStatistics(70, {});
  const Handles handles;
  EXPECT_EQ(ObArrayGetCount(handles.units.get()), 4u);
  EXPECT_EQ(ObArrayGetCount(handles.paths(3).get()), 1u);
}

TEST_F(Scan, RenewsOneUnitForAQueryOfThatUnitOrOfItsPath) {
  addStorage(host->memory, {.units = 2, .paths = 3});
  const Handles old;
  const auto oldPaths = old.paths();
  tree.removeEntry(pathID(0, 2));
  touch(host->memory);
  EXPECT_TRUE(ObEqual(old.paths().get(), oldPaths.get()));
  EXPECT_FALSE(knownPath(pathID(0, 2)));
  EXPECT_NE(ob::toC<ObTypeRef>(knownPath(pathID(0, 0)).get()), at<ObTypeRef>(oldPaths, 0));
  EXPECT_NE(ob::toC<ObTypeRef>(knownLogicalUnit(unitID(0)).get()), old.unit());
  EXPECT_EQ(ob::toC<ObTypeRef>(knownLogicalUnit(unitID(1)).get()), old.unit(1));

  addStorage(host->memory, {});  // changes the generation
  const Handles handles;
  const auto paths = handles.paths();
  tree.removeEntry(pathID(0, 1));
  touch(host->memory);
  const Owned<ObDictionaryRef> properties(
      MPIOLogicalUnitPathCopyProperties(at<MPIOLogicalUnitPathRef>(paths, 1)));
  EXPECT_EQ(utf8(ObDictionaryGetValue(properties.get(), kMPIOLogicalUnitPathIdentifierKey)),
            "0001");
  EXPECT_EQ(ObArrayGetCount(handles.paths().get()), 0u) << "of this handle";
  EXPECT_TRUE(knownPath(pathID(0, 1))) << "until a full scan";
  EXPECT_EQ(knownLogicalUnit(unitID(0))->logicalUnitPaths().size(), 1u);
  // A change of all paths marks the new generation as seen, but scans nothing.
  for (const auto& change : {MPIOLogicalUnitEnableAllPaths, MPIOLogicalUnitDisableAllPaths}) {
    touch(host->memory);
    EXPECT_TRUE(change(old.unit(1), nullptr));
    EXPECT_TRUE(Handles().unit() != nullptr && knownPath(pathID(0, 1)));
  }
  touch(host->memory);
  EXPECT_TRUE(Handles().unit() != nullptr && !knownPath(pathID(0, 1)));
  tree.removeEntry(pathID(0, 0));
  EXPECT_TRUE(Handles().unit() != nullptr && knownPath(pathID(0, 0)));
  MPIOHostRefresh();
  EXPECT_TRUE(Handles().unit() != nullptr && !knownPath(pathID(0, 0)));
}

}  // namespace
}  // namespace tavrenix::test
