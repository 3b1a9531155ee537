// The public functions: which arguments they test in which order, what they hand out, what a client
// owns.
#include <gmock/gmock.h>

#include "tests/library/owned.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::test {
namespace {

// A handle for functions of either kind, whatever it is.
struct AnyHandle {
  const void* handle;
  operator MPIOLogicalUnitRef() const { return static_cast<MPIOLogicalUnitRef>(handle); }
  operator MPIOLogicalUnitPathRef() const { return static_cast<MPIOLogicalUnitPathRef>(handle); }
};

struct Query {
  std::function<ObTypeRef(AnyHandle)> call;
  bool ofPath;
  bool testsPresence;
};
const Query kQueries[] = {
    {MPIOLogicalUnitCopyProperties, false, true},
    {MPIOLogicalUnitCopyPaths, false, false},
    {MPIOLogicalUnitCopyStatistics, false, true},
    {MPIOLogicalUnitPathCopyProperties, true, false},
    {MPIOLogicalUnitPathCopyLogicalUnit, true, true},
    {MPIOLogicalUnitPathCopyStatistics, true, true},
};

Value algorithm(const char* name, std::int64_t count) {
  return dictionary({{"Algorithm", text(name)}, {"Batch Count", number(count)}});
}
Value stateOfFirst(std::int64_t state) {
  return dictionary({{"PathState", dictionary({{"0000", number(state)}})}});
}
Value stateOfAll(std::int64_t state) {
  const auto all =
      dictionary({{"0000", number(state)}, {"0001", number(state)}, {"0002", number(state)}});
  return dictionary({{"PathState", all}});
}

// What a change asks for, and what it tells where it fails; null: without a word.
struct Change {
  std::function<bool(AnyHandle, ObErrorRef*)> call;
  bool ofPath;
  Value request;
  const char* otherKind;  // of the handle
  const char* absent;     // the manager knows the handle no more
  const char* vanished;   // the manager knows it, the registry has no such entry
  const char* refused;    // by the driver
  const char* nameless;   // no path has an identifier
};
constexpr const char* kNotAUnit = "Bad logical unit object reference";
constexpr const char* kNotAPath = "Bad path object reference";
constexpr const char* kNotLocated = "Unable to locate needed service in KsRegistry";
constexpr const char* kNotSet = "Unable to set property";
constexpr const char* kNotEnabled = "Attempt to enable LUN with paths lacking IDs";
constexpr const char* kNotDisabled = "Attempt to disable LUN with paths lacking IDs";
const Change kChanges[] = {
    {[](AnyHandle handle, ObErrorRef* error) {
       return MPIOLogicalUnitSetAlgorithm(handle, kMPIOLogicalUnitAlgorithmLeastBytes, error);
     },
     false, algorithm("Least Bytes", 16), kNotAUnit, nullptr,
     "KsServiceGetMatchingService failed to find entry matching specified entry ID",
     "KsRegistryEntrySetObProperty failed", nullptr},
    {[](AnyHandle handle, ObErrorRef* error) {
       return MPIOLogicalUnitSetBatchCount(handle, 7, error);
     },
     false, algorithm("Least Bytes", 7), kNotAUnit, nullptr, nullptr, nullptr, nullptr},
    {MPIOLogicalUnitPathEnable, true, stateOfFirst(0), kNotAPath, nullptr, kNotLocated, kNotSet,
     kNotEnabled},
    {MPIOLogicalUnitPathDisable, true, stateOfFirst(3), kNotAPath, kNotLocated, kNotLocated,
     kNotSet, kNotDisabled},
    {MPIOLogicalUnitEnableAllPaths, false, stateOfAll(0), kNotAUnit, nullptr, kNotLocated, kNotSet,
     kNotEnabled},
    {MPIOLogicalUnitDisableAllPaths, false, stateOfAll(3), nullptr, nullptr, kNotLocated, kNotSet,
     kNotDisabled},
};

class Calls : public testing::Test {
 protected:
  Calls() {
    addStorage(host->memory, {});
    host->memory.registry().setWriteHandler(
        [this](EntryID, const ob::String&, const ob::Object& value) {
          lastWrite = Value::retain(&value);
          return ++writes, status;
        });
    takeHandles();
  }
  ~Calls() override { EXPECT_EQ(host->memory.registry().openHandles(), 0u); }

  void takeHandles() {
    handles.emplace();
    unit = handles->unit();
    paths = handles->paths();
    path = at<MPIOLogicalUnitPathRef>(paths, 0);
  }
  void loseAll() {
    for (const EntryID id : {unitID(0), unitID(1)}) host->memory.registry().removeEntry(id);
    touch(host->memory);
    const Handles rescan;
  }
  AnyHandle handle(bool ofPath) const { return ofPath ? AnyHandle{path} : AnyHandle{unit}; }
  static void expectFailure(const Change& change, AnyHandle handle, const char* message,
                            const std::string& codes) {
    Owned<ObErrorRef> error;
    EXPECT_FALSE(change.call(handle, error.out()));
    EXPECT_FALSE(change.call(handle, nullptr));
    const Owned<ObStringRef> told(ObErrorCopyDescription(error.get()));
    EXPECT_EQ(utf8(told.get()), message == nullptr ? "<none>" : message + codes);
  }

