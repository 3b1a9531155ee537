// Every operation of the host fails once, at every position that a client's session calls it from.
#include "tests/library/scenario.hpp"
#include "tests/support/every_failure.hpp"

namespace tavrenix::test {
namespace {

TEST(HostFaults, AtEverySiteLeakNothingAndHeal) {
  LibraryHost host;
  addStorage(host->memory, {.units = 2, .paths = 2, .volumes = 1});
  const auto session = [&] {
    EXPECT_TRUE(useEverything(*host));
    EXPECT_EQ(host->memory.registry().openHandles(), 0u);
  };
  const std::size_t sites = failEveryOperation(host->watch, session, [&] {
    touch(host->memory);
    const Handles healed;
    EXPECT_EQ(ObArrayGetCount(healed.units.get()), 2u);
    EXPECT_EQ(ObArrayGetCount(healed.paths(1).get()), 2u);
  });
  EXPECT_GT(sites, 100u);
}

}  // namespace
}  // namespace tavrenix::test
