// The live host: what it shows of an image, and how it follows changes of the file.
#include "lab/host.hpp"

#include <atomic>
#include <set>

#include "model/registry_names.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::lab {
namespace {

class HostTest : public testing::Test {
 protected:
  void show(const std::string& members) {
    const std::string path = scratch_.write("image.json", "{" + members + "}");
    if (std::exchange(loaded_, true)) {
      host_.reload();
    } else {
      host_.load(path);
    }
  }
  void showEntries(const std::string& entries) {
    show(R"("generation": 5, "entries": [)" + entries + "]");
  }

  std::vector<EntryID> relatives(EntryID id, std::uint32_t options) {
    auto& registry = host_.memory().registry();
    const ScopedHandle entry(registry, registry.findServiceByEntryID(id));
    const auto iterator = registry.createIterator(entry.get(), registry::kServicePlane, options);
    if (iterator.status != kSuccess) return {0};
    const ScopedHandle all(registry, iterator.value);
    std::vector<EntryID> found;
    while (const RegistryHandle next = registry.iteratorNext(all.get())) {
      const ScopedHandle one(registry, next);
      found.push_back(registry.getEntryID(next).value);
    }
    return found;
  }

  // The answer to a statistics request: the status, and the state byte of a path.
  std::pair<int, int> statistics(StatisticsRequestType type, EntryID id) {
    SCSIMPIOStatisticsRequest request{kStatisticsSignature, type, id,
                                      type == kPathStatistics ? id : 0};
    SCSIPathStatistics record;
    std::size_t length = sizeof record;
    const int status = host_.memory().tunable().sysctlbyname(kStatisticsTunable, &record, &length,
                                                             &request, sizeof request);
    return {status, record.state};
  }

  Scratch scratch_;
  bool loaded_ = false;
  SimulatedHost host_{[](std::string_view) {}};
};

TEST_F(HostTest, IsNotReadyBeforeAnImageIsLoaded) {
  EXPECT_EQ(host_.memory().tunable().generation(), 0U);
  EXPECT_THROW(host_.load(scratch_.path("missing.json")), ImageError);
  EXPECT_EQ(host_.memory().tunable().generation(), 0U);
  show(R"("generation": 7, "effectiveUser": 1000, "entries": [])");
  EXPECT_EQ(host_.memory().tunable().generation(), 7U);
  EXPECT_EQ(host_.memory().effectiveUser(), 1000U);
}

TEST_F(HostTest, ShowsEntriesClassesStatisticsAndDisks) {
  show(R"("generation": 1, "classes": {"MyMedia": "KsMedia"}, "entries": [
    {"id": 3, "class": "MyMedia", "parents": [1], "disk": {"volumeName": "V", "mediaSize": 5}},
    {"id": 1, "class": "KsSCSIMultipathedLogicalUnit", "parents": [2], "statistics": {"sent": 1, "received": 1, "commands": 1}},
    {"id": 2, "class": "KsSCSIHierarchicalLogicalUnit", "statistics": {"sent": 1, "received": 1, "commands": 1, "state": 129}}])");
  EXPECT_EQ(relatives(2, kIterateRecursively), (std::vector<EntryID>{1, 3}));
  EXPECT_EQ(statistics(kPathStatistics, 2), std::pair(0, 129));
  EXPECT_EQ(statistics(kLogicalUnitStatistics, 1).first, 0);
  EXPECT_EQ(statistics(kPathStatistics, 1).first, -1);
  auto& registry = host_.memory().registry();
  const ScopedHandle media(registry, registry.findServiceByEntryID(3));
  EXPECT_TRUE(registry.conformsTo(media.get(), "KsMedia"));
  const auto disk = host_.memory().disks().describe(media.get());
  ASSERT_TRUE(disk);
  EXPECT_EQ(disk->volumeName->view(), "V");
  EXPECT_EQ(disk->mediaSize->asInt64(), 5);
  EXPECT_FALSE(disk->bsdName);
}

constexpr char kChain[] =
    R"({"id": 1, "class": "A"}, {"id": 2, "class": "B", "parents": [1]},)"
    R"({"id": 3, "class": "C", "parents": [2]}, {"id": 4, "class": "D", "parents": [1]})";

TEST_F(HostTest, AReloadKeepsWhatStays) {
  showEntries(kChain);
  auto& registry = host_.memory().registry();
  const ScopedHandle kept(registry, registry.findServiceByEntryID(3));
  showEntries(std::string(kChain) + R"(, {"id": 5, "class": "E", "parents": [3]})");
  EXPECT_EQ(relatives(1, kIterateRecursively), (std::vector<EntryID>{2, 3, 5, 4}));
  // The handle from before still leads to a place in the tree.
  const auto iterator =
      registry.createIterator(kept.get(), registry::kServicePlane, kIterateRecursively);
  const ScopedHandle below(registry, iterator.value);
  const ScopedHandle child(registry, registry.iteratorNext(below.get()));
  EXPECT_EQ(registry.getEntryID(child.get()).value, 5U);
}

