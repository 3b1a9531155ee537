// The entries of a Linux machine: recorded machines are compared with an expected text, and changes
// on them with their expected effects.
#include <gmock/gmock.h>

#include "linux/registry/entry_properties.hpp"
#include "tests/linux/recorded_machine.hpp"
#include "tests/support/value_text.hpp"

namespace tavrenix::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string properties(RecordedMachine& machine, EntryID entry) {
  return textOf(copyEntryProperties(machine.registry(), entry).get());
}

bool has(RecordedMachine& machine, EntryID entry) {
  return bool(ScopedHandle(machine.registry(), machine.registry().findServiceByEntryID(entry)));
}

std::string volume(RecordedMachine& machine, EntryID medium) {
  const ScopedHandle entry(machine.registry(), machine.registry().findServiceByEntryID(medium));
  const auto disk = machine.host.disks().describe(entry.get()).value_or(DiskDescription{});
  return textOf(disk.volumeName.get()) + ", " + textOf(disk.bsdName.get()) + ", " +
         textOf(disk.mediaSize.get());
}

// The state byte, the bytes read and written, and the commands of a path.
std::string statistics(RecordedMachine& machine, EntryID unit, EntryID path) {
  const auto record = machine.ask<SCSIPathStatistics>(kPathStatistics, unit, path);
  if (!record) return "none";
  return std::to_string(record->state) + ' ' + std::to_string(record->bytesReceived) + ' ' +
         std::to_string(record->bytesSent) + ' ' + std::to_string(record->commandsProcessed);
}

std::string media(RecordedMachine& machine, EntryID id, const std::string& indent) {
  std::string lines = indent + properties(machine, id) + ' ' + volume(machine, id) + '\n';
  for (const EntryID below : machine.relatives(id, 0)) lines += media(machine, below, indent + " ");
  return lines;
}

// A line for the unit, each of its paths with the host above it, and each medium.
std::string tree(RecordedMachine& machine, EntryID unit) {
  MPIODetails& details = *machine.host.details();
  std::string lines =
      properties(machine, unit) + ' ' + textOf(details.ofLogicalUnit(unit).get()) + '\n';
  for (const EntryID path : machine.relatives(unit, kIterateParents)) {
    lines += "  " + statistics(machine, unit, path) + ' ' + properties(machine, path) + ' ' +
             textOf(details.ofPath(unit, path).get());
    for (const EntryID host : machine.relatives(path, kIterateParents)) {
      lines += ' ' + properties(machine, host);
    }
    lines += '\n';
  }
  return lines + media(machine, machine.relatives(unit, 0).at(0), " ");
}

