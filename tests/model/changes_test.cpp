// Configuration requests: what is written, what a failure tells, and what the object then believes.
#include <gmock/gmock.h>

#include <thread>

#include "model/keys.hpp"
#include "model/logical_unit.hpp"
#include "model/registry_names.hpp"
#include "runtime/pool.hpp"
#include "tests/support/storage.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {
namespace {

class Changes : public testing::Test {
 protected:
  Changes() {
    addStorage(host.memory, {.units = 1, .paths = 3, .volumes = 0});
    unit = MPIOLogicalUnit::initWithKsKitServiceEntry(host, unitID(0));
    for (std::uint64_t path = 0; path < 3; ++path) {
      paths.push_back(
          MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, pathID(0, path), unit.get()));
      unit->addPath(paths.back().get(), pathID(0, path));
    }
    host.memory.registry().setWriteHandler(
        [this](EntryID entry, const ob::String& name, const ob::Object& value) {
          EXPECT_EQ(entry, unitID(0));
          EXPECT_EQ(name.view(), "Properties");
          written.push_back(ob::Ref<const ob::Object>::retain(&value));
          return status;
        });
    host.watch.reset();
  }
  ~Changes() override { EXPECT_EQ(host.memory.registry().openHandles(), 0u); }

  void expectError(const ob::Error* told, std::int64_t code, std::string_view message,
                   std::optional<std::int64_t> result = std::nullopt) {
    ASSERT_NE(told, nullptr) << message;
    EXPECT_EQ(told->code(), code);
    EXPECT_EQ(told->domain().view(), message);
    ASSERT_EQ(told->userInfo() != nullptr, result.has_value());
    if (result) {
      EXPECT_EQ(numberUnder(told->userInfo(), keys::kMPIOErrorResultCodeKey), *result);
    }
  }
  void expectLastWrite(const ob::Ref<const ob::Dictionary>& request) {
    ASSERT_FALSE(written.empty());
    EXPECT_TRUE(written.back()->equals(*request));
  }
  static ob::Ref<const ob::Dictionary> algorithmRequest(std::string_view name, std::int64_t count) {
    return dictionary({{"Algorithm", text(name)}, {"Batch Count", number(count)}});
  }

  const ob::Pool pool;
  WatchedHost host;
  ob::Ref<MPIOLogicalUnit> unit;
  std::vector<ob::Ref<MPIOLogicalUnitPath>> paths;
  std::vector<Value> written;
  KernelStatus status = kSuccess;
  const ob::Error* const stale = MPIOErrorCreate("stale", kErrorBadArgument);
  const ob::Error* error = stale;
};

TEST_F(Changes, AnAlgorithmGoesWithTheBatchCountAndIsBelievedAsGiven) {
  struct Case {
    std::uint32_t code;
    const char* name;
  };
  for (const Case& each :
       {Case{4, "Least Bytes"}, Case{8, "Least Queue Depth"}, Case{16, "Modified Round Robin"},
        Case{20, "Least Bytes"}, Case{24, "Least Queue Depth"}, Case{12, "Least Bytes"}}) {
    error = stale;
    EXPECT_TRUE(unit->setAlgorithm(each.code, &error)) << each.code;
    EXPECT_EQ(error, nullptr);
    expectLastWrite(algorithmRequest(each.name, 16));
    EXPECT_EQ(unit->logicalUnitAlgorithm(), each.code);
  }
}

