// What a running host shows of its image, before and after a change of the file.
#include "lab/simulated_host.hpp"
#include "tests/lab/lab_files.hpp"
#include "tests/support/registry_contract.hpp"

namespace tavrenix::lab {
namespace {

struct Running {
  // Shows the image's text, from the second on as the follower of a file does.
  void show(const std::string& text) {
    folder.write(text);
    std::exchange(isLoaded, true) ? host.reload() : static_cast<void>(host.load(folder.path()));
  }
  void show(const std::string& entries, const std::string& number,
            const std::string& classes = R"("K": "Kept")") {
    show("{\"classes\": {" + classes + "}, \"generation\": " + number + ", \"entries\": [" +
         entries + "]}");
  }
  std::uint32_t generation() { return host.memory().tunable().generation(); }

  ImageFolder folder;
  SimulatedHost host{[](std::string_view) {}};
  bool isLoaded = false;
};

// What the host shows of the entries 1 to 4.
std::string shownBy(SimulatedHost& host) {
  memory::MemoryRegistry& registry = host.memory().registry();
  std::string shown;
  for (EntryID id = 1; id <= 4; ++id) {
    const ScopedHandle entry(registry, registry.findServiceByEntryID(id));
    if (!entry) continue;
    shown += std::to_string(id) + ':';
    for (const std::uint32_t direction :
         {kIterateRecursively | kIterateParents, kIterateRecursively}) {
      for (const EntryID relative : registry.relatives(id, direction).value)
        shown += ' ' + std::to_string(relative);
      shown += ';';
    }
    shown += registry.conformsTo(entry.get(), "Kept") ? " kept" : "";
    for (const auto& [name, value] : registry.properties(id)->pairs())
      shown.append(" ").append(name->view()).append(ob::as<ob::String>(value.get())->view());
    if (const auto record = host.memory().tunable().pathStatistics(id))
      shown += " state " + std::to_string(record->state);
    const auto disk = host.memory().disks().describe(entry.get());
    if (disk && disk->volumeName) shown.append(" disk ").append(disk->volumeName->view());
    shown += '\n';
  }
  return shown;
}

TEST(SimulatedHost, ShowsAfterAReloadWhatAFreshHostShows) {
  Running running;
  const std::string path = R"({"id": 2, "class": "KsSCSIHierarchicalLogicalUnit")";
  const std::string counters =
      R"(, "statistics": {"sent": 1, "received": 1, "commands": 1, "state")";
  const std::pair<std::string, std::string> steps[] = {
      {R"({"id": 3, "class": "C", "parents": [2]}, {"id": 2, "class": "K", "parents": [1]},
          {"id": 1, "class": "A"}, {"id": 4, "class": "D", "parents": [1]})",
       "1:; 2 3 4;\n2: 1; 3; kept\n"},
      // An entry moves with everything below it, below one that was beside it.
      {R"({"id": 1, "class": "A"}, {"id": 2, "class": "K", "parents": [4]},
          {"id": 3, "class": "C", "parents": [2]}, {"id": 4, "class": "D", "parents": [1]})",
       "1:; 4 2 3;\n"},
      {R"({"id": 3, "class": "C"}, {"id": 1, "class": "K"})", "1:;; kept\n3:;;\n"},
      {path + R"(, "properties": {"P": "1", "Q": "1"}, "disk": {"volumeName": "V"})" + counters +
           ": 1}}",
       "2:;; P1 Q1 state 1 disk V\n"},
      {path + R"(, "properties": {"P": "2"})" + counters + ": 2}}", "2:;; P2 state 2\n"},
      {path + "}", "2:;;\n"},
      {"", ""},
  };
  for (const auto& [entries, expected] : steps) {
    running.show(entries, "5");
    SimulatedHost fresh([](std::string_view) {});
    fresh.load(running.folder.path());
    EXPECT_EQ(shownBy(running.host), shownBy(fresh)) << entries;
    EXPECT_TRUE(shownBy(fresh).starts_with(expected)) << shownBy(fresh);
  }
}

TEST(SimulatedHost, NeverShowsAGenerationAgain) {
  Running running;
  std::set<std::uint32_t> shown;
  // The file's number stays while its entries change, increases, goes back, and overflows.
  for (const char* number : {"5", "5", "5", "6", "7", "5", "4294967295", "4294967295", "2"}) {
    running.show(R"({"id": )" + std::to_string(shown.size() + 1) + R"(, "class": "A"})", number);
    EXPECT_TRUE(shown.insert(running.generation()).second) << number;
  }
  running.show("", "0");
  EXPECT_EQ(running.generation(), 0U);
}

TEST(SimulatedHost, IsUnchangedAfterABadReload) {
  Running running;
  const std::string used = R"({"id": 1, "class": "K"}, {"id": 2, "class": "Z"})";
  running.show(used, "1");
  for (const char* classes :
       {"1", R"("K": "C")", "", R"("K": "Kept", "Kept": "C")", R"("K": "Kept", "Z": "KsMedia")"}) {
    EXPECT_THROW(running.show(used, "2", classes), ImageError) << classes;
    EXPECT_EQ(running.generation(), 1U);
    EXPECT_EQ(shownBy(running.host), "1:;; kept\n2:;;\n");
  }
}

// For the contract that every backing keeps. The unit goes by taking another class.
struct SimulatedFixture : Running {
  static constexpr bool kMakesRounds = true;
  SimulatedFixture() { show(kSample); }
  BackedRegistry& registry() { return host.memory().registry(); }
  EntryID unit() const { return 200; }
  EntryID absent() const { return 99; }
  void removeUnit() { follow(std::string(kSample).replace(kSample.rfind("KsSCSIMulti"), 6, "No")); }
  void restoreUnit() { follow(kSample); }
  void follow(const std::string& text) {
    follower = std::jthread();  // joins the last one
    follower = std::jthread([this, text] { show(text); });
  }
  std::jthread follower;
};

}  // namespace
}  // namespace tavrenix::lab

namespace tavrenix::test {
INSTANTIATE_TYPED_TEST_SUITE_P(Simulated, RegistryContract, lab::SimulatedFixture);
}  // namespace tavrenix::test
