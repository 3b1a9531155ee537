// Configuration requests as the model makes them: what its callers see stands with the library's
// calls.
#include <gmock/gmock.h>

#include <thread>

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
          written.push_back(Value::retain(&value));
          return kSuccess;
        });
    host.watch.reset();
  }
  ~Changes() override { EXPECT_EQ(host.memory.registry().openHandles(), 0u); }

  const ob::Pool pool;
  WatchedHost host;
  ob::Ref<MPIOLogicalUnit> unit;
  std::vector<ob::Ref<MPIOLogicalUnitPath>> paths;
  std::vector<Value> written;
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
    const auto* request = ob::as<ob::Dictionary>(written.back().get());
    EXPECT_EQ(textUnder(request, registry::kAlgorithm), each.name);
    EXPECT_EQ(numberUnder(request, registry::kBatchCount), 16);
    EXPECT_EQ(unit->logicalUnitAlgorithm(), each.code);
  }
  EXPECT_TRUE(unit->setBatchCount(4294967295, &error));
  EXPECT_EQ(numberUnder(ob::as<ob::Dictionary>(written.back().get()), registry::kBatchCount),
            4294967295);
  EXPECT_EQ(unit->logicalUnitBatchCount(), 4294967295);
}

TEST_F(Changes, ABadArgumentIsRefusedBeforeAnyAccess) {
  host.memory.registry().addEntry(7, std::string(registry::kLogicalUnitClass), {}, dictionary({}));
  const auto unknown = MPIOLogicalUnit::initWithKsKitServiceEntry(host, 7);
  host.watch.reset();
  EXPECT_FALSE(unit->setAlgorithm(0, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_FALSE(unit->setAlgorithm(1, &error));
  EXPECT_EQ(error->domain().view(), "Bad parameter. algorithmString string is nil");
  EXPECT_EQ(error->code(), 0x08000001);
  EXPECT_EQ(unit->logicalUnitAlgorithm(), 16u);
  EXPECT_FALSE(unknown->setBatchCount(0, &error));
  EXPECT_EQ(error->domain().view(), "Bad value for batchCount.  Must be greater than 0");
  EXPECT_EQ(error->code(), 0x08000001);
  EXPECT_FALSE(unknown->setBatchCount(5, &error));  // its algorithm is not known
  EXPECT_EQ(error, nullptr);
  error = stale;
  EXPECT_FALSE(unit->enablePath(nullptr, &error));
  EXPECT_EQ(error, nullptr);
  error = stale;
  EXPECT_FALSE(unit->isPathEnabled(nullptr, &error));
  EXPECT_EQ(error, stale);
  EXPECT_EQ(host.watch.failable(), 0u);
  EXPECT_TRUE(unit->isPathEnabled(paths[0].get(), &error));
}

TEST_F(Changes, AllPathsThatHaveAnIdentifierAreAskedForAtOnce) {
  paths[1]->setPathID(nullptr);
  EXPECT_TRUE(unit->disableAllPaths(&error));
  EXPECT_EQ(written.size(), 1u);
  EXPECT_TRUE(written[0]->equals(
      *dictionary({{"PathState", dictionary({{"0000", number(3)}, {"0002", number(3)}})}})));
  EXPECT_EQ(host.watch.count(Operation::kFindServiceByEntryID), 1u);
  EXPECT_EQ(paths[0]->pathEnabled(), ob::Boolean::of(true));  // learnt from the registry later
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
