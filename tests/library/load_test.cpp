// What happens before main and at exit.
#include <gtest/gtest.h>

#include <cstdlib>

#include "library/manager.hpp"

namespace tavrenix::test {
namespace {

// Set up before any test has touched the manager.
class AtStart final : public testing::Environment {
 public:
  void SetUp() override {
    EXPECT_TRUE(manager().ready);
    EXPECT_TRUE(manager().lock);
    EXPECT_TRUE(manager().logicalUnits && manager().paths);
    EXPECT_NE(MPIOLogicalUnit::getTypeID(), MPIOLogicalUnitPath::getTypeID());
  }
};
[[maybe_unused]] const auto* const atStart = testing::AddGlobalTestEnvironment(new AtStart);

bool watchesExit = false;

// Registered before the library's own handler, so run after it.
[[gnu::constructor(101)]] void watchExit() {
  std::atexit([] {
    const MPIOManager& left = manager();
    if (watchesExit) std::_Exit(left.logicalUnits || left.paths || left.lock ? 1 : 42);
  });
}

TEST(LoadDeathTest, TheManagerIsTornDownAtExit) {
  const auto end = [] {
    MPIOManagerInitialize();
    watchesExit = true;
    std::exit(0);
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(42), "");
}

}  // namespace
}  // namespace tavrenix::test
