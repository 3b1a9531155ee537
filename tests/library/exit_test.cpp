// A client that leaves main while another thread scans.
#include <gtest/gtest.h>

#include <cstdlib>
#include <semaphore>
#include <thread>

#include "tests/library/client.hpp"
#include "tests/support/library_host.hpp"

namespace tavrenix::test {
namespace {

void (*afterTeardown)() = nullptr;

// An exit handler of the client, registered before the library's own and so run after it.
[[gnu::constructor(101)]] void watchExit() {
  std::atexit([] {
    if (afterTeardown != nullptr) afterTeardown();
  });
}

std::binary_semaphore scanning{0}, mayGoOn{0};
std::thread* scan = nullptr;

TEST(ExitDeathTest, AScanUnderWayKeepsWhatItUses) {
  LibraryHost host;
  addStorage(host->memory, {.units = 200, .paths = 4});
  const auto leave = [&] {
    const Handles handles;
    touch(host->memory);
    host->watch.alsoFails = [operations = 0]() mutable {
      if (++operations == 100) {  // the scan has begun with the units and not ended
        scanning.release();
        mayGoOn.acquire();
      }
      return false;
    };
    afterTeardown = [] {
      mayGoOn.release();
      scan->join();
      std::_Exit(MPIOCopyLogicalUnits() == nullptr && !knownPath(pathID(0, 0)) ? 42 : 1);
    };
    scan = new std::thread([] { MPIOCopyLogicalUnits(); });
    scanning.acquire();
    std::exit(0);
  };
  EXPECT_EXIT(leave(), testing::ExitedWithCode(42), "");
}

}  // namespace
}  // namespace tavrenix::test
