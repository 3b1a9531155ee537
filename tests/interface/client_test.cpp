#include "tests/interface/client.h"

#include <gtest/gtest.h>

#include "tests/support/library_host.hpp"

namespace tavrenix::test {
namespace {

TEST(CClient, ListsAndChangesAndGivesEverythingBack) {
  LibraryHost host;
  addStorage(host->memory, {.units = 2, .paths = 2, .volumes = 1});
  char report[1024];
  EXPECT_EQ(clientListAndChange(report, sizeof report), 2);
  EXPECT_STREQ(report,
               "unit=unit 0\n commands=300\n path=0000\n  sent=10\n path=0001\n  sent=11\n"
               "unit=unit 1\n commands=300\n path=0000\n  sent=10\n path=0001\n  sent=11\n"
               "error=newBatchCount cannot be 0 (error 0x08000001)\n");
  const auto written = host->memory.registry().properties(unitID(0));
  const auto* request = written->valueAs<ob::Dictionary>(*ob::String::make("Properties"));
  ASSERT_NE(request, nullptr);
  EXPECT_EQ(textUnder(request, *ob::String::make("Algorithm")), "Least Bytes");
  EXPECT_EQ(host->memory.registry().openHandles(), 0u);
  EXPECT_EQ(knownLogicalUnit(unitID(0))->retainCount(), 2u);  // the manager and this
}

}  // namespace
}  // namespace tavrenix::test
