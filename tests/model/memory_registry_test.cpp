// The in-memory backing: the contract of the seam, and what only this backing does.
#include "model/memory/registry.hpp"

#include <gmock/gmock.h>

#include "tests/support/registry_contract.hpp"
#include "tests/support/storage.hpp"

namespace tavrenix::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct MemoryBacking {
  MemoryBacking() { addStorage(host, {.units = 3, .paths = 2, .volumes = 2}); }
  MPIODeviceRegistry& registry() { return host.registry(); }
  EntryID unit() const { return unitID(1); }
  EntryID absent() const { return 0xDEAD; }
  std::size_t openHandles() { return host.registry().openHandles(); }

  memory::MemoryHost host;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, RegistryContract, MemoryBacking);

class MemoryRegistry : public testing::Test {
 protected:
  ~MemoryRegistry() override { EXPECT_EQ(registry.openHandles(), 0u); }

  bool add(EntryID id, const std::vector<EntryID>& parents = {}, const char* className = "A") {
    return registry.addEntry(id, className, parents, dictionary({{"Name", text("old")}}));
  }
  std::vector<EntryID> walk(EntryID from, std::uint32_t options) {
    std::vector<EntryID> found;
    forEachRelative(registry, from, options, [&](RegistryHandle entry) {
      found.push_back(registry.getEntryID(entry).value);
    });
    return found;
  }
  std::vector<EntryID> children(EntryID of) { return walk(of, 0); }

  memory::MemoryRegistry registry;
  const ob::Ref<const ob::String> name = ob::String::make("Name");
};

TEST_F(MemoryRegistry, WalksDepthFirstDownAndLevelByLevelUp) {
  add(1);
  add(2, {1});
  add(3, {1});
  add(4, {2, 3});  // two ways lead here
  add(5, {2});
  add(6, {4});
  EXPECT_THAT(walk(1, 1), ElementsAre(2, 4, 6, 5, 3));
  EXPECT_THAT(walk(1, 0), ElementsAre(2, 3));
  EXPECT_THAT(walk(6, 3), ElementsAre(4, 2, 3, 1));
  EXPECT_THAT(walk(4, 2), ElementsAre(2, 3));
}

TEST_F(MemoryRegistry, AnEntryThatMovesIsUnderItsNewParentsAlone) {
  for (EntryID id = 1; id <= 3; ++id) add(id);
  add(4, {1, 2});
  EXPECT_TRUE(registry.replaceParents(4, {2, 3}));
  EXPECT_FALSE(registry.replaceParents(4, {1, 99}));  // nothing half done
  EXPECT_FALSE(registry.replaceParents(99, {1}));
  EXPECT_THAT(children(1), IsEmpty());
  EXPECT_THAT(children(2), ElementsAre(4));
  EXPECT_THAT(children(3), ElementsAre(4));
  EXPECT_THAT(walk(4, 2), ElementsAre(2, 3));
}

TEST_F(MemoryRegistry, AnEntryThatGoesIsNobodysRelativeAndStaysBehindItsHandle) {
  add(1);
  add(2, {1});
  add(3, {2});
  const ScopedHandle gone(registry, registry.findServiceByEntryID(2));
  EXPECT_TRUE(registry.removeEntry(2));
  EXPECT_FALSE(registry.removeEntry(2));
  EXPECT_THAT(walk(1, 1), IsEmpty());
  EXPECT_THAT(walk(3, 3), IsEmpty());
  for (const std::uint32_t options : {1u, 3u}) {
    const auto made = registry.createIterator(gone.get(), registry::kServicePlane, options);
    const ScopedHandle iterator(registry, made.value);
    EXPECT_EQ(registry.iteratorNext(iterator.get()), 0u) << options;
  }
  EXPECT_EQ(registry.getEntryID(gone.get()).value, 2u);
  EXPECT_TRUE(registry.copyProperty(gone.get(), *name));
  EXPECT_NE(registry.setProperty(gone.get(), *name, *text("two")), kSuccess);
}

