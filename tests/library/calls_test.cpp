// The public functions: which arguments they check, and in which order; what they return; and that
// a failure inside them leaves nothing behind.
#include <gmock/gmock.h>

#include "tests/library/client.hpp"
#include "tests/library/failing_new.hpp"
#include "tests/support/value_text.hpp"

namespace tavrenix::test {
namespace {

// An object of any kind, passed where a unit or a path is expected.
struct AnyHandle {
  const void* handle;
  operator MPIOLogicalUnitRef() const { return static_cast<MPIOLogicalUnitRef>(handle); }
  operator MPIOLogicalUnitPathRef() const { return static_cast<MPIOLogicalUnitPathRef>(handle); }
};

const struct {
  std::function<ObTypeRef(AnyHandle)> call;
  bool ofPath, testsPresence;
} kQueries[] = {
    {MPIOLogicalUnitCopyProperties, false, true},
    {MPIOLogicalUnitCopyPaths, false, false},
    {MPIOLogicalUnitCopyStatistics, false, true},
    {MPIOLogicalUnitPathCopyProperties, true, false},
    {MPIOLogicalUnitPathCopyLogicalUnit, true, true},
    {MPIOLogicalUnitPathCopyStatistics, true, true},
};

bool setAlgorithm(AnyHandle unit, ObErrorRef* error) {
  const Owned<ObStringRef> equal(ObStringCreateWithUTF8("Logical Unit Algorithm Least Bytes"));
  return MPIOLogicalUnitSetAlgorithm(unit, equal.get(), error);
}
bool setBatchCount(AnyHandle unit, ObErrorRef* error) {
  return MPIOLogicalUnitSetBatchCount(unit, 7, error);
}
Value algorithm(const char* name) {
  return dictionary({{"Algorithm", text(name)}, {"Batch Count", number(7)}});
}
Value states(std::initializer_list<std::pair<std::string_view, Value>> ofPaths) {
  return dictionary({{"PathState", dictionary(ofPaths)}});
}
const struct {
  std::function<bool(AnyHandle, ObErrorRef*)> call;
  bool ofPath;
  Value request;
} kChanges[] = {
    {setBatchCount, false, algorithm("Modified Round Robin")},
    {setAlgorithm, false, algorithm("Least Bytes")},
    {MPIOLogicalUnitPathEnable, true, states({{"0000", number(0)}})},
    {MPIOLogicalUnitPathDisable, true, states({{"0000", number(3)}})},
    {MPIOLogicalUnitEnableAllPaths, false, states({{"0000", number(0)}, {"0001", number(0)}})},
    {MPIOLogicalUnitDisableAllPaths, false, states({{"0000", number(3)}, {"0001", number(3)}})},
};

constexpr char kNone[] = "<none>";
constexpr char kNotAUnit[] = "Bad logical unit object reference (error 0x08000001)";
constexpr char kNotAPath[] = "Bad path object reference (error 0x08000001)";
constexpr char kNoEntry[] =
    "KsServiceGetMatchingService failed to find entry matching specified entry ID (error "
    "0x08000002)";
constexpr char kNotWritten[] = "KsRegistryEntrySetObProperty failed (error 0x08000003, result -16)";
constexpr char kNoService[] = "Unable to locate needed service in KsRegistry (error 0x08000002)";
constexpr char kNotSet[] = "Unable to set property (error 0x08000003, result -16)";
constexpr char kNotEnabled[] = "Attempt to enable LUN with paths lacking IDs (error 0x08000004)";
constexpr char kNotDisabled[] = "Attempt to disable LUN with paths lacking IDs (error 0x08000004)";

class Calls : public testing::Test {
 protected:
  Calls() {
    storage.registry().setWriteHandler([this](EntryID, const ob::String&, const ob::Object& value) {
      written = Value::retain(&value);
      return status;
    });
    fill();
  }
  ~Calls() override { EXPECT_EQ(storage.registry().openHandles(), 0u); }
  void fill() {
    addStorage(storage, {.paths = 2});
    handles.emplace();
    paths = handles->paths();
  }
  void removeUnits() {
    for (const EntryID id : {unitID(0), unitID(1)}) storage.registry().removeEntry(id);
    touch(storage);
    const Handles rescan;
  }
  AnyHandle handle(bool ofPath) {
    return {ofPath ? ObArrayGetValueAtIndex(paths.get(), 0) : handles->unit()};
  }
  // Makes the changes of kChanges and expects these errors. Skips a change if its error is null.
  void expectErrors(const std::array<const char*, 6>& errors, bool ofOtherKind = false) {
    for (std::size_t i = 0; i < errors.size(); ++i) {
      if (errors[i] == nullptr) continue;
      const AnyHandle given = handle(kChanges[i].ofPath != ofOtherKind);
      Owned<ObErrorRef> error;
      EXPECT_FALSE(kChanges[i].call(given, error.out()) || kChanges[i].call(given, nullptr));
      const Owned<ObStringRef> description(ObErrorCopyDescription(error.get()));
      EXPECT_EQ(utf8(description.get()), errors[i]) << i;
    }
  }