// A machine with disks, hosts and maps of every kind; see RecordedMachine::write.
TEST(RecordedMachine, SaysWhatItsFilesSay) {
  const std::pair<const char*, const char*> files[] = {
      {"/proc/sys/kernel/osrelease", "6.1.0-18-amd64\n"},
      {"/sys/module/dm_multipath/refcnt", "1\n"},
      {"/sys/class/iscsi_host/host0/initiatorname", "(null)"},
      {"/sys/class/scsi_host/host0/device/session2/iscsi_session/session2/initiatorname", "iqn.s"},
      {"/sys/class/fc_host/host0/port_name", "0xffffffffffffffff"},
      {"/sys/class/fc_host/host1/port_name", "0x5001438022e50a4c"},
      {"/sys/class/scsi_host/host1/proc_name", "ib_srp\n"},
      {"/sys/class/fc_remote_ports/rport-3:0-1/port_name", "0x50060e8000000011\n"},
      {"/sys/class/sas_device/end_device-5/sas_address", "0x5000c50012345679\n"},
      {"/sys/class/iscsi_session/session7/targetname", "iqn.t\n"},
      {"/sys/class/iscsi_session/session7/tpgt", "1\n"},
      // One disk of the first unit has gone, the other says odd things and counts discards.
      {"/sys/block/sda/device/state", "-"},
      {"/sys/block/sda/device/inquiry", "-"},
      {"/sys/block/sda/device/type", "/"},
      {"/sys/block/sde/device/inquiry", ",1234567EV\x1b[IL  ../../../../etc\xff\n"},
      {"/sys/block/sde/device/access_state", "-"},
      {"/sys/block/sde/inflight", "       2       40\n"},
      {"/sys/block/sde/stat", "7 1 8388609 9 5 1 16 3 0 1 2 11 0 8 1 13 4 99\n"},
      // The daemon fails a path whose port is unavailable; one is failed by hand.
      {"/sys/dev/block/8:16", "->../../devices/pci0/host3/rport-3:0-1/3:0:1:5/block/sdb"},
      {"/sys/devices/pci0/host3/rport-3:0-1/3:0:1:5/block/sdb/stat", "1 0 1 0 1 0 1 0 0 0 0"},
      {"/sys/devices/pci0/host3/rport-3:0-1/3:0:1:5/state", "running\n"},
      {"/sys/devices/pci0/host3/rport-3:0-1/3:0:1:5/access_state", "unavailable\n"},
      {"/sys/block/sdf/device/vendor", "own \n"},
      {"/sys/block/sdf/device/access_state", "active/non-optimized\n"},
      {"/sys/block/sdf/device/inquiry", "short"},
      // A number that fills the identifier, and a disk behind a SAS expander.
      {"/sys/dev/block/8:32", "->../../devices/host5/session7/5:0:0:4611967493404098560/block/sdc"},
      {"/sys/dev/block/8:96", "->../../devices/end_device-4/end_device-5/4:0:10000:0/block/sdg"},
      {"/sys/block/sdd/device/access_state", "/"},
      {"/sys/dev/block/8:112", "->../../devices/host1/target1:0:0/1:0:0:2/block/sdh/sdh1"},
      {"/run/udev/data/b254:0",
       "E:ID_FS_USAGE=filesystem\nE:ID_FS_LABEL=x\nE:ID_FS_LABEL_ENC=a\\x20\\x1b[\\xzz\\x4\n"},
      {"/run/udev/data/b254:1", "E:ID_FS_USAGE=raid\nE:ID_FS_LABEL=host:0\n"},
      {"/run/udev/data/b254:2", "E:ID_FS_LABEL=one\nE:ID_FS_LABEL=two\nE:ID_FS_USAGE=filesystem"},
  };
  RecordedMachine machine;
  for (const auto& [file, content] : files) machine.write(file, content);
  machine.map(0).table.line = "1 queue_if_no_path 0 1 1 round-robin 0 2 1 8:0 1 8:64 1 ";
  machine.map(0).suspended = true;
  machine.map(1).uuid = "mpath-8iqn";
  machine.map(1).table.line = "0 1 alua 1 1 io-affinity 0 2 1 8:16 3 8:80 5 ";
  machine.map(1).status = "2 1 5 0 1 1 E 1 7 2 0 8:16 F 12 8:80 F 3";
  machine.map(2).table.line = "0 1 alua 1 1 queue-length 0 2 1 8:32 1 8:96 1 ";
  machine.map(2).uuid = "mpath-3xy";  // no designator after all: the whole text
  machine.map(2).name = "a\x1b[31m";
  machine.map(3).uuid = "mpath-8" + std::string(128, 'q');
  machine.map(3).status = "2 0 0 0 2 1 A 0 1 1 8:48 A 0 9 D 0 1 0 8:112 F 2";
  std::string lines = textOf(machine.host.details()->ofHost().get()) + '\n';
  const auto units = machine.registry().findServicesByClass(registry::kLogicalUnitClass);
  for (const EntryID unit : machine.all(units)) lines += tree(machine, unit);
  std::ifstream file(RECORDED_TREE);
  EXPECT_EQ(lines, std::string(std::istreambuf_iterator<char>(file), {})) << RECORDED_TREE;
}