  LibraryHost host;
  std::optional<Handles> handles;
  MPIOLogicalUnitRef unit = nullptr;
  Owned<ObArrayRef> paths;
  MPIOLogicalUnitPathRef path = nullptr;
  KernelStatus status = kSuccess;
  int writes = 0;
  Value lastWrite;
};

TEST_F(Calls, HandlesAreOfTwoKinds) {
  EXPECT_EQ(ObGetTypeID(unit), MPIOLogicalUnitGetTypeID());
  EXPECT_EQ(ObGetTypeID(path), MPIOLogicalUnitPathGetTypeID());
  EXPECT_NE(MPIOLogicalUnitGetTypeID(), MPIOLogicalUnitPathGetTypeID());
  EXPECT_FALSE(ObEqual(unit, handles->unit(1)));
}

TEST_F(Calls, AQueryAnswersForAHandleOfItsKindAndOnlySomeTestWhetherItIsPresent) {
  for (const Query& each : kQueries) {
    SCOPED_TRACE(&each - kQueries);
    EXPECT_TRUE(Owned<ObTypeRef>(each.call(handle(each.ofPath))));
    for (const void* none : {static_cast<const void*>(nullptr), handle(!each.ofPath).handle,
                             static_cast<const void*>(kMPIOLogicalUnitAliasKey)}) {
      EXPECT_EQ(each.call({none}), nullptr);
    }
  }
  loseAll();
  for (const Query& each : kQueries) {
    SCOPED_TRACE(&each - kQueries);
    const Owned<ObTypeRef> answer(each.call(handle(each.ofPath)));
    EXPECT_EQ(static_cast<bool>(answer), !each.testsPresence);
  }
}

TEST_F(Calls, EachChangeAsksForWhatItsNameSays) {
  for (const Change& each : kChanges) {
    SCOPED_TRACE(&each - kChanges);
    EXPECT_TRUE(each.call(handle(each.ofPath), nullptr));
    EXPECT_TRUE(lastWrite->equals(*each.request));
  }
}

TEST_F(Calls, AChangeTestsItsHandleBeforeAllElse) {
  for (const Change& each : kChanges) {
    SCOPED_TRACE(&each - kChanges);
    expectFailure(each, {nullptr}, nullptr, "");
    expectFailure(each, handle(!each.ofPath), each.otherKind, " (error 0x08000001)");
  }
  EXPECT_FALSE(MPIOLogicalUnitSetBatchCount(nullptr, 0, nullptr));
  loseAll();
  for (const Change& each : kChanges) {
    SCOPED_TRACE(&each - kChanges);
    expectFailure(each, handle(each.ofPath), each.absent, " (error 0x08000002)");
  }
  Owned<ObErrorRef> error;
  EXPECT_FALSE(MPIOLogicalUnitSetBatchCount(unit, 0, error.out()));
  EXPECT_FALSE(error);
  EXPECT_EQ(writes, 0);
}

TEST_F(Calls, AChangeTellsWhyTheRequestWasNotTaken) {
  status = -16;
  for (const Change& each : kChanges) {
    SCOPED_TRACE(&each - kChanges);
    expectFailure(each, handle(each.ofPath), each.refused, " (error 0x08000003, result -16)");
  }
  host->memory.registry().removeEntry(unitID(0));
  for (const Change& each : kChanges) {
    SCOPED_TRACE(&each - kChanges);
    expectFailure(each, handle(each.ofPath), each.vanished, " (error 0x08000002)");
  }
}

TEST_F(Calls, AChangeOfPathsNeedsAnIdentifier) {
  for (std::uint64_t i = 0; i < 3; ++i) {
    setProperty(host->memory, pathID(0, i), "Logical Unit Path Identifier", nullptr);
  }
  touch(host->memory);
  takeHandles();
  for (const Change& each : kChanges) {
    if (each.nameless == nullptr) continue;
    expectFailure(each, handle(each.ofPath), each.nameless, " (error 0x08000004)");
  }
  EXPECT_EQ(writes, 0);
}

TEST_F(Calls, AnAlgorithmIsChosenByItsExactValue) {
  const Owned<ObStringRef> lower(ObStringCreateWithUTF8("logical unit algorithm round robin"));
  const Owned<ObStringRef> copy(ObStringCreateWithUTF8("Logical Unit Algorithm Round Robin"));
  Owned<ObErrorRef> error;
  EXPECT_FALSE(MPIOLogicalUnitSetAlgorithm(unit, lower.get(), error.out()));
  EXPECT_FALSE(MPIOLogicalUnitSetAlgorithm(unit, nullptr, error.out()));
  EXPECT_FALSE(error);
  EXPECT_EQ(writes, 0);
  EXPECT_TRUE(MPIOLogicalUnitSetAlgorithm(unit, kMPIOLogicalUnitAlgorithmLeastQueueDepth, nullptr));
  EXPECT_TRUE(lastWrite->equals(*algorithm("Least Queue Depth", 16)));
  EXPECT_TRUE(MPIOLogicalUnitSetAlgorithm(unit, copy.get(), nullptr));
  EXPECT_TRUE(lastWrite->equals(*algorithm("Modified Round Robin", 16)));
}

TEST_F(Calls, ErrorsAreHandedOutWithOneReferenceAndOnlyWhereThereIsOne) {
  Owned<ObErrorRef> error;
  EXPECT_FALSE(MPIOLogicalUnitSetBatchCount(unit, 0, error.out()));
  EXPECT_EQ(utf8(ObErrorGetDomain(error.get())), "newBatchCount cannot be 0");
  EXPECT_EQ(ObErrorGetUserInfo(error.get()), nullptr);
  EXPECT_EQ(static_cast<const ob::Object*>(static_cast<const void*>(error.get()))->retainCount(),
            1u);
  EXPECT_EQ(writes, 0);

  const ObErrorRef before = error.get();
  EXPECT_TRUE(MPIOLogicalUnitSetBatchCount(unit, 5, error.out()));
  status = -16;
  EXPECT_FALSE(MPIOLogicalUnitSetBatchCount(unit, 5, error.out()));
  EXPECT_EQ(error.get(), before);
}

TEST_F(Calls, WhatIsReturnedIsACopyOfItsMoment) {
  const Owned<ObDictionaryRef> before(MPIOLogicalUnitCopyProperties(unit));
  setProperty(host->memory, unitID(0), "Logical Unit Alias", text("renamed"));
  EXPECT_EQ(textUnder(before.get(), kMPIOLogicalUnitAliasKey), "unit 0");
  const Owned<ObDictionaryRef> after(MPIOLogicalUnitCopyProperties(unit));
  EXPECT_EQ(textUnder(after.get(), kMPIOLogicalUnitAliasKey), "renamed");
  EXPECT_EQ(ObDictionaryGetValue(after.get(), kMPIOLogicalUnitAlgorithmKey),
            kMPIOLogicalUnitAlgorithmRoundRobin);
}

TEST_F(Calls, PathsLeadToTheirUnitWhileItLives) {
  EXPECT_EQ(Owned<MPIOLogicalUnitRef>(MPIOLogicalUnitPathCopyLogicalUnit(path)).get(), unit);
  const Owned<MPIOLogicalUnitPathRef> kept(static_cast<MPIOLogicalUnitPathRef>(ObRetain(path)));
  touch(host->memory);
  handles.emplace();  // the old unit goes; its entry is still there
  EXPECT_FALSE(Owned<MPIOLogicalUnitRef>(MPIOLogicalUnitPathCopyLogicalUnit(kept.get())));
  EXPECT_FALSE(MPIOLogicalUnitPathEnable(kept.get(), nullptr));
}

TEST_F(Calls, HandlesAreFoundByRegistryObject) {
  MPIODeviceRegistry& registry = host->registry();
  // The lower handle is 1, next to the one that is none.
  const ScopedHandle pathEntry(registry, registry.findServiceByEntryID(pathID(0, 0)));
  const ScopedHandle unitEntry(registry, registry.findServiceByEntryID(unitID(1)));
  EXPECT_EQ(Owned<MPIOLogicalUnitRef>(MPIOCopyLogicalUnitForService(unitEntry.get())).get(),
            handles->unit(1));
  EXPECT_EQ(Owned<MPIOLogicalUnitPathRef>(MPIOCopyLogicalUnitPathForService(pathEntry.get())).get(),
            path);
  EXPECT_EQ(MPIOCopyLogicalUnitForService(pathEntry.get()), nullptr);
  EXPECT_EQ(MPIOCopyLogicalUnitPathForService(unitEntry.get()), nullptr);
  EXPECT_EQ(MPIOCopyLogicalUnitForService(0), nullptr);
  EXPECT_EQ(MPIOCopyLogicalUnitPathForService(0), nullptr);
  host->watch.failAll(Operation::kGetEntryID);
  EXPECT_EQ(MPIOCopyLogicalUnitForService(unitEntry.get()), nullptr);
  EXPECT_EQ(MPIOCopyLogicalUnitPathForService(pathEntry.get()), nullptr);
}

}  // namespace
}  // namespace tavrenix::test
