// What a client in plain C sees of the library. The report holds the text of every key in it.
#include <gtest/gtest.h>
#include <tavrenix/mpio.h>

#include "tests/support/library_host.hpp"

extern "C" void printUnits();

namespace tavrenix::test {
namespace {

TEST(Constants, HaveTheirTextsAndOutliveEveryRelease) {
  const std::pair<ObStringRef, const char*> rows[] = {
      {kMPIOLogicalUnitStatusChangedNotification, "Logical Unit Status Changed"},
      {kMPIOLogicalUnitInvalidatedNotification, "Logical Unit Invalidated"},
      {kMPIOLogicalUnitAppearedNotification, "Logical Unit Appeared"},
      {kMPIOLogicalUnitPathAppearedNotification, "Logical Unit Path Appeared"},
      {kMPIOLogicalUnitDisappearedNotification, "Logical Unit Disappeared"},
      {kMPIOLogicalUnitPathDisappearedNotification, "Logical Unit Path Disappeared"},
      {kMPIOLogicalUnitAlgorithmLeastQueueDepth, "Logical Unit Algorithm Least Queue Depth"},
      {kMPIOErrorResultCodeKey, "Error Result Code"},
      {kMPIOLogicalUnitPathAccessStateKey, "Logical Unit Path State"},
  };
  for (const auto& [constant, text] : rows) {
    for (int round = 0; round < 3; ++round) ObRelease(constant);
    EXPECT_STREQ(ObStringGetUTF8(constant), text);
  }
}

TEST(CClient, SeesEveryPropertyAndCounterAndReleasesEverything) {
  LibraryHost host;
  addStorage(host->memory, {.units = 1, .paths = 1, .volumes = 1});
  testing::internal::CaptureStdout();
  printUnits();
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "[unit]\n"
            "Logical Unit Batch Count: 16\n"
            "Logical Unit Algorithm: Logical Unit Algorithm Round Robin\n"
            "Logical Unit Identifier: 600A0B80000000000000000000000000\n"
            "Logical Unit Alias: unit 0\n"
            "Logical Unit Vendor ID: MAKER\n"
            "Logical Unit Product ID: ARRAY\n"
            "Logical Unit Volumes Dictionary Array:\n"
            "Logical Unit Volume Name: Volume 0\n"
            "Logical Unit Volume Size: 1000000000\n"
            "Logical Unit Volume Mount Point: disk0s1\n"
            "\n"
            "Logical Unit Statistics Sampling Date: date\n"
            "Logical Unit Statistics Cumulative Bytes Sent: 100\n"
            "Logical Unit Statistics Cumulative Bytes Received: 200\n"
            "Logical Unit Statistics Cumulative Total Bytes Transferred: 300\n"
            "Logical Unit Statistics Cumulative Total Commands Processed: 300\n"
            "[path]\n"
            "Logical Unit Path Identifier: 0000\n"
            "Logical Unit Path State: Active Optimized\n"
            "Logical Unit Path Enabled: true\n"
            "Logical Unit Path Interconnect: Fibre Channel Interface\n"
            "Logical Unit Path Host Port Identifier: 3 bytes\n"
            "\n"
            "Logical Unit Path Statistics Sampling Date: date\n"
            "Logical Unit Path Statistics Cumulative Bytes Sent: 10\n"
            "Logical Unit Path Statistics Cumulative Bytes Received: 20\n"
            "Logical Unit Path Statistics Total Bytes Transferred: 30\n"
            "Logical Unit Path Statistics Cumulative Total Commands Processed: 30\n"
            "Logical Unit Path Statistics Path State: 0\n");
  EXPECT_EQ(host->memory.registry().openHandles(), 0u);
  EXPECT_EQ(knownLogicalUnit(unitID(0))->retainCount(), 2u);  // the manager and this
}

}  // namespace
}  // namespace tavrenix::test
