// The live host: what it shows of an image, and how it follows changes of the file.
#include "lab/host.hpp"

#include <atomic>
#include <set>

#include "model/entry.hpp"
#include "tests/lab/scratch.hpp"
#include "tests/support/storage.hpp"

namespace tavrenix::lab {
namespace {

class HostTest : public testing::Test {
 protected:
  void show(const std::string& members) {
    const std::string path = scratch_.write("image.json", "{" + members + "}");
    std::exchange(loaded_, true) ? host_.reload() : host_.load(path);
  }
  void showEntries(const std::string& entries) {
    show(R"("generation": 5, "entries": [)" + entries + "]");
  }
  std::uint32_t generation() { return host_.memory().tunable().generation(); }

  static std::vector<EntryID> relatives(memory::MemoryRegistry& registry, RegistryHandle entry,
                                        std::uint32_t options) {
    std::vector<EntryID> found;
    const auto iterator = registry.createIterator(entry, registry::kServicePlane, options);
    forEachEntry(registry, iterator.value,
                 [&](RegistryHandle next) { found.push_back(registry.getEntryID(next).value); });
    return found;
  }

  // All that the host shows of the entries 1 to 9, and that only there can be.
  static Json shownBy(SimulatedHost& host) {
    auto& registry = host.memory().registry();
    Json shown = Json::object();
    for (EntryID id = 1; id <= 9; ++id) {
      const ScopedHandle entry(registry, registry.findServiceByEntryID(id));
      if (!entry) continue;
      Json& of = shown[std::to_string(id)];
      of["above"] = relatives(registry, entry.get(), kIterateRecursively | kIterateParents);
      of["below"] = relatives(registry, entry.get(), kIterateRecursively);
      of["isKept"] = registry.conformsTo(entry.get(), "Kept");
      of["P"] = test::numberUnder(registry.properties(id).get(), *ob::String::make("P"));
      of["properties"] = registry.properties(id)->pairs().size();
      const auto record = host.memory().tunable().pathStatistics(id);
      of["state"] = record ? record->state : -1;
      const auto disk = host.memory().disks().describe(entry.get());
      of["disk"] = disk && disk->volumeName ? disk->volumeName->view() : "none";
    }
    return shown;
  }

  Scratch scratch_;
  bool loaded_ = false;
  SimulatedHost host_{[](std::string_view) {}};
};

TEST_F(HostTest, IsNotReadyBeforeAnImageIsLoaded) {
  EXPECT_EQ(generation(), 0U);
  EXPECT_THROW(host_.load(scratch_.path("missing.json")), ImageError);
  EXPECT_EQ(generation(), 0U);
  show(R"("generation": 7, "effectiveUser": 1000, "entries": [])");
  EXPECT_EQ(generation(), 7U);
  EXPECT_EQ(host_.memory().effectiveUser(), 1000U);
}

constexpr char kPath[] = R"({"id": 2, "class": "KsSCSIHierarchicalLogicalUnit")";
constexpr char kCounters[] = R"("sent": 1, "received": 1, "commands": 1)";

TEST_F(HostTest, ShowsEntriesClassesStatisticsAndDisks) {
  show(R"("generation": 1, "classes": {"MyMedia": "Kept"}, "entries": [
    {"id": 3, "class": "MyMedia", "parents": [1], "disk": {"volumeName": "V"}},
    {"id": 1, "class": "KsSCSIMultipathedLogicalUnit", "parents": [2], "statistics": {)" +
       std::string(kCounters) + "}}, " + kPath + R"(, "properties": {"P": 7}, "statistics": {)" +
       kCounters + R"(, "state": 129}}])");
  EXPECT_EQ(shownBy(host_), readJSON(R"({
    "1": {"above": [2], "below": [3], "isKept": false, "P": -999, "properties": 0, "state": -1, "disk": "none"},
    "2": {"above": [], "below": [1, 3], "isKept": false, "P": 7, "properties": 1, "state": 129, "disk": "none"},
    "3": {"above": [1, 2], "below": [], "isKept": true, "P": -999, "properties": 0, "state": -1, "disk": "V"}})"));
  const SCSIMPIOStatisticsRequest request{.logicalUnitEntryID = 1};
  SCSILogicalUnitStatistics record;
  std::size_t length = sizeof record;
  EXPECT_EQ(host_.memory().tunable().sysctlbyname(kStatisticsTunable, &record, &length, &request,
                                                  sizeof request),
            0);
}

TEST_F(HostTest, AReloadLeavesWhatAFreshHostShows) {
  const std::string chain = R"({"id": 1, "class": "A"}, {"id": 2, "class": "B", "parents": [1]},
    {"id": 3, "class": "C", "parents": [2]}, {"id": 4, "class": "D", "parents": [1]})";
  const std::string path = kPath;
  const std::string counters = kCounters;
  const std::string steps[] = {
      chain,
      chain + R"(, {"id": 5, "class": "E", "parents": [3]})",
      // An entry moves with all below it, below one that was beside it.
      R"({"id": 1, "class": "A"}, {"id": 2, "class": "B", "parents": [4]},
         {"id": 3, "class": "C", "parents": [2]}, {"id": 4, "class": "D", "parents": [1]})",
      R"({"id": 3, "class": "C"}, {"id": 1, "class": "Other"})",
      path + R"(, "properties": {"P": 1, "Q": 1}, "disk": {"volumeName": "V"}, "statistics": {)" +
          counters + R"(, "state": 1}})",
      path + R"(, "properties": {"P": 2}, "statistics": {)" + counters + R"(, "state": 2}})",
      path + "}",
      "",
  };
  for (const std::string& step : steps) {
    showEntries(step);
    SimulatedHost fresh([](std::string_view) {});
    fresh.load(scratch_.path("image.json"));
    EXPECT_EQ(shownBy(host_), shownBy(fresh)) << step;
  }
}

TEST_F(HostTest, AReloadKeepsWhatStays) {
  showEntries(R"({"id": 1, "class": "A"})");
  auto& registry = host_.memory().registry();
  const ScopedHandle kept(registry, registry.findServiceByEntryID(1));
  showEntries(R"({"id": 1, "class": "A"}, {"id": 5, "class": "E", "parents": [1]})");
  EXPECT_EQ(relatives(registry, kept.get(), kIterateRecursively), std::vector<EntryID>{5});
}

TEST_F(HostTest, AGenerationDoesNotComeAgain) {
  std::set<std::uint32_t> shown;
  // A file whose number stands still while its entries change, moves a little, and goes back.
  for (const char* number : {"5", "5", "5", "6", "7", "5", "4294967295", "4294967295", "2"}) {
    const std::string id = std::to_string(shown.size() + 1);
    show("\"generation\": " + std::string(number) + R"(, "entries": [{"id": )" + id +
         R"(, "class": "A"}])");
    EXPECT_TRUE(shown.insert(generation()).second) << number;
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
  {
    const memory::MemoryTunable::HeldGeneration held(host_.memory().tunable());
    EXPECT_EQ(generation(), 0U) << "nobody has been told of any";
  }
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
    EXPECT_EQ(generation(), 1U);
    EXPECT_TRUE(host_.memory().registry().properties(1));
  }
  show(
      R"("generation": 3, "classes": {"A": "B", "New": "A"}, "entries": [{"id": 9, "class": "New"}])");
  EXPECT_EQ(generation(), 3U);
}

}  // namespace
}  // namespace tavrenix::lab