TEST_F(HostTest, AReloadMovesAnEntryWithAllBelowIt) {
  showEntries(kChain);
  showEntries(
      R"({"id": 1, "class": "A"}, {"id": 2, "class": "B", "parents": [4]},)"
      R"({"id": 3, "class": "C", "parents": [2]}, {"id": 4, "class": "D", "parents": [1]})");
  EXPECT_EQ(relatives(1, kIterateRecursively), (std::vector<EntryID>{4, 2, 3}));
  EXPECT_EQ(relatives(3, kIterateRecursively | kIterateParents), (std::vector<EntryID>{2, 4, 1}));
  showEntries(R"({"id": 3, "class": "C"}, {"id": 1, "class": "Other"})");
  EXPECT_EQ(relatives(3, kIterateRecursively | kIterateParents), std::vector<EntryID>());
  EXPECT_EQ(registry::kServicePlane, "KsService");
  EXPECT_EQ(relatives(2, kIterateRecursively), std::vector<EntryID>{0});
}

TEST_F(HostTest, AReloadTakesNewValuesAndForgetsOldOnes) {
  const std::string path = R"({"id": 2, "class": "KsSCSIHierarchicalLogicalUnit")";
  const std::string counters = R"("sent": 1, "received": 1, "commands": 1, )";
  showEntries(path + R"(, "properties": {"P": 1, "Q": 1}, "disk": {}, "statistics": {)" + counters +
              R"("state": 1}})");
  EXPECT_EQ(statistics(kPathStatistics, 2), std::pair(0, 1));
  showEntries(path + R"(, "properties": {"P": 2}, "statistics": {)" + counters + R"("state": 2}})");
  EXPECT_EQ(statistics(kPathStatistics, 2), std::pair(0, 2));
  EXPECT_TRUE(host_.memory().registry().properties(2)->equals(*dictionary({{"P", number(2)}})));
  auto& registry = host_.memory().registry();
  const ScopedHandle entry(registry, registry.findServiceByEntryID(2));
  EXPECT_FALSE(host_.memory().disks().describe(entry.get()));
  showEntries("");
  EXPECT_EQ(statistics(kPathStatistics, 2).first, -1);
}

TEST_F(HostTest, AGenerationDoesNotComeAgain) {
  std::set<std::uint32_t> shown;
  // A file whose number stands still while its entries change, moves a little, and goes back.
  for (const char* generation : {"5", "5", "5", "6", "7", "5", "4294967295", "4294967295", "2"}) {
    const std::string id = std::to_string(shown.size() + 1);
    show("\"generation\": " + std::string(generation) + R"(, "entries": [{"id": )" + id +
         R"(, "class": "A"}])");
    EXPECT_TRUE(shown.insert(host_.memory().tunable().generation()).second) << generation;
  }
  EXPECT_FALSE(shown.contains(0));
}

TEST_F(HostTest, NobodyScansBeforeDeparturesAreTakenUp) {
  const auto generation = [&] {
    SCSIMPIOStatisticsRequest request{.requestType = kConfigurationGeneration};
    std::uint32_t told = 0;
    std::size_t length = sizeof told;
    host_.memory().tunable().sysctlbyname(kStatisticsTunable, &told, &length, &request,
                                          sizeof request);
    return told;
  };
  auto& registry = host_.memory().registry();
  show(R"("generation": 1, "entries": [{"id": 1, "class": "A"}])");
  EXPECT_EQ(generation(), 1U);
  show(R"("generation": 2, "entries": [{"id": 1, "class": "A"}])");  // nobody asks
  const RegistryPort port = registry.createNotificationPort();
  const auto queue = ob::make<ob::DispatchQueue>("test");
  registry.setDispatchQueue(port, *queue);
  std::atomic<std::uint32_t> toldWithDeparture = 0;
  const auto drain = [&](RegistryHandle iterator) {
    while (const RegistryHandle next = registry.iteratorNext(iterator)) registry.release(next);
  };
  const auto added =
      registry.addMatchingNotification(port, registry::kTerminateNotification,
                                       registry.classMatching("A"), [&](RegistryHandle iterator) {
                                         toldWithDeparture = generation();
                                         drain(iterator);
                                       });
  drain(added.value);
  show(R"("generation": 3, "entries": [])");
  EXPECT_EQ(toldWithDeparture, 1U);
  EXPECT_EQ(generation(), 3U);
  registry.release(added.value);
  registry.destroyNotificationPort(port);
}

TEST_F(HostTest, ABadReloadChangesNothing) {
  show(
      R"("generation": 1, "classes": {"A": "B"}, "entries": [{"id": 1, "class": "A"}, {"id": 2, "class": "Z"}])");
  const char* const kBad[] = {
      R"("generation": 2, "classes": {"A": "B"}, "entries": [{"id": 1}])",
      R"("generation": 2, "classes": {"A": "C"}, "entries": [])",
      R"("generation": 2, "classes": {}, "entries": [])",
      R"("generation": 2, "classes": {"A": "B", "B": "C"}, "entries": [])",
      R"("generation": 2, "classes": {"A": "B", "Z": "KsMedia"}, "entries": [])",
  };
  for (const char* bad : kBad) {
    EXPECT_THROW(show(bad), ImageError) << bad;
    EXPECT_EQ(host_.memory().tunable().generation(), 1U);
    EXPECT_TRUE(host_.memory().registry().properties(1));
  }
  show(
      R"("generation": 3, "classes": {"A": "B", "New": "A"}, "entries": [{"id": 9, "class": "New"}])");
  EXPECT_EQ(host_.memory().tunable().generation(), 3U);
}

}  // namespace
}  // namespace tavrenix::lab
