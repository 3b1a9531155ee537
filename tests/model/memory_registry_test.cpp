// The in-memory backing: the contract of the seam, and what only this backing does.
#include "model/memory/registry.hpp"

#include <gmock/gmock.h>

#include "tests/support/registry_contract.hpp"
#include "tests/support/storage.hpp"

namespace tavrenix::test {
namespace {

struct MemoryBacking {
  MemoryBacking() { addStorage(host, {.units = 3, .paths = 2, .volumes = 2}); }
  MPIODeviceRegistry& registry() { return host.registry(); }
  EntryID unit() const { return unitID(1); }
  EntryID absent() const { return 0xDEAD; }
  std::size_t openHandles() { return host.registry().openHandles(); }

  memory::MemoryHost host;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, RegistryContract, MemoryBacking);

std::vector<EntryID> walk(memory::MemoryRegistry& registry, EntryID from, std::uint32_t options) {
  std::vector<EntryID> found;
  forEachRelative(registry, from, options,
                  [&](RegistryHandle entry) { found.push_back(registry.getEntryID(entry).value); });
  return found;
}

TEST(MemoryRegistry, WalksDepthFirstDownAndLevelByLevelUp) {
  memory::MemoryRegistry registry;
  registry.addEntry(1, "A", {}, dictionary({}));
  registry.addEntry(2, "A", {1}, dictionary({}));
  registry.addEntry(3, "A", {1}, dictionary({}));
  registry.addEntry(4, "A", {2, 3}, dictionary({}));  // two ways lead here
  registry.addEntry(5, "A", {2}, dictionary({}));
  EXPECT_THAT(walk(registry, 1, 1), testing::ElementsAre(2, 4, 5, 3));
  EXPECT_THAT(walk(registry, 1, 0), testing::ElementsAre(2, 3));
  EXPECT_THAT(walk(registry, 4, 3), testing::ElementsAre(2, 3, 1));
  EXPECT_THAT(walk(registry, 4, 2), testing::ElementsAre(2, 3));
  registry.addEntry(6, "A", {4}, dictionary({}));
  registry.addEntry(7, "A", {6}, dictionary({}));
  EXPECT_THAT(walk(registry, 7, 3), testing::ElementsAre(6, 4, 2, 3, 1));
  EXPECT_EQ(registry.openHandles(), 0u);
}

TEST(MemoryRegistry, AnEntryThatMovesIsUnderItsNewParentsAlone) {
  memory::MemoryRegistry registry;
  for (EntryID id = 1; id <= 3; ++id) registry.addEntry(id, "A", {}, dictionary({}));
  registry.addEntry(4, "A", {1, 2}, dictionary({}));
  EXPECT_TRUE(registry.replaceParents(4, {2, 3}));
  EXPECT_TRUE(walk(registry, 1, 0).empty());
  EXPECT_THAT(walk(registry, 2, 0), testing::ElementsAre(4));
  EXPECT_THAT(walk(registry, 3, 0), testing::ElementsAre(4));
  EXPECT_THAT(walk(registry, 4, 2), testing::ElementsAre(2, 3));
  EXPECT_FALSE(registry.replaceParents(4, {1, 99}));
  EXPECT_TRUE(walk(registry, 1, 0).empty());  // nothing half done
}

TEST(MemoryRegistry, AnEntryThatGoesIsNobodysRelative) {
  memory::MemoryRegistry registry;
  registry.addEntry(1, "A", {}, dictionary({}));
  registry.addEntry(2, "A", {1}, dictionary({}));
  registry.addEntry(3, "A", {2}, dictionary({}));
  const ScopedHandle gone(registry, registry.findServiceByEntryID(2));
  EXPECT_TRUE(registry.removeEntry(2));
  EXPECT_TRUE(walk(registry, 1, 1).empty());
  EXPECT_TRUE(walk(registry, 3, 3).empty());
  for (const std::uint32_t options : {0u, 1u, 2u, 3u}) {
    const auto made = registry.createIterator(gone.get(), registry::kServicePlane, options);
    const ScopedHandle iterator(registry, made.value);
    EXPECT_EQ(registry.iteratorNext(iterator.get()), 0u) << options;
  }
}

TEST(MemoryRegistry, KnowsOnePlaneAndAnswersForHandlesThatAreOpen) {
  memory::MemoryRegistry registry;
  EXPECT_TRUE(registry.addEntry(1, "A", {}, dictionary({{"Name", text("one")}})));
  EXPECT_TRUE(registry.replaceProperties(1, dictionary({{"Name", text("two")}})));
  EXPECT_FALSE(registry.replaceProperties(2, dictionary({})));
  const ScopedHandle entry(registry, registry.findServiceByEntryID(1));
  const auto name = ob::String::make("Name");
  EXPECT_TRUE(registry.searchProperty(entry.get(), registry::kServicePlane, *name, 3)
                  ->equals(*text("two")));
  EXPECT_FALSE(registry.searchProperty(entry.get(), "Another", *name, 3));
  EXPECT_FALSE(registry.searchProperty(0, registry::kServicePlane, *name, 3));
  EXPECT_EQ(registry.createIterator(entry.get(), "Another", 0).value, 0u);
  EXPECT_EQ(registry.entryIDOf(entry.get()), 1u);
  EXPECT_FALSE(registry.entryIDOf(0));
  EXPECT_FALSE(registry.entryIDOf(entry.get() + 1));
}

TEST(MemoryRegistry, RefusesTakenIDsMissingParentsAndClassCycles) {
  memory::MemoryRegistry registry;
  EXPECT_TRUE(registry.addEntry(1, "A", {}, dictionary({})));
  EXPECT_FALSE(registry.addEntry(1, "A", {}, dictionary({})));
  EXPECT_FALSE(registry.addEntry(2, "A", {1, 9}, dictionary({})));
  EXPECT_TRUE(walk(registry, 1, 1).empty());  // nothing half done
  EXPECT_TRUE(registry.defineClass("A", "B"));
  EXPECT_TRUE(registry.defineClass("A", "B"));
  EXPECT_FALSE(registry.defineClass("A", "C"));
  EXPECT_FALSE(registry.defineClass("B", "A"));
  EXPECT_FALSE(registry.defineClass("KsService", "A"));
  const ScopedHandle entry(registry, registry.findServiceByEntryID(1));
  EXPECT_TRUE(registry.conformsTo(entry.get(), "B"));
}

TEST(MemoryRegistry, AHandleOutlivesItsEntrysPlaceInTheTree) {
  memory::MemoryRegistry registry;
  registry.addEntry(1, "A", {}, dictionary({{"Name", text("one")}}));
  registry.addEntry(2, "A", {1}, dictionary({}));
  const ScopedHandle entry(registry, registry.findServiceByEntryID(1));
  EXPECT_TRUE(registry.removeEntry(1));
  EXPECT_FALSE(registry.removeEntry(1));
  EXPECT_EQ(registry.getEntryID(entry.get()).value, 1u);
  EXPECT_TRUE(registry.copyProperty(entry.get(), *ob::String::make("Name")));
  EXPECT_NE(registry.setProperty(entry.get(), *ob::String::make("Name"), *text("two")), kSuccess);
  EXPECT_TRUE(walk(registry, 2, 3).empty());
  EXPECT_EQ(registry.openHandles(), 1u);
}

TEST(MemoryRegistry, LooksUpWhatIsThereNowAfterAnIDWasAskedFor) {
  memory::MemoryRegistry registry;
  registry.addEntry(1, "A", {}, dictionary({}));
  const ScopedHandle old(registry, registry.findServiceByEntryID(1));
  registry.getEntryID(old.get());
  registry.removeEntry(1);
  EXPECT_EQ(registry.findServiceByEntryID(1), 0u);
  registry.getEntryID(old.get());
  EXPECT_EQ(registry.findServiceByEntryID(1), 0u);
  registry.addEntry(1, "B", {}, dictionary({}));
  registry.getEntryID(old.get());
  const ScopedHandle fresh(registry, registry.findServiceByEntryID(1));
  EXPECT_TRUE(registry.conformsTo(fresh.get(), "B"));
}

TEST(MemoryRegistry, KeepsRelativesInOrderWhenSomeLeave) {
  memory::MemoryRegistry registry;
  registry.addEntry(1, "A", {}, dictionary({}));
  for (const EntryID child : {2U, 3U, 4U}) registry.addEntry(child, "A", {1}, dictionary({}));
  EXPECT_THAT(walk(registry, 1, 0), testing::ElementsAre(2, 3, 4));
  registry.removeEntry(2);
  EXPECT_THAT(walk(registry, 1, 0), testing::ElementsAre(3, 4));
  registry.removeEntry(4);
  registry.removeEntry(3);
  EXPECT_TRUE(walk(registry, 1, 0).empty());
  registry.addEntry(5, "A", {1}, dictionary({}));
  EXPECT_THAT(walk(registry, 1, 0), testing::ElementsAre(5));
}

TEST(MemoryRegistry, WithoutHandlerAWriteBecomesAProperty) {
  memory::MemoryRegistry registry;
  registry.addEntry(1, "A", {}, dictionary({}));
  const ScopedHandle entry(registry, registry.findServiceByEntryID(1));
  EXPECT_EQ(registry.setProperty(entry.get(), *ob::String::make("Name"), *text("new")), kSuccess);
  EXPECT_TRUE(registry.copyProperty(entry.get(), *ob::String::make("Name"))->equals(*text("new")));
}

TEST(MemoryRegistry, WithHandlerAWriteIsTheHandlersToAnswer) {
  memory::MemoryRegistry registry;
  registry.addEntry(7, "A", {}, dictionary({}));
  std::string written;
  registry.setWriteHandler([&](EntryID id, const ob::String& name, const ob::Object& value) {
    written = std::to_string(id) + " " + std::string(name.view());
    return value.equals(*text("good")) ? kSuccess : -5;
  });
  const ScopedHandle entry(registry, registry.findServiceByEntryID(7));
  const auto name = ob::String::make("Name");
  EXPECT_EQ(registry.setProperty(entry.get(), *name, *text("bad")), -5);
  EXPECT_EQ(registry.setProperty(entry.get(), *name, *text("good")), kSuccess);
  EXPECT_EQ(written, "7 Name");
  EXPECT_FALSE(registry.copyProperty(entry.get(), *name)) << "the handler's affair";
}

TEST(MemoryRegistryDeathTest, EndsTheProcessOnADoubleRelease) {
  memory::MemoryRegistry registry;
  registry.addEntry(1, "A", {}, dictionary({}));
  const RegistryHandle entry = registry.findServiceByEntryID(1);
  registry.release(entry);
  EXPECT_DEATH(registry.release(entry), "released twice");
}

}  // namespace
}  // namespace tavrenix::test
