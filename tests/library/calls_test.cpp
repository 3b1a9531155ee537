// The public functions: which arguments they test in which order, what they hand out, what a client
// owns.
#include <gmock/gmock.h>

#include <cstring>

#include "tests/library/owned.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::test {
namespace {

class Calls : public testing::Test {
 protected:
  Calls() {
    addStorage(host->memory, {});
    host->memory.registry().setWriteHandler(
        [this](EntryID, const ob::String&, const ob::Object& value) {
          lastWrite = Value::retain(&value);
          return ++writes, status;
        });
    handles.emplace();
    unit = handles->unit();
    paths = handles->paths();
    path = at<MPIOLogicalUnitPathRef>(paths, 0);
  }
  ~Calls() override { EXPECT_EQ(host->memory.registry().openHandles(), 0u); }

  void loseAll() {
    host->memory.registry().removeEntry(unitID(0));
    host->memory.registry().removeEntry(unitID(1));
    touch(host->memory);
    const Handles rescan;
  }
  template <class CRef>
  static CRef disguised(const void* handle) {
    return static_cast<CRef>(handle);
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
  EXPECT_NE(MPIOLogicalUnitGetTypeID(), ObStringGetTypeID());
  EXPECT_TRUE(ObEqual(unit, unit));
  EXPECT_FALSE(ObEqual(unit, handles->unit(1)));
}

TEST_F(Calls, ANullHandleFailsWithoutAWord) {
  Owned<ObErrorRef> error;
  EXPECT_EQ(MPIOLogicalUnitCopyProperties(nullptr), nullptr);
  EXPECT_EQ(MPIOLogicalUnitCopyPaths(nullptr), nullptr);
  EXPECT_EQ(MPIOLogicalUnitPathCopyProperties(nullptr), nullptr);
  EXPECT_EQ(MPIOLogicalUnitPathCopyLogicalUnit(nullptr), nullptr);
  EXPECT_EQ(MPIOLogicalUnitCopyStatistics(nullptr), nullptr);
  EXPECT_EQ(MPIOLogicalUnitPathCopyStatistics(nullptr), nullptr);
  EXPECT_FALSE(MPIOLogicalUnitPathEnable(nullptr, error.out()));
  EXPECT_FALSE(MPIOLogicalUnitPathDisable(nullptr, error.out()));
  EXPECT_FALSE(MPIOLogicalUnitEnableAllPaths(nullptr, error.out()));
  EXPECT_FALSE(MPIOLogicalUnitDisableAllPaths(nullptr, error.out()));
  EXPECT_FALSE(
      MPIOLogicalUnitSetAlgorithm(nullptr, kMPIOLogicalUnitAlgorithmLeastBytes, error.out()));
  EXPECT_FALSE(MPIOLogicalUnitSetBatchCount(nullptr, 1, error.out()));
  EXPECT_EQ(MPIOCopyLogicalUnitForService(0), nullptr);
  EXPECT_EQ(MPIOCopyLogicalUnitPathForService(0), nullptr);
  EXPECT_FALSE(error);
}

TEST_F(Calls, AHandleOfTheOtherKindIsToldExceptToDisableAllPaths) {
  const auto notAUnit = disguised<MPIOLogicalUnitRef>(path);
  const auto notAPath = disguised<MPIOLogicalUnitPathRef>(unit);
  EXPECT_EQ(MPIOLogicalUnitCopyProperties(notAUnit), nullptr);
  EXPECT_EQ(MPIOLogicalUnitCopyPaths(notAUnit), nullptr);
  EXPECT_EQ(MPIOLogicalUnitPathCopyProperties(notAPath), nullptr);
  EXPECT_EQ(MPIOLogicalUnitCopyStatistics(disguised<MPIOLogicalUnitRef>(kMPIOLogicalUnitAliasKey)),
            nullptr);

  struct Case {
    const char* message;  // null: none is told
    std::function<bool(ObErrorRef*)> call;
  };
  const Case cases[] = {
      {"Bad path object reference",
       [&](ObErrorRef* e) { return MPIOLogicalUnitPathEnable(notAPath, e); }},
      {"Bad path object reference",
       [&](ObErrorRef* e) { return MPIOLogicalUnitPathDisable(notAPath, e); }},
      {"Bad logical unit object reference",
       [&](ObErrorRef* e) { return MPIOLogicalUnitEnableAllPaths(notAUnit, e); }},
      {nullptr, [&](ObErrorRef* e) { return MPIOLogicalUnitDisableAllPaths(notAUnit, e); }},
      {"Bad logical unit object reference",
       [&](ObErrorRef* e) { return MPIOLogicalUnitSetAlgorithm(notAUnit, nullptr, e); }},
      {"Bad logical unit object reference",
       [&](ObErrorRef* e) { return MPIOLogicalUnitSetBatchCount(notAUnit, 0, e); }},
  };
  for (const Case& each : cases) {
    Owned<ObErrorRef> error;
    EXPECT_FALSE(each.call(error.out()));
    EXPECT_FALSE(each.call(nullptr));
    ASSERT_EQ(static_cast<bool>(error), each.message != nullptr);
    if (each.message == nullptr) continue;
    EXPECT_EQ(utf8(ObErrorGetDomain(error.get())), each.message);
    EXPECT_EQ(ObErrorGetCode(error.get()), kMPIOErrorBadArgument);
    EXPECT_EQ(ObErrorGetUserInfo(error.get()), nullptr);
  }
  EXPECT_EQ(writes, 0);
}

TEST_F(Calls, OnlySomeTestWhetherTheHandleIsPresent) {
  loseAll();
  Owned<ObErrorRef> error;
  EXPECT_EQ(MPIOLogicalUnitCopyProperties(unit), nullptr);
  EXPECT_EQ(MPIOLogicalUnitPathCopyLogicalUnit(path), nullptr);
  EXPECT_EQ(MPIOLogicalUnitCopyStatistics(unit), nullptr);
  EXPECT_EQ(MPIOLogicalUnitPathCopyStatistics(path), nullptr);
  EXPECT_FALSE(MPIOLogicalUnitPathEnable(path, error.out()));
  EXPECT_FALSE(MPIOLogicalUnitEnableAllPaths(unit, error.out()));
  EXPECT_FALSE(MPIOLogicalUnitDisableAllPaths(unit, error.out()));
  EXPECT_FALSE(MPIOLogicalUnitSetAlgorithm(unit, kMPIOLogicalUnitAlgorithmLeastBytes, error.out()));
  EXPECT_FALSE(MPIOLogicalUnitSetBatchCount(unit, 0, error.out()));
  EXPECT_FALSE(error);
  EXPECT_TRUE(Owned<ObDictionaryRef>(MPIOLogicalUnitPathCopyProperties(path)));
  EXPECT_EQ(ObArrayGetCount(handles->paths().get()), 3u);
  EXPECT_FALSE(MPIOLogicalUnitPathDisable(path, error.out()));  // goes on to the model
  ASSERT_TRUE(error);
  EXPECT_EQ(utf8(ObErrorGetDomain(error.get())), "Unable to locate needed service in KsRegistry");
}

TEST_F(Calls, AnAlgorithmIsChosenByItsExactValue) {
  ObStringRef lower = ObStringCreateWithUTF8("logical unit algorithm round robin");
  ObStringRef copy = ObStringCreateWithUTF8("Logical Unit Algorithm Round Robin");
  Owned<ObErrorRef> error;
  EXPECT_FALSE(MPIOLogicalUnitSetAlgorithm(unit, lower, error.out()));
  EXPECT_FALSE(MPIOLogicalUnitSetAlgorithm(unit, nullptr, error.out()));
  EXPECT_EQ(writes, 0);
  EXPECT_TRUE(MPIOLogicalUnitSetAlgorithm(unit, copy, error.out()));
  EXPECT_TRUE(
      MPIOLogicalUnitSetAlgorithm(unit, kMPIOLogicalUnitAlgorithmLeastQueueDepth, error.out()));
  EXPECT_TRUE(MPIOLogicalUnitSetAlgorithm(unit, kMPIOLogicalUnitAlgorithmLeastBytes, error.out()));
  EXPECT_EQ(writes, 3);
  EXPECT_FALSE(error);
  ObRelease(lower);
  ObRelease(copy);
}

TEST_F(Calls, EachChangeAsksForWhatItsNameSays) {
  const auto algorithm = [](const char* name, std::int64_t count) {
    return dictionary({{"Algorithm", text(name)}, {"Batch Count", number(count)}});
  };
  const auto states = [](std::initializer_list<std::pair<std::string_view, Value>> each) {
    return dictionary({{"PathState", dictionary(each)}});
  };
  const auto all = [&](std::int64_t state) {
    return states({{"0000", number(state)}, {"0001", number(state)}, {"0002", number(state)}});
  };
  struct Case {
    Value request;
    std::function<bool()> call;
  };
  const auto setTo = [&](ObStringRef value) {
    return [=, this] { return MPIOLogicalUnitSetAlgorithm(unit, value, nullptr); };
  };
  const Case cases[] = {
      {algorithm("Modified Round Robin", 16), setTo(kMPIOLogicalUnitAlgorithmRoundRobin)},
      {algorithm("Least Queue Depth", 16), setTo(kMPIOLogicalUnitAlgorithmLeastQueueDepth)},
      {algorithm("Least Bytes", 16), setTo(kMPIOLogicalUnitAlgorithmLeastBytes)},
      {algorithm("Least Bytes", 7), [&] { return MPIOLogicalUnitSetBatchCount(unit, 7, nullptr); }},
      {states({{"0000", number(0)}}), [&] { return MPIOLogicalUnitPathEnable(path, nullptr); }},
      {states({{"0000", number(3)}}), [&] { return MPIOLogicalUnitPathDisable(path, nullptr); }},
      {all(0), [&] { return MPIOLogicalUnitEnableAllPaths(unit, nullptr); }},
      {all(3), [&] { return MPIOLogicalUnitDisableAllPaths(unit, nullptr); }},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(&each - cases);
    EXPECT_TRUE(each.call());
    ASSERT_TRUE(lastWrite);
    EXPECT_TRUE(lastWrite->equals(*each.request));
  }
}

TEST_F(Calls, ErrorsAreHandedOutWithOneReference) {
  Owned<ObErrorRef> error;
  EXPECT_FALSE(MPIOLogicalUnitSetBatchCount(unit, 0, error.out()));
  ASSERT_TRUE(error);
  EXPECT_EQ(utf8(ObErrorGetDomain(error.get())), "newBatchCount cannot be 0");
  EXPECT_EQ(writes, 0);
  EXPECT_EQ(static_cast<const ob::Object*>(static_cast<const void*>(error.get()))->retainCount(),
            1u);

  const ObErrorRef before = error.get();
  EXPECT_TRUE(MPIOLogicalUnitSetBatchCount(unit, 5, error.out()));  // success writes nothing
  EXPECT_EQ(error.get(), before);
  status = -16;
  EXPECT_FALSE(
      MPIOLogicalUnitSetBatchCount(unit, 5, error.out()));  // nor a failure without an error
  EXPECT_EQ(error.get(), before);
  ObErrorRef refused = nullptr;
  EXPECT_FALSE(MPIOLogicalUnitEnableAllPaths(unit, &refused));
  Owned<ObStringRef> description(ObErrorCopyDescription(refused));
  EXPECT_EQ(utf8(description.get()), "Unable to set property (error 0x08000003, result -16)");
  ObRelease(refused);
}

TEST_F(Calls, WhatIsReturnedIsACopyOfItsMoment) {
  Owned<ObDictionaryRef> before(MPIOLogicalUnitCopyProperties(unit));
  setProperty(host->memory, unitID(0), "Logical Unit Alias", text("renamed"));
  EXPECT_EQ(textUnder(before.get(), kMPIOLogicalUnitAliasKey), "unit 0");
  Owned<ObDictionaryRef> after(MPIOLogicalUnitCopyProperties(unit));
  EXPECT_EQ(textUnder(after.get(), kMPIOLogicalUnitAliasKey), "renamed");
  EXPECT_EQ(ObDictionaryGetValue(after.get(), kMPIOLogicalUnitAlgorithmKey),
            kMPIOLogicalUnitAlgorithmRoundRobin);
}

TEST_F(Calls, PathsLeadToTheirUnitWhileItLives) {
  Owned<MPIOLogicalUnitRef> owner(MPIOLogicalUnitPathCopyLogicalUnit(path));
  EXPECT_EQ(owner.get(), unit);
  owner = Owned<MPIOLogicalUnitRef>();
  Owned<MPIOLogicalUnitPathRef> kept(static_cast<MPIOLogicalUnitPathRef>(ObRetain(path)));
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
  host->watch.failAll(Operation::kGetEntryID);
  EXPECT_EQ(MPIOCopyLogicalUnitForService(unitEntry.get()), nullptr);
  EXPECT_EQ(MPIOCopyLogicalUnitPathForService(pathEntry.get()), nullptr);
}

TEST_F(Calls, StatisticsOfAUnitNeverFailAndOfAPathMay) {
  EXPECT_EQ(ObDictionaryGetCount(Owned<ObDictionaryRef>(MPIOLogicalUnitCopyStatistics(unit)).get()),
            5u);
  EXPECT_EQ(
      ObDictionaryGetCount(Owned<ObDictionaryRef>(MPIOLogicalUnitPathCopyStatistics(path)).get()),
      6u);
  host->watch.failAll(Operation::kTunable);
  testing::internal::CaptureStderr();
  EXPECT_TRUE(Owned<ObDictionaryRef>(MPIOLogicalUnitCopyStatistics(unit)));
  EXPECT_FALSE(Owned<ObDictionaryRef>(MPIOLogicalUnitPathCopyStatistics(path)));
  testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace tavrenix::test