  LibraryHost host;
  memory::MemoryHost& storage = host->memory;
  std::optional<Handles> handles;
  Owned<ObArrayRef> paths;
  KernelStatus status = kSuccess;
  Value written;
};

TEST_F(Calls, QueriesRefuseOtherHandlesAndSomeTestPresence) {
  for (const bool present : {true, false}) {
    if (!present) removeUnits();
    for (const auto& each : kQueries) {
      const Owned<ObTypeRef> answer(each.call(handle(each.ofPath)));
      EXPECT_EQ(static_cast<bool>(answer), present || !each.testsPresence) << &each - kQueries;
      EXPECT_FALSE(each.call({nullptr}) || each.call(handle(!each.ofPath)));
      EXPECT_FALSE(each.call({kMPIOLogicalUnitAliasKey}));
    }
  }
}

TEST_F(Calls, QueriesReturnEveryPropertyAndCounterUnderItsKey) {
  const std::pair<std::size_t, std::string> rows[] = {
      {0,
       "{Logical Unit Algorithm: Logical Unit Algorithm Round Robin, Logical Unit Alias: unit 0, "
       "Logical Unit Batch Count: 16, "
       "Logical Unit Identifier: 600A0B80000000000000000000000000, "
       "Logical Unit Product ID: ARRAY, Logical Unit Vendor ID: MAKER, "
       "Logical Unit Volumes Dictionary Array: {0: {Logical Unit Volume Mount Point: disk0s1, "
       "Logical Unit Volume Name: Volume 0, Logical Unit Volume Size: 1000000000}}}"},
      {2,
       "{Logical Unit Statistics Cumulative Bytes Received: 200, "
       "Logical Unit Statistics Cumulative Bytes Sent: 100, "
       "Logical Unit Statistics Cumulative Total Bytes Transferred: 300, "
       "Logical Unit Statistics Cumulative Total Commands Processed: 300, "
       "Logical Unit Statistics Sampling Date: date}"},
      {3,
       "{Logical Unit Path Enabled: yes, Logical Unit Path Host Port Identifier: 500100, "
       "Logical Unit Path Identifier: 0000, "
       "Logical Unit Path Interconnect: Fibre Channel Interface, "
       "Logical Unit Path State: Active Optimized}"},
      {5,
       "{Logical Unit Path Statistics Cumulative Bytes Received: 20, "
       "Logical Unit Path Statistics Cumulative Bytes Sent: 10, "
       "Logical Unit Path Statistics Cumulative Total Commands Processed: 30, "
       "Logical Unit Path Statistics Path State: 0, "
       "Logical Unit Path Statistics Sampling Date: date, "
       "Logical Unit Path Statistics Total Bytes Transferred: 30}"},
  };
  for (const auto& [query, shown] : rows) {
    const Owned<ObTypeRef> answer(kQueries[query].call(handle(kQueries[query].ofPath)));
    EXPECT_EQ(textOf(ob::fromC<ob::Object>(answer.get())), shown);
  }
}

TEST_F(Calls, ChangesWriteOneRequestOrTellWhyNot) {
  for (const auto& each : kChanges) {
    EXPECT_TRUE(each.call(handle(each.ofPath), nullptr));
    EXPECT_TRUE(written->equals(*each.request)) << &each - kChanges;
    EXPECT_FALSE(each.call({nullptr}, nullptr));
  }
  const Owned<ObStringRef> lower(ObStringCreateWithUTF8("logical unit algorithm least bytes"));
  Owned<ObErrorRef> error;
  EXPECT_FALSE(MPIOLogicalUnitSetAlgorithm(handles->unit(), lower.get(), error.out()) || error);
  EXPECT_FALSE(MPIOLogicalUnitSetBatchCount(handles->unit(), 0, error.out()));
  EXPECT_EQ(utf8(ObErrorGetDomain(error.get())), "newBatchCount cannot be 0");
  EXPECT_EQ(ob::fromC<ob::Object>(error.get())->retainCount(), 1u);
  status = -16;
  expectErrors({kNone, kNotWritten, kNotSet, kNotSet, kNotSet, kNotSet});
  written = nullptr;
  expectErrors({kNotAUnit, kNotAUnit, kNotAPath, kNotAPath, kNotAUnit, kNone}, true);
  storage.registry().removeEntry(unitID(0));  // the manager still knows the unit
  expectErrors({kNone, kNoEntry, kNoService, kNoService, kNoService, kNoService});
  removeUnits();
  expectErrors({kNone, kNone, kNone, kNoService, kNone, kNone});
  for (const EntryID id : {pathID(0, 0), pathID(0, 1)}) {
    setProperty(storage, id, "Logical Unit Path Identifier", nullptr);
  }
  fill();
  expectErrors({nullptr, nullptr, kNotEnabled, kNotDisabled, kNotEnabled, kNotDisabled});
  EXPECT_FALSE(written);
}

TEST_F(Calls, PathsAndRegistryObjectsLeadToTheirHandles) {
  const auto path = at<MPIOLogicalUnitPathRef>(paths, 0);
  EXPECT_EQ(Owned(MPIOLogicalUnitPathCopyLogicalUnit(path)).get(), handles->unit());
  const ScopedHandle pathEntry(host->registry(),
                               host->registry().findServiceByEntryID(pathID(0, 0)));
  const ScopedHandle unitEntry(host->registry(), host->registry().findServiceByEntryID(unitID(1)));
  EXPECT_EQ(Owned(MPIOCopyLogicalUnitForService(unitEntry.get())).get(), handles->unit(1));
  EXPECT_EQ(Owned(MPIOCopyLogicalUnitPathForService(pathEntry.get())).get(), path);
  EXPECT_EQ(MPIOCopyLogicalUnitPathForService(unitEntry.get()), nullptr);
}

TEST_F(Calls, SurviveAnAllocationThatFailsAndLoseNoMoreThanWhatItHit) {
  if (!kAllocationsCanFail) GTEST_SKIP();
  bool unitLost = false, pathLost = false;
  std::optional<RunLoopClient> listening;
  const auto session = [&] {
    MPIOManagerTeardown();
    EXPECT_EQ(MPIOCopyLogicalUnits(), nullptr);
    touch(storage);
    MPIOManagerInitialize();
    const auto first = knownPath(pathID(0, 0));
    unitLost |= first && !knownLogicalUnit(unitID(0)) && knownLogicalUnit(unitID(1));
    pathLost |= !first && knownLogicalUnit(unitID(0)) && knownPath(pathID(0, 1));
    listening.emplace().start();
    for (const auto& each : kQueries) {
      touch(storage);
      Owned<ObTypeRef>(each.call(handle(each.ofPath)));
    }
    for (const auto& each : kChanges) {
      touch(storage);
      each.call(handle(each.ofPath), Owned<ObErrorRef>().out());
    }
  };
  std::size_t place = 0;
  for (bool failed = true; failed && !HasFailure(); ++place) {
    SCOPED_TRACE(place);
    allocationsUntilFailure = place;
    ob::catchExhaustion(session);  // for what the session itself allocates
    failed = allocationFailed();
    listening.reset();
    EXPECT_EQ(storage.registry().openHandles(), 0u);
    MPIOManagerInitialize();
    fill();
    EXPECT_TRUE(ObArrayGetCount(handles->units.get()) == 2 && ObArrayGetCount(paths.get()) == 2);
  }
  EXPECT_TRUE(place > 200 && unitLost && pathLost) << place;
  const ob::Pool pool;
  QueueClient onQueue;
  allocationsUntilFailure = 0;
  EXPECT_FALSE(onQueue.start());
  EXPECT_EQ(utf8(ObErrorGetDomain(onQueue.error)), "Failed to allocate an internal structure");
  EXPECT_EQ(ObErrorGetCode(onQueue.error), kMPIOErrorNoResources);
}

TEST(Constants, HaveTheirTextsAndOutliveEveryRelease) {
  const std::pair<ObStringRef, const char*> rows[] = {
      {kMPIOLogicalUnitStatusChangedNotification, "Logical Unit Status Changed"},
      {kMPIOLogicalUnitInvalidatedNotification, "Logical Unit Invalidated"},
      {kMPIOLogicalUnitPathDisappearedNotification, "Logical Unit Path Disappeared"},
      {kMPIOLogicalUnitAlgorithmLeastQueueDepth, "Logical Unit Algorithm Least Queue Depth"},
      {kMPIOErrorResultCodeKey, "Error Result Code"},
      {kMPIOLogicalUnitPathAccessStateKey, "Logical Unit Path State"},
  };
  for (const auto& [constant, text] : rows) {
    for (int round = 0; round < 3; ++round) ObRelease(constant);
    EXPECT_EQ(utf8(constant), text);
  }
}

}  // namespace
}  // namespace tavrenix::test
