// The registry over recorded machines: the contract of the seam, and what each entry says.
#include <gmock/gmock.h>

#include <fstream>

#include "model/entry.hpp"
#include "model/registry_names.hpp"
#include "tests/linux/recorded_machine.hpp"
#include "tests/support/registry_contract.hpp"

namespace tavrenix::test {
namespace {

using sys::Kind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

struct RecordedBacking {
  MPIODeviceRegistry& registry() { return machine.registry(); }
  EntryID unit() const { return machine.unit(1); }
  EntryID absent() const { return machine.unit(1) ^ (std::uint64_t{1} << 40); }
  std::size_t openHandles() { return machine.registry().openHandles(); }

  RecordedMachine machine{"volumes"};
};
INSTANTIATE_TYPED_TEST_SUITE_P(Recorded, RegistryContract, RecordedBacking);

std::string described(RecordedMachine& machine, EntryID medium) {
  const ScopedHandle entry(machine.registry(), machine.registry().findServiceByEntryID(medium));
  const auto disk = machine.host.disks().describe(entry.get()).value_or(DiskDescription{});
  return text(disk.volumeName.get()) + ", " + text(disk.bsdName.get()) + ", " +
         text(disk.mediaSize.get());
}

// A line for the entry and for each that stands below it; a unit's paths, and the host above each,
// stand before its media.
std::string tree(RecordedMachine& machine, EntryID id, const std::string& indent = {}) {
  const auto [kind, number] = sys::nameOf(id);
  std::string lines = indent + std::to_string(number >> 20) + ':' +
                      std::to_string(number % 1048576) + ' ' + machine.says(id);
  if (kind == Kind::kMedium) lines += ' ' + described(machine, id);
  lines += '\n';
  if (kind == Kind::kPath || kind == Kind::kUnit) {
    for (const EntryID above : machine.relatives(id, kIterateParents)) {
      lines += tree(machine, above, indent + "  ");
    }
  }
  if (kind == Kind::kUnit || kind == Kind::kMedium) {
    for (const EntryID below : machine.relatives(id, 0)) {
      lines += tree(machine, below, indent + "  ");
    }
  }
  return lines;
}

TEST(LinuxRegistry, EveryEntrySaysWhatTheKernelSays) {
  for (const std::string name : {"states", "volumes"}) {
    RecordedMachine machine(name);
    std::string lines;
    for (const EntryID unit : machine.ofClass(registry::kLogicalUnitClass)) {
      lines += tree(machine, unit);
    }
    std::ifstream file(RECORDED_MACHINES "/" + name + ".tree");
    EXPECT_EQ(lines, std::string(std::istreambuf_iterator<char>(file), {}));
  }
}

TEST(LinuxRegistry, UnitsAreFoundByClassAndFromAfar) {
  RecordedMachine machine("volumes");
  EXPECT_EQ(machine.ofClass(registry::kPathClass).size(), 8u);
  EXPECT_EQ(machine.ofClass(registry::kMediaClass).size(), 6u);  // maps, a partition, a volume
  machine.port.tellsUuids = false;                               // as older kernels
  EXPECT_EQ(machine.ofClass(registry::kLogicalUnitClass).size(), 4u);
  const auto above = machine.relatives(machine.medium(4), kIterateParents | kIterateRecursively);
  EXPECT_THAT(above, ElementsAre(machine.medium(1), machine.unit(1), machine.path(16),
                                 machine.path(80), testing::_, testing::_));
  EXPECT_THAT(
      machine.relatives(above.at(4), 0),
      UnorderedElementsAre(machine.path(0), machine.path(16), machine.path(32), machine.path(48)));
  EXPECT_FALSE(machine.host.disks().describe(0));
  machine.map(0).table.line = "0 0 1 1 historical-service-time 2 1 1 1 0 8:0";
  EXPECT_THAT(machine.says(machine.unit(0)), StartsWith("{Logical Unit Alias: mpatha, "));
}

TEST(LinuxRegistry, TheHostsPortIsFoundAboveThePath) {
  struct Row {
    const char *file, *content, *identifier;
  };
  // The file that is written stays; a name that is not set is passed over.
  const Row rows[] = {
      {"iscsi_host/host0/hwaddress", "02:00", "30323A3030"},
      {"iscsi_host/host0/initiatorname", "(null)", "30323A3030"},
      {"iscsi_host/host0/initiatorname", "iqn.a", "69716E2E61"},
      {"fc_host/host0/port_name", "0xffffffffffffffff", "69716E2E61"},
      {"fc_host/host0/port_name", "0x5001438022e50a4c", "5001438022E50A4C"},
  };
  RecordedMachine machine("states");
  const ScopedHandle path(machine.registry(),
                          machine.registry().findServiceByEntryID(machine.path(0)));
  for (const auto& row : rows) {
    machine.write(std::string("/sys/class/") + row.file, std::string(row.content) + '\n');
    const auto found = machine.registry().searchProperty(path.get(), registry::kServicePlane,
                                                         registry::kControllerCharacteristics, 3);
    EXPECT_EQ(text(found.get()),
              "{Unique SCSI Port Identifier: " + std::string(row.identifier) + '}')
        << row.file << ": " << row.content;
  }
}

TEST(LinuxRegistry, WhoAsksAboutManyDevicesAsksOnceForAll) {
  RecordedMachine machine("states", {.pause = std::chrono::hours(1)});
  const EntryID last = machine.path(112);
  for (std::uint32_t number = 0; number < 4; ++number) {
    EXPECT_TRUE(machine.has(machine.unit(number)));
    EXPECT_TRUE(machine.has(machine.path(16 * number)));
  }
  machine.remove("/sys/dev/block/8:112");
  EXPECT_TRUE(machine.has(last)) << "read with the eighth";
  EXPECT_THAT(machine.relatives(machine.unit(3), kIterateParents), ElementsAre(machine.path(48)));
  EXPECT_FALSE(machine.has(last)) << "noticed since";
}

TEST(LinuxRegistry, DevicesGoAndOthersTakeTheirNumbers) {
  RecordedMachine machine("states");
  const EntryID old = machine.path(0);
  std::filesystem::create_symlink("8:16", machine.root + "/sys/dev/block/next");
  std::filesystem::rename(machine.root + "/sys/dev/block/next",
                          machine.root + "/sys/dev/block/8:0");
  EXPECT_FALSE(machine.has(old));
  EXPECT_TRUE(machine.has(machine.path(0)));
  machine.remove("/sys/dev/block/8:0");
  EXPECT_THAT(machine.says(machine.unit(0)), HasSubstr("Vendor Identification: Linux"));
  machine.remove("/sys/dev/block/8:64");
  EXPECT_THAT(machine.relatives(machine.unit(0), kIterateParents), IsEmpty());
  EXPECT_THAT(machine.says(machine.unit(0)),
              HasSubstr("Logical Unit Alias: mpatha, Logical Unit Unique Identifier: "
                        "33333330000007D0, Peripheral Device Type: 0}"));
  machine.map(0).table.line = "0 0 0 0 ";
  EXPECT_EQ(machine.ofClass(registry::kLogicalUnitClass).size(), 4u);
}

TEST(LinuxRegistry, WhatDevicesSayOfThemselvesIsMadeHarmless) {
  RecordedMachine machine("states");
  std::string inquiry(96, '\0');
  inquiry.replace(8, 24, "EV\x1b[IL  ../../../../etc\xff\n");
  machine.write("/sys/block/sda/device/inquiry", inquiry);
  machine.map(0).name = "a\x1b[31m";
  EXPECT_THAT(machine.says(machine.unit(0)), HasSubstr("Alias: a?[31m,"));
  EXPECT_THAT(
      machine.says(machine.unit(0)),
      HasSubstr("Product Identification: ../../../../etc?, Vendor Identification: EV?[IL}"));
}

TEST(LinuxRegistry, TellsWhenTheDriverCannotBeAsked) {
  RecordedMachine machine("states");
  machine.port.listStatus = -EACCES;
  const auto [status, iterator] =
      machine.registry().findServicesByClass(registry::kLogicalUnitClass);
  EXPECT_EQ(status, -EACCES);
  EXPECT_EQ(iterator, 0u);
}

}  // namespace
}  // namespace tavrenix::test
