// Memory runs out, at every allocation of a client's session: calls fail, nothing leaks, nothing is
// thrown.
#include <gtest/gtest.h>

#include "model/registry_names.hpp"
#include "tests/library/failing_new.hpp"
#include "tests/library/scenario.hpp"

namespace tavrenix::test {
namespace {

class Allocation : public testing::Test {
 protected:
  Allocation() { addStorage(host->memory, {.units = 2, .paths = 2, .volumes = 1}); }
  ~Allocation() override { EXPECT_EQ(host->memory.registry().openHandles(), 0u); }
  LibraryHost host;
};

TEST_F(Allocation, WithoutPoolACallReturnsItsFailureValueAndNoError) {
  const Handles handles;
  const auto unit = handles.unit();
  const auto paths = handles.paths();
  MPIODeviceRegistry& registry = host->registry();
  const ScopedHandle unitEntry(registry, registry.findServiceByEntryID(unitID(0)));
  const ScopedHandle pathEntry(registry, registry.findServiceByEntryID(pathID(0, 0)));
  // A path handle where a unit is wanted: without a pool not even that is told.
  const auto wrong = static_cast<MPIOLogicalUnitRef>(ObArrayGetValueAtIndex(paths.get(), 0));
  Owned<ObErrorRef> error;
  // Each with its first allocation failing.
  const auto answers = [](auto call) {
    failAllocationAfter(0);
    const Owned<ObTypeRef> answer(call());
    const bool failed = allocationFailed();
    EXPECT_EQ(static_cast<bool>(answer), !failed);
    return !failed;
  };
  host->watch.reset();
  EXPECT_FALSE(answers(MPIOCopyLogicalUnits));
  EXPECT_FALSE(answers([&] { return MPIOLogicalUnitCopyProperties(unit); }));
  EXPECT_FALSE(answers([&] { return MPIOLogicalUnitCopyPaths(unit); }));
  EXPECT_FALSE(answers([&] {
    return MPIOLogicalUnitSetBatchCount(wrong, 0, error.out()) ? ObRetain(unit) : nullptr;
  }));
  EXPECT_FALSE(error);
  EXPECT_FALSE(answers([&] { return MPIOCopyLogicalUnitPathForService(pathEntry.get()); }));
  EXPECT_EQ(host->watch.failable(), 0u);  // nothing was asked of the host
  // This one makes no pool.
  EXPECT_TRUE(answers([&] { return MPIOCopyLogicalUnitForService(unitEntry.get()); }));
  failAllocationAfter(0);
  MPIOLogicalUnitCopyProperties(nullptr);
  MPIOLogicalUnitEnableAllPaths(nullptr, nullptr);
  EXPECT_FALSE(allocationFailed()) << "nor is there one for no handle";
}

TEST_F(Allocation, AtEverySiteLeakNothingAndHeal) {
  ASSERT_TRUE(useEverything(*host));
  const std::size_t sites = failEveryAllocation(
      [&] {
        touch(host->memory);
        const Owned<ObArrayRef> units(MPIOCopyLogicalUnits());
        const auto unit = at<MPIOLogicalUnitRef>(units, 0);
        const Owned<ObDictionaryRef> properties(MPIOLogicalUnitCopyProperties(unit));
        Owned<ObErrorRef> error;
        MPIOLogicalUnitDisableAllPaths(unit, error.out());
        const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(unit));
      },
      [&](bool) {
        EXPECT_EQ(host->memory.registry().openHandles(), 0u);
        touch(host->memory);
        EXPECT_EQ(ObArrayGetCount(Handles().units.get()), 2u);
      });
  EXPECT_GT(sites, 50u);
}

TEST_F(Allocation, InTheHostStaysInsideTheCall) {
  const Handles handles;
  MPIODeviceRegistry& registry = host->registry();
  const ScopedHandle unitEntry(registry, registry.findServiceByEntryID(unitID(0)));
  const ScopedHandle pathEntry(registry, registry.findServiceByEntryID(pathID(0, 0)));
  host->watch.exhaustAll(Operation::kGetEntryID);
  EXPECT_EQ(MPIOCopyLogicalUnitForService(unitEntry.get()), nullptr);
  EXPECT_EQ(MPIOCopyLogicalUnitPathForService(pathEntry.get()), nullptr);
  host->watch.exhaustAll(Operation::kTunable);
  touch(host->memory);
  EXPECT_EQ(Handles().unit(), handles.unit());  // no generation, so no scan
  EXPECT_EQ(MPIOLogicalUnitCopyStatistics(handles.unit()), nullptr);
}

TEST_F(Allocation, WhileTheManagerIsMadeLeavesItToTheNextTime) {
  MPIOManagerTeardown();
  const auto initialize = [&] {
    touch(host->memory);
    MPIOManagerInitialize();
  };
  const std::size_t sites = failEveryAllocation(initialize, [&](bool) {
    initialize();
    EXPECT_EQ(ObArrayGetCount(Handles().units.get()), 2u);
    const Handles handles;
    MPIOManagerTeardown();
    EXPECT_EQ(MPIOCopyLogicalUnits(), nullptr);
    EXPECT_EQ(MPIOLogicalUnitCopyProperties(handles.unit()), nullptr);
    EXPECT_EQ(knownPath(pathID(0, 0)), nullptr);
    EXPECT_EQ(ObArrayGetCount(handles.paths().get()), 2u);  // handles live on
    MPIOManagerTeardown();
  });
  EXPECT_GT(sites, 3u);
  MPIOManagerInitialize();
}

TEST_F(Allocation, DuringAScanLosesOnlyTheObjectThatCouldNotBeMade) {
  bool pathsWithoutUnit = false, unitWithoutFirstPath = false;
  const auto scan = [&] {
    touch(host->memory);
    MPIOManagerRescan(MPIORescanAll, nullptr);
  };
  failEveryAllocation(scan, [&](bool) {
    const auto unit = knownLogicalUnit(unitID(0));
    const auto first = knownPath(pathID(0, 0));
    const auto second = knownPath(pathID(0, 1));
    for (const auto& path : {first, second}) {
      if (path == nullptr) continue;
      EXPECT_EQ(path->matchingLogicalUnitEntryID(), unit == nullptr ? 0 : unitID(0));
    }
    pathsWithoutUnit |= unit == nullptr && first != nullptr && second != nullptr;
    unitWithoutFirstPath |= unit != nullptr && first == nullptr && second != nullptr;
  });
  EXPECT_TRUE(pathsWithoutUnit);
  EXPECT_TRUE(unitWithoutFirstPath);
}

TEST_F(Allocation, WhileARegistrationIsMadeLeavesNoHandleNorHoldsAnything) {
  memory::MemoryRegistry& registry = host->memory.registry();
  const RegistryPort port = registry.createNotificationPort();
  registry.release(registry.findServiceByEntryID(unitID(0)));  // leaves room for a handle
  const auto matching = registry.classMatching(registry::kPathClass);
  const auto held = std::make_shared<int>();
  RegistryHandle made = 0;
  const auto add = [&] {
    try {
      made = registry
                 .addMatchingNotification(port, registry::kFirstMatchNotification, matching,
                                          [held](RegistryHandle) {})
                 .value;
    } catch (const std::bad_alloc&) {
    }
  };
  const std::size_t sites = failEveryAllocation(add, [&](bool failed) {
    EXPECT_EQ(registry.openHandles(), failed ? 1u : 2u);
    EXPECT_EQ(held.use_count() == 1, failed);
  });
  EXPECT_GT(sites, 2u);
  registry.release(made);
  registry.destroyNotificationPort(port);
}

}  // namespace
}  // namespace tavrenix::test