TEST(RecordedMachine, FollowsItsMapsAndDevices) {
  RecordedMachine machine;
  const auto above = machine.relatives(machine.medium(4), kIterateParents | kIterateRecursively);
  EXPECT_THAT(above, ElementsAre(machine.medium(1), machine.unit(1), machine.path(16),
                                 machine.path(80), testing::_, testing::_));
  EXPECT_THAT(machine.relatives(above.at(4), 0),
              testing::UnorderedElementsAre(machine.path(0), machine.path(16), machine.path(32),
                                            machine.path(48)));
  machine.port.tellsUuids = false;  // as kernels before 5.13
  const auto units = machine.registry().findServicesByClass(registry::kLogicalUnitClass);
  EXPECT_EQ(machine.all(units).size(), 4u);
  const EntryID old = machine.path(0);
  machine.write("/sys/dev/block/8:0", "->8:16");
  EXPECT_FALSE(has(machine, old)) << "another device has its number";
  machine.port.listStatus = -EACCES;
  EXPECT_EQ(machine.registry().findServicesByClass(registry::kLogicalUnitClass).status, -EACCES);
  EXPECT_THAT(textOf(machine.host.details()->ofHost().get()), HasSubstr("Permitted: no"))
      << "to root";
}

TEST(RecordedMachine, IsReadAnewWhenTheKernelNumbersAnEvent) {
  RecordedMachine machine;
  const auto generation = [&] { return machine.ask<std::uint32_t>(kConfigurationGeneration); };
  std::set<std::optional<std::uint32_t>> seen{0, generation()};
  EXPECT_TRUE(seen.contains(generation()));
  machine.write("/sys/kernel/uevent_seqnum", "1\n");
  EXPECT_TRUE(seen.insert(generation()).second);
  const EntryID last = machine.path(112);
  EXPECT_TRUE(has(machine, last));
  machine.write("/sys/dev/block/8:112", "-");
  machine.map(0).name = "renamed";
  machine.map(0).uuid = "mpath-20011aaBB";
  EXPECT_TRUE(has(machine, last)) << "no event, no change";
  EXPECT_THAT(machine.relatives(machine.unit(3), kIterateParents), ElementsAre(machine.path(48)))
      << "the path is read, and so seen to be gone";
  for (const std::string label : {"late", "later"}) {  // than its event
    machine.write("/run/udev/data/b254:0", "E:ID_FS_USAGE=filesystem\nE:ID_FS_LABEL=" + label);
    EXPECT_THAT(volume(machine, machine.medium(0)), testing::StartsWith(label + ','));
  }
  machine.write("/sys/kernel/uevent_seqnum", "2\n");
  EXPECT_FALSE(has(machine, last));
  EXPECT_THAT(properties(machine, machine.unit(0)),
              HasSubstr("Alias: renamed, Logical Unit Unique Identifier: 0011AABB"));
  machine.map(2).event += 1;
  EXPECT_TRUE(seen.insert(generation()).second);
  machine.port.maps.clear();
  EXPECT_TRUE(seen.insert(generation()).second) << "the driver is there, with no maps";
  machine.port.listStatus = -ENXIO;
  EXPECT_EQ(generation(), 0u) << "the driver is not there";
  EXPECT_THAT(textOf(machine.host.details()->ofHost().get()), HasSubstr("Driver Present: no"));
  RecordedMachine ordinary(1000);
  EXPECT_EQ(ordinary.ask<std::uint32_t>(kConfigurationGeneration), 0u);
}

TEST(RecordedMachine, IsReadForManyPathsAtOnceInALook) {
  RecordedMachine machine;
  const auto look = machine.host.beginLook();
  const auto first = [&] { return statistics(machine, machine.unit(0), machine.path(0)); };
  const auto second = [&] { return statistics(machine, machine.unit(0), machine.path(64)); };
  machine.write("/proc/diskstats", "8 0 sda 1000 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
  machine.write("/sys/block/sde/device/access_state", "active/non-optimized\n");
  machine.write("/sys/block/sda/stat", "5 0 0 0 0 0 0 0 0 0 0\n");
  for (int asked = 0; asked < 8; ++asked) EXPECT_EQ(first(), "0 0 0 5");
  EXPECT_EQ(first(), "0 0 0 1000") << "of the table of all disks";
  EXPECT_EQ(first(), "0 0 0 5") << "a line is handed out once";
  machine.write("/sys/block/sde/device/state", "offline\n");
  EXPECT_EQ(second().front(), '1') << "read with the unit's first path";
  EXPECT_EQ(second().front(), '3') << "and handed out once";
}

}  // namespace
}  // namespace tavrenix::test
