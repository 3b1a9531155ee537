// The driver's tunable over recorded machines: counters, states and the generation.
#include <gtest/gtest.h>

#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

// The record, where it is told whole.
template <class Record>
std::optional<Record> read(RecordedMachine& machine, std::uint32_t type, EntryID unit,
                           EntryID path = 0) {
  const SCSIMPIOStatisticsRequest request{
      .requestType = type, .logicalUnitEntryID = unit, .pathEntryID = path};
  Record record{};
  std::size_t length = sizeof record;
  const int status = machine.host.tunable().sysctlbyname(kStatisticsTunable, &record, &length,
                                                         &request, sizeof request);
  if (status != 0 || length != sizeof record) return std::nullopt;
  return record;
}

std::optional<std::uint32_t> generation(RecordedMachine& machine) {
  return read<std::uint32_t>(machine, kConfigurationGeneration, 0);
}

std::optional<SCSIPathStatistics> ofPath(RecordedMachine& machine, std::uint32_t unit,
                                         std::uint32_t path) {
  return read<SCSIPathStatistics>(machine, kPathStatistics, machine.unit(unit), machine.path(path));
}

TEST(LinuxTunable, StatesAreThoseOfTheRecordedMachine) {
  RecordedMachine machine("states");
  machine.map(1).failed = {{8, 80}};
  EXPECT_EQ(ofPath(machine, 0, 0)->state, 0x00);
  EXPECT_EQ(ofPath(machine, 0, 64)->state, 0x01);  // of the second host
  EXPECT_EQ(ofPath(machine, 1, 80)->state, 0x81);  // failed in the driver alone
  EXPECT_EQ(ofPath(machine, 2, 32)->state, 0x03);  // its disk is offline
  EXPECT_EQ(ofPath(machine, 3, 0)->state, 0x80);   // no path of that unit
}

TEST(LinuxTunable, CountersAreReadAtEachCallAndPassFourGigabytes) {
  RecordedMachine machine("states");
  machine.write("/sys/block/sda/stat", "3 0 9000000 0 4 0 10000000 0 0 0 0 0 0 0 0 5 0\n");
  const auto first = ofPath(machine, 0, 0);
  // By value (+): the fields of the packed record have no alignment to refer to them by.
  EXPECT_EQ(+first->bytesReceived, 4608000000u);
  EXPECT_EQ(+first->bytesSent, 5120000000u);
  EXPECT_EQ(+first->commandsProcessed, 12u);
  machine.write("/sys/block/sda/stat", "4 0 9000008 0 4 0 10000000 0 0 0 0 0 0 0 0 5 0\n");
  EXPECT_EQ(+ofPath(machine, 0, 0)->bytesReceived, 4608004096u);
  machine.write("/sys/block/dm-0/stat", "1 0 1 0 1 0 2 0 0 0 0\n");
  const auto whole =
      read<SCSILogicalUnitStatistics>(machine, kLogicalUnitStatistics, machine.unit(0));
  EXPECT_EQ(+whole->bytesSent, 1024u);
  EXPECT_EQ(+whole->commandsProcessed, 2u);
}

TEST(LinuxTunable, WhoAsksAboutManyIsServedFromOneTableAndNobodyTwice) {
  RecordedMachine machine("states", {.pause = std::chrono::hours(1)});
  const auto commands = [&] { return +ofPath(machine, 0, 0)->commandsProcessed; };
  machine.write("/proc/diskstats", "8 0 sda 1000 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
  machine.write("/sys/block/sda/stat", "5 0 0 0 0 0 0 0 0 0 0\n");
  for (int asked = 0; asked < 8; ++asked) EXPECT_EQ(commands(), 5u);
  EXPECT_EQ(commands(), 1000u);
  machine.write("/proc/diskstats", "8 0 sda 1001 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
  EXPECT_EQ(commands(), 1001u) << "told once, it is read again";
  machine.write("/proc/diskstats", "");
  EXPECT_EQ(commands(), 5u) << "a device that the table lacks has its own file";
}

TEST(LinuxTunable, RefusesWhatItDoesNotKnow) {
  RecordedMachine machine("states");
  const EntryID unit = machine.unit(0);
  EXPECT_FALSE(read<SCSILogicalUnitStatistics>(machine, kLogicalUnitStatistics, unit ^ 1));
  EXPECT_FALSE(read<SCSIPathStatistics>(machine, kPathStatistics, unit, unit));
  EXPECT_FALSE(read<SCSIPathStatistics>(machine, 3, unit));

  SCSIMPIOStatisticsRequest request{.logicalUnitEntryID = unit};
  const auto ask = [&](const char* name, std::size_t length, std::size_t asked) {
    SCSILogicalUnitStatistics record;
    return machine.host.tunable().sysctlbyname(name, &record, &length, &request, asked);
  };
  constexpr std::size_t kRecord = sizeof(SCSILogicalUnitStatistics);
  EXPECT_EQ(ask(kStatisticsTunable, kRecord, 24), 0);
  EXPECT_EQ(ask(kStatisticsTunable, kRecord - 1, 24), -1);
  EXPECT_EQ(ask(kStatisticsTunable, kRecord, 23), -1);
  EXPECT_EQ(ask("debug.other", kRecord, 24), -1);
  request.signature = 1;
  EXPECT_EQ(ask(kStatisticsTunable, kRecord, 24), -1);
}

TEST(LinuxTunable, TheGenerationMovesWithEventsAndMaps) {
  RecordedMachine machine("states");
  std::set<std::optional<std::uint32_t>> seen{0, generation(machine)};
  EXPECT_TRUE(seen.contains(generation(machine)));
  machine.map(2).event += 1;
  EXPECT_TRUE(seen.insert(generation(machine)).second);
  machine.write("/sys/kernel/uevent_seqnum", "991\n");
  EXPECT_TRUE(seen.insert(generation(machine)).second);
  machine.port.maps.erase({254, 3});
  EXPECT_TRUE(seen.insert(generation(machine)).second);
  machine.port.maps.clear();
  EXPECT_TRUE(seen.insert(generation(machine)).second) << "the driver is there, with no maps";
  EXPECT_EQ(seen.size(), 6u);
  machine.port.listStatus = -ENXIO;
  EXPECT_EQ(generation(machine), 0u) << "the driver is not there";
  RecordedMachine ordinary("states", {.user = 1000});
  EXPECT_EQ(generation(ordinary), 0u);
}

}  // namespace
}  // namespace tavrenix::test
