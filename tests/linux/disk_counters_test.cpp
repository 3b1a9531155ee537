// The table of all disks' counters, and when it is told from.
#include "linux/disk_counters.hpp"

#include <gtest/gtest.h>

#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

using sys::DiskCounters;
using sys::Kind;

TEST(DiskCounters, TellsEachDevicesLineOnce) {
  DiskCounters counters(
      "   8       0 sda 1 2 3\n"
      " 254    1048575 dm-0 4 5 6\n"
      "nonsense\n\n"
      "4096 0 sdx 1 1 1\n"
      "   8      16 sdb 7");
  EXPECT_EQ(counters.take({8, 0}), " 1 2 3");
  EXPECT_TRUE(counters.taken({8, 0}));
  EXPECT_EQ(counters.take({8, 0}), std::nullopt);
  EXPECT_EQ(counters.take({254, 1048575}), " 4 5 6");
  EXPECT_EQ(counters.take({8, 32}), std::nullopt);
  EXPECT_FALSE(counters.taken({8, 32}));
  EXPECT_EQ(counters.take({8, 16}), " 7");
}

// How many commands a path has carried, as the tunable tells.
std::uint64_t commands(sys::LinuxHost& host, EntryID unit, EntryID path) {
  const SCSIMPIOStatisticsRequest request{
      .requestType = kPathStatistics, .logicalUnitEntryID = unit, .pathEntryID = path};
  SCSIPathStatistics record;
  std::size_t length = sizeof record;
  EXPECT_EQ(
      host.tunable().sysctlbyname(kStatisticsTunable, &record, &length, &request, sizeof request),
      0);
  return record.commandsProcessed;
}

TEST(DiskCounters, ServeWhoAsksAboutManyAndNobodyTwice) {
  const CopiedMachine copy("states");
  RecordedMachine machine(copy.root.string());
  const auto table = [&](int count) {
    copy.write("/proc/diskstats",
               "8 0 sda " + std::to_string(count) + " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
  };
  table(1000);
  copy.write("/sys/block/sda/stat", "5 0 0 0 0 0 0 0 0 0 0\n");
  sys::LinuxHost host(sys::HostFiles(copy.root.string()), machine.port, machine.daemon, 0,
                      std::chrono::hours(1));
  const EntryID unit = machine.id(Kind::kUnit, {254, 0});
  const EntryID path = machine.id(Kind::kPath, {8, 0});
  for (int asked = 0; asked < 8; ++asked) EXPECT_EQ(commands(host, unit, path), 5u);
  EXPECT_EQ(commands(host, unit, path), 1000u);
  table(1001);
  EXPECT_EQ(commands(host, unit, path), 1001u) << "told once, it is read again";
  copy.write("/proc/diskstats", "");
  EXPECT_EQ(commands(host, unit, path), 5u) << "a device that the table lacks has its own file";
}

}  // namespace
}  // namespace tavrenix::test
