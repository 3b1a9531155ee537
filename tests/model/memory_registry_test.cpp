// The in-memory backing: the contract of the registry, and what its owner changes.
#include <gmock/gmock.h>

#include "host/memory/memory_host.hpp"
#include "tests/support/registry_contract.hpp"
#include "tests/support/sample_storage.hpp"

namespace tavrenix::test {
namespace {

using testing::ElementsAre;

struct MemoryFixture {
  static constexpr bool kMakesRounds = false;
  MemoryFixture() { addStorage(host, {.units = 3, .paths = 2, .volumes = 2}); }
  BackedRegistry& registry() { return host.registry(); }
  EntryID unit() const { return unitID(1); }
  EntryID absent() const { return 0xDEAD; }
  std::uint32_t generation() { return host.tunable().generation(); }
  void removeUnit() {
    touch(host);
    host.registry().removeEntry(unitID(1));
  }
  void restoreUnit() {
    const memory::MemoryRegistry::HeldNotifications held(host.registry());
    addStorage(host, {.units = 3, .paths = 2, .volumes = 2});
  }

  memory::MemoryHost host;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, RegistryContract, MemoryFixture);

class MemoryRegistry : public testing::Test {
 protected:
  bool add(EntryID id, const std::vector<EntryID>& parents = {}) {
    return registry.addEntry(id, "A", parents, dictionary({}));
  }
  Entries walk(EntryID from, std::uint32_t options) {
    return registry.relatives(from, options).value;
  }

  memory::MemoryRegistry registry;
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

}  // namespace
}  // namespace tavrenix::test