TEST_F(MemoryRegistry, KnowsOnePlaneAndAnswersForHandlesThatAreOpen) {
  add(1);
  EXPECT_TRUE(registry.replaceProperties(1, dictionary({{"Name", text("two")}})));
  EXPECT_FALSE(registry.replaceProperties(2, dictionary({})));
  const ScopedHandle entry(registry, registry.findServiceByEntryID(1));
  const auto search = [&](RegistryHandle from, std::string_view plane) {
    return registry.searchProperty(from, plane, *name, 3);
  };
  EXPECT_TRUE(search(entry.get(), registry::kServicePlane)->equals(*text("two")));
  EXPECT_FALSE(search(entry.get(), "Another"));
  EXPECT_FALSE(search(0, registry::kServicePlane));
  EXPECT_EQ(registry.createIterator(entry.get(), "Another", 0).value, 0u);
  EXPECT_EQ(registry.entryIDOf(entry.get()), 1u);
  EXPECT_FALSE(registry.entryIDOf(0));
  EXPECT_FALSE(registry.entryIDOf(entry.get() + 1));
}

TEST_F(MemoryRegistry, RefusesTakenIDsMissingParentsAndClassCycles) {
  EXPECT_TRUE(add(1));
  EXPECT_FALSE(add(1));
  EXPECT_FALSE(add(2, {1, 9}));
  EXPECT_THAT(children(1), IsEmpty());  // nothing half done
  EXPECT_TRUE(registry.defineClass("A", "B"));
  EXPECT_TRUE(registry.defineClass("A", "B"));
  EXPECT_FALSE(registry.defineClass("A", "C"));
  EXPECT_FALSE(registry.defineClass("B", "A"));
  EXPECT_FALSE(registry.defineClass("KsService", "A"));
  const ScopedHandle entry(registry, registry.findServiceByEntryID(1));
  EXPECT_TRUE(registry.conformsTo(entry.get(), "B"));
}

TEST_F(MemoryRegistry, LooksUpWhatIsThereNowAfterAnIDWasAskedFor) {
  add(1);
  const ScopedHandle old(registry, registry.findServiceByEntryID(1));
  registry.getEntryID(old.get());
  registry.removeEntry(1);
  EXPECT_EQ(registry.findServiceByEntryID(1), 0u);
  registry.getEntryID(old.get());
  EXPECT_EQ(registry.findServiceByEntryID(1), 0u);
  add(1, {}, "B");
  registry.getEntryID(old.get());
  const ScopedHandle fresh(registry, registry.findServiceByEntryID(1));
  EXPECT_TRUE(registry.conformsTo(fresh.get(), "B"));
}

TEST_F(MemoryRegistry, AWriteBecomesAPropertyOrIsTheHandlersToAnswer) {
  add(7);
  const ScopedHandle entry(registry, registry.findServiceByEntryID(7));
  EXPECT_EQ(registry.setProperty(entry.get(), *name, *text("new")), kSuccess);
  EXPECT_TRUE(registry.copyProperty(entry.get(), *name)->equals(*text("new")));
  registry.setWriteHandler([&](EntryID id, const ob::String& written, const ob::Object& value) {
    EXPECT_EQ(id, 7u);
    EXPECT_EQ(written.view(), "Name");
    return value.equals(*text("good")) ? kSuccess : -5;
  });
  EXPECT_EQ(registry.setProperty(entry.get(), *name, *text("bad")), -5);
  EXPECT_EQ(registry.setProperty(entry.get(), *name, *text("good")), kSuccess);
  EXPECT_TRUE(registry.copyProperty(entry.get(), *name)->equals(*text("new")));
}

using MemoryRegistryDeathTest = MemoryRegistry;

TEST_F(MemoryRegistryDeathTest, EndsTheProcessOnADoubleRelease) {
  add(1);
  const RegistryHandle entry = registry.findServiceByEntryID(1);
  registry.release(entry);
  EXPECT_DEATH(registry.release(entry), "released twice");
}

}  // namespace
}  // namespace tavrenix::test
