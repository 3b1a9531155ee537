// The driver's tunable over recorded machines: counters, states and the generation.
#include <gtest/gtest.h>

#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

using sys::Kind;

template <class Record>
struct Read {
  int status = -1;
  Record record{};
  std::size_t length = sizeof(Record);
};

template <class Record>
Read<Record> read(RecordedMachine& machine, std::uint32_t type, EntryID unit, EntryID path = 0) {
  const SCSIMPIOStatisticsRequest request{
      .requestType = type, .logicalUnitEntryID = unit, .pathEntryID = path};
  Read<Record> answer;
  answer.status = machine.host.tunable().sysctlbyname(kStatisticsTunable, &answer.record,
                                                      &answer.length, &request, sizeof request);
  return answer;
}

std::uint32_t generation(RecordedMachine& machine) {
  return read<std::uint32_t>(machine, kConfigurationGeneration, 0).record;
}

int stateOf(RecordedMachine& machine, sys::DeviceNumber unit, sys::DeviceNumber path) {
  const auto answer = read<SCSIPathStatistics>(
      machine, kPathStatistics, machine.id(Kind::kUnit, unit), machine.id(Kind::kPath, path));
  EXPECT_EQ(answer.status, 0);
  return answer.record.state;
}

TEST(LinuxTunable, StatesAreThoseOfTheRecordedMachine) {
  RecordedMachine machine("states");
  EXPECT_EQ(stateOf(machine, {254, 0}, {8, 0}), 0x00);
  EXPECT_EQ(stateOf(machine, {254, 0}, {8, 64}), 0x01);  // of the second host
  EXPECT_EQ(stateOf(machine, {254, 1}, {8, 80}), 0x81);  // failed in the driver alone
  EXPECT_EQ(stateOf(machine, {254, 2}, {8, 32}), 0x03);  // its disk is offline
  EXPECT_EQ(stateOf(machine, {254, 3}, {8, 0}), 0x80);   // no path of that unit
}

TEST(LinuxTunable, CountersAreReadAtEachCallAndPassFourGigabytes) {
  const CopiedMachine copy("states");
  RecordedMachine machine(copy.root.string());
  const EntryID unit = machine.id(Kind::kUnit, {254, 0});
  const EntryID path = machine.id(Kind::kPath, {8, 0});
  copy.write("/sys/block/sda/stat", "3 0 9000000 0 4 0 10000000 0 0 0 0 0 0 0 0 5 0\n");
  const auto first = read<SCSIPathStatistics>(machine, kPathStatistics, unit, path);
  ASSERT_EQ(first.status, 0);
  EXPECT_EQ(first.length, 25u);
  // By value (+): the fields of the packed record have no alignment to refer to them by.
  EXPECT_EQ(+first.record.bytesReceived, 4608000000u);
  EXPECT_EQ(+first.record.bytesSent, 5120000000u);
  EXPECT_EQ(+first.record.commandsProcessed, 12u);
  copy.write("/sys/block/sda/stat", "4 0 9000008 0 4 0 10000000 0 0 0 0 0 0 0 0 5 0\n");
  EXPECT_EQ(+read<SCSIPathStatistics>(machine, kPathStatistics, unit, path).record.bytesReceived,
            4608004096u);
  copy.write("/sys/block/dm-0/stat", "1 0 1 0 1 0 2 0 0 0 0\n");
  const auto whole = read<SCSILogicalUnitStatistics>(machine, kLogicalUnitStatistics, unit);
  EXPECT_EQ(+whole.record.bytesSent, 1024u);
  EXPECT_EQ(+whole.record.commandsProcessed, 2u);
}

TEST(LinuxTunable, RefusesWhatItDoesNotKnow) {
  RecordedMachine machine("states");
  const EntryID unit = machine.id(Kind::kUnit, {254, 0});
  EXPECT_EQ(read<SCSILogicalUnitStatistics>(machine, kLogicalUnitStatistics, unit ^ 1).status, -1);
  EXPECT_EQ(read<SCSIPathStatistics>(machine, kPathStatistics, unit, unit).status, -1);
  EXPECT_EQ(read<SCSIPathStatistics>(machine, 3, unit).status, -1);

  SCSIMPIOStatisticsRequest request{.logicalUnitEntryID = unit};
  SCSILogicalUnitStatistics record;
  std::size_t length = sizeof record - 1;
  auto& tunable = machine.host.tunable();
  EXPECT_EQ(tunable.sysctlbyname(kStatisticsTunable, &record, &length, &request, 24), -1);
  length = sizeof record;
  EXPECT_EQ(tunable.sysctlbyname(kStatisticsTunable, &record, &length, &request, 23), -1);
  EXPECT_EQ(tunable.sysctlbyname("debug.other", &record, &length, &request, 24), -1);
  request.signature = 1;
  EXPECT_EQ(tunable.sysctlbyname(kStatisticsTunable, &record, &length, &request, 24), -1);
}

TEST(LinuxTunable, TheGenerationMovesWithEventsAndMaps) {
  const CopiedMachine copy("states");
  RecordedMachine machine(copy.root.string());
  const std::uint32_t first = generation(machine);
  EXPECT_NE(first, 0u);
  EXPECT_EQ(generation(machine), first);
  machine.port.maps[{254, 2}].event += 1;
  const std::uint32_t afterMapEvent = generation(machine);
  EXPECT_NE(afterMapEvent, first);
  copy.write("/sys/kernel/uevent_seqnum", "991\n");
  const std::uint32_t afterEvent = generation(machine);
  EXPECT_NE(afterEvent, afterMapEvent);
  machine.port.maps.erase({254, 3});
  EXPECT_NE(generation(machine), afterEvent);
  machine.port.maps.clear();
  EXPECT_NE(generation(machine), 0u);  // the driver is there, with no maps
}

TEST(LinuxTunable, TheGenerationIsZeroWithoutTheDriverOrTheRight) {
  RecordedMachine machine("states");
  machine.port.listStatus = -ENXIO;
  EXPECT_EQ(generation(machine), 0u);
  RecordedMachine ordinary("states", 1000);
  EXPECT_EQ(generation(ordinary), 0u);
}

}  // namespace
}  // namespace tavrenix::test