TEST_F(Changes, AnUnknownAlgorithmIsRefusedBeforeAnyAccess) {
  EXPECT_FALSE(unit->setAlgorithm(0, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_FALSE(unit->setAlgorithm(1, &error));
  expectError(error, 0x08000001, "Bad parameter. algorithmString string is nil");
  EXPECT_EQ(host.watch.registryOperations(), 0u);
  EXPECT_EQ(unit->logicalUnitAlgorithm(), 16u);
}

TEST_F(Changes, ABatchCountGoesWithTheAlgorithm) {
  unit->setAlgorithm(4, nullptr);
  EXPECT_TRUE(unit->setBatchCount(4294967295, &error));
  EXPECT_EQ(error, nullptr);
  expectLastWrite(algorithmRequest("Least Bytes", 4294967295));
  EXPECT_EQ(unit->logicalUnitBatchCount(), 4294967295);
}

TEST_F(Changes, ABatchCountOfZeroIsRefusedEvenWhereTheAlgorithmIsUnknown) {
  host.memory.registry().addEntry(7, std::string(registry::kLogicalUnitClass), {}, dictionary({}));
  const auto unknown = MPIOLogicalUnit::initWithKsKitServiceEntry(host, 7);
  EXPECT_FALSE(unknown->setBatchCount(0, &error));
  expectError(error, 0x08000001, "Bad value for batchCount.  Must be greater than 0");
  EXPECT_FALSE(unknown->setBatchCount(5, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_TRUE(written.empty());
}

TEST_F(Changes, ARefusedWriteTellsItsStatusExceptForABatchCount) {
  status = -536870206;
  EXPECT_FALSE(unit->setAlgorithm(4, &error));
  expectError(error, 0x08000003, "KsRegistryEntrySetObProperty failed", -536870206);
  EXPECT_EQ(unit->logicalUnitAlgorithm(), 16u);
  EXPECT_FALSE(unit->setBatchCount(5, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(unit->logicalUnitBatchCount(), 16u);
  for (const bool enable : {true, false}) {
    EXPECT_FALSE(enable ? unit->enablePath(paths[0].get(), &error)
                        : unit->disablePath(paths[0].get(), &error));
    expectError(error, 0x08000003, "Unable to set property", -536870206);
    EXPECT_FALSE(enable ? unit->enableAllPaths(&error) : unit->disableAllPaths(&error));
    expectError(error, 0x08000003, "Unable to set property", -536870206);
  }
}

TEST_F(Changes, AMissingEntryTellsItsFamilysWordsExceptForABatchCount) {
  host.memory.registry().removeEntry(unitID(0));
  EXPECT_FALSE(unit->setAlgorithm(4, &error));
  expectError(error, 0x08000002,
              "KsServiceGetMatchingService failed to find entry matching specified entry ID");
  EXPECT_FALSE(unit->setBatchCount(5, &error));
  EXPECT_EQ(error, nullptr);
  for (const auto change : {&MPIOLogicalUnit::enableAllPaths, &MPIOLogicalUnit::disableAllPaths}) {
    EXPECT_FALSE((*unit.*change)(&error));
    expectError(error, 0x08000002, "Unable to locate needed service in KsRegistry");
  }
  EXPECT_FALSE(paths[1]->disable(&error));
  expectError(error, 0x08000002, "Unable to locate needed service in KsRegistry");
}

TEST_F(Changes, OnePathIsAskedForByItsIdentifier) {
  EXPECT_TRUE(paths[1]->disable(&error));
  EXPECT_EQ(error, nullptr);
  expectLastWrite(dictionary({{"PathState", dictionary({{"0001", number(3)}})}}));
  EXPECT_TRUE(unit->enablePath(paths[2].get(), &error));
  expectLastWrite(dictionary({{"PathState", dictionary({{"0002", number(0)}})}}));
  EXPECT_EQ(paths[1]->pathEnabled(), ob::Boolean::of(true));  // learnt from the registry later
}

TEST_F(Changes, NoPathIsNoRequest) {
  EXPECT_FALSE(unit->enablePath(nullptr, &error));
  EXPECT_EQ(error, nullptr);
  error = stale;
  EXPECT_FALSE(unit->isPathEnabled(nullptr, &error));
  EXPECT_EQ(error, stale);
  EXPECT_TRUE(unit->isPathEnabled(paths[0].get(), &error));
  EXPECT_TRUE(written.empty());
}

TEST_F(Changes, AllPathsAreAskedForAtOnce) {
  EXPECT_TRUE(unit->disableAllPaths(&error));
  EXPECT_EQ(written.size(), 1u);
  expectLastWrite(
      dictionary({{"PathState",
                   dictionary({{"0000", number(3)}, {"0001", number(3)}, {"0002", number(3)}})}}));
  paths[1]->setPathID(nullptr);
  EXPECT_TRUE(unit->enableAllPaths(&error));
  expectLastWrite(
      dictionary({{"PathState", dictionary({{"0000", number(0)}, {"0002", number(0)}})}}));
  EXPECT_EQ(host.watch.count(Operation::kFindServiceByEntryID), 2u);
}

TEST_F(Changes, PathsWithoutIdentifierCannotBeAskedFor) {
  for (const auto& path : paths) path->setPathID(nullptr);
  EXPECT_FALSE(unit->enableAllPaths(&error));
  expectError(error, 0x08000004, "Attempt to enable LUN with paths lacking IDs");
  EXPECT_FALSE(paths[0]->disable(&error));
  expectError(error, 0x08000004, "Attempt to disable LUN with paths lacking IDs");
  unit->removeAllPaths();
  EXPECT_FALSE(unit->disableAllPaths(&error));
  expectError(error, 0x08000004, "Attempt to disable LUN with paths lacking IDs");
  EXPECT_TRUE(written.empty());
}

TEST_F(Changes, TheLockIsFreeAgainWhenTheEntryIsReleased) {
  // A host that comes back to the unit from within release would wait for ever if it were not.
  std::size_t released = 0;
  host.watch.onRelease = [&] {
    unit->addPath(paths[0].get(), pathID(0, 0));  // takes the lock, changes nothing
    ++released;
  };
  EXPECT_TRUE(unit->setAlgorithm(4, nullptr));
  EXPECT_TRUE(unit->setBatchCount(4, nullptr));
  EXPECT_TRUE(unit->enableAllPaths(nullptr));
  EXPECT_TRUE(unit->disablePath(paths[0].get(), nullptr));
  EXPECT_EQ(released, 4u);
}

thread_local bool reading = false;

TEST_F(Changes, OfOneUnitNeverMeetEachOtherNorAReader) {
  std::atomic<int> inside{0};
  std::atomic<bool> met{false};
  host.memory.registry().setWriteHandler([&](EntryID, const ob::String&, const ob::Object&) {
    if (++inside > 1) met = true;
    std::this_thread::yield();
    --inside;
    return kSuccess;
  });
  host.watch.onRelease = [&] {
    if (!reading) return;
    const std::size_t held = unit->logicalUnitPaths().size();
    std::this_thread::yield();
    if (inside != 0 || unit->logicalUnitPaths().size() != held) met = true;
  };
  const auto repeat = [&](auto request) {
    return std::thread([&, request] {
      for (int round = 0; round < 300; ++round) request();
    });
  };
  const auto read = [&] {
    reading = true;
    unit->getProperties();
  };
  const auto comeAndGo = [&] {
    unit->removePath(paths[2].get());
    std::this_thread::yield();
    unit->addPath(paths[2].get(), pathID(0, 2));
  };
  std::thread threads[] = {repeat([&] { unit->setAlgorithm(4, nullptr); }),
                           repeat([&] { unit->setBatchCount(4, nullptr); }),
                           repeat([&] { unit->enablePath(paths[0].get(), nullptr); }),
                           repeat([&] { unit->disableAllPaths(nullptr); }),
                           repeat(read),
                           repeat(comeAndGo)};
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(met);
}

}  // namespace
}  // namespace tavrenix::test
