// The registry over recorded machines: the contract of the seam, and what each entry says.
#include <gmock/gmock.h>

#include "linux/tree.hpp"
#include "model/registry_names.hpp"
#include "runtime/values.hpp"
#include "tests/linux/recorded_machine.hpp"
#include "tests/support/registry_contract.hpp"

namespace tavrenix::test {
namespace {

using sys::Kind;

struct RecordedBacking {
  MPIODeviceRegistry& registry() { return machine.registry(); }
  EntryID unit() const { return machine.id(Kind::kUnit, {254, 1}); }
  EntryID absent() const { return machine.id(Kind::kUnit, {254, 1}) ^ (std::uint64_t{1} << 40); }
  std::size_t openHandles() { return machine.registry().openHandles(); }

  RecordedMachine machine{"volumes"};
};
INSTANTIATE_TYPED_TEST_SUITE_P(Recorded, RegistryContract, RecordedBacking);

std::vector<EntryID> ofClass(RecordedMachine& machine, std::string_view className) {
  std::vector<EntryID> found;
  const auto [status, iterator] = machine.registry().findServicesByClass(className);
  EXPECT_EQ(status, kSuccess);
  forEachEntry(machine.registry(), iterator, [&](RegistryHandle entry) {
    found.push_back(machine.registry().getEntryID(entry).value);
  });
  return found;
}

TEST(LinuxRegistry, UnitsAreTheMultipathMaps) {
  RecordedMachine machine("volumes");
  EXPECT_THAT(
      ofClass(machine, registry::kLogicalUnitClass),
      testing::ElementsAre(machine.id(Kind::kUnit, {254, 0}), machine.id(Kind::kUnit, {254, 1}),
                           machine.id(Kind::kUnit, {254, 2}), machine.id(Kind::kUnit, {254, 3})));
  EXPECT_EQ(ofClass(machine, registry::kPathClass).size(), 8u);
  EXPECT_EQ(ofClass(machine, registry::kMediaClass).size(), 6u);  // maps, a partition, a volume
  machine.port.tellsUuids = false;                                // as older kernels
  EXPECT_EQ(ofClass(machine, registry::kLogicalUnitClass).size(), 4u);
}

TEST(LinuxRegistry, WhoAsksAboutManyDevicesAsksOnceForAll) {
  const CopiedMachine copy("states");
  RecordedMachine machine(copy.root.string());
  sys::LinuxHost host(sys::HostFiles(copy.root.string()), machine.port, machine.daemon, 0,
                      std::chrono::hours(1));
  const auto isThere = [](sys::LinuxHost& asked, EntryID id) {
    const RegistryHandle entry = asked.registry().findServiceByEntryID(id);
    if (entry != 0) asked.registry().release(entry);
    return entry != 0;
  };
  const EntryID last = machine.id(Kind::kPath, {8, 112});
  for (std::uint32_t number = 0; number < 4; ++number) {
    EXPECT_TRUE(isThere(host, machine.id(Kind::kUnit, {254, number})));
    EXPECT_TRUE(isThere(host, machine.id(Kind::kPath, {8, 16 * number})));
  }
  std::filesystem::remove(copy.root / "sys/dev/block/8:112");
  EXPECT_TRUE(isThere(host, last)) << "read with the eighth";
  EXPECT_FALSE(isThere(machine.host, last));
}

TEST(LinuxRegistry, AUnitSaysWhoItIs) {
  RecordedMachine machine("volumes");
  const auto unit = machine.properties(machine.id(Kind::kUnit, {254, 0}));
  EXPECT_EQ(hexUnder(*unit, registry::kUniqueIdentifier), "6001405000000A100000000000000000");
  EXPECT_EQ(textUnder(*unit, registry::kAlias), "mpatha");
  EXPECT_EQ(textUnder(*unit, registry::kVendor), "LIO-ORG");
  EXPECT_EQ(textUnder(*unit, registry::kLoadBalancingAlgorithm), "Least Bytes");
  EXPECT_EQ(unit->value(registry::kBatchCount), nullptr);  // of round robin alone
  EXPECT_EQ(unit->valueAs<ob::Number>(registry::kPeripheralDeviceType)->asInt64(), 0);
}

TEST(LinuxRegistry, AlgorithmsAreTheSelectors) {
  RecordedMachine machine("states");
  const char* const algorithms[] = {"Modified Round Robin", "Least Queue Depth", "Least Bytes",
                                    "Least Bytes"};
  for (std::uint32_t minor = 0; minor < 4; ++minor) {
    const auto unit = machine.properties(machine.id(Kind::kUnit, {254, minor}));
    EXPECT_EQ(textUnder(*unit, registry::kLoadBalancingAlgorithm), algorithms[minor]);
  }
  const EntryID first = machine.id(Kind::kUnit, {254, 0});
  EXPECT_EQ(machine.properties(first)->valueAs<ob::Number>(registry::kBatchCount)->asInt64(), 1);
  machine.port.maps[{254, 0}].table.line = "0 0 1 1 historical-service-time 2 1 1 1 0 8:0";
  EXPECT_EQ(textUnder(*machine.properties(first), registry::kLoadBalancingAlgorithm), "(none)");
}

TEST(LinuxRegistry, PathsStandInTheOrderOfTheTable) {
  RecordedMachine machine("states");
  const EntryID first = machine.id(Kind::kPath, {8, 0});
  EXPECT_THAT(machine.relatives(machine.id(Kind::kUnit, {254, 0}), kIterateParents),
              testing::ElementsAre(first, machine.id(Kind::kPath, {8, 64})));
  const auto path = machine.properties(first);
  EXPECT_EQ(hexUnder(*path, registry::kPathIdentifier), "000F00F0000F0000");
  EXPECT_EQ(textUnder(*path, registry::kVendor), "Linux");
  EXPECT_EQ(textUnder(*path, registry::kProduct), "scsi_debug");
  const auto* protocol = path->valueAs<ob::Dictionary>(registry::kProtocolCharacteristics);
  ASSERT_NE(protocol, nullptr);
  EXPECT_EQ(textUnder(*protocol, registry::kPhysicalInterconnect), "scsi_debug");
}

TEST(LinuxRegistry, AHostStandsAboveItsPathsAndTheyBelowIt) {
  RecordedMachine machine("states");
  const EntryID path = machine.id(Kind::kPath, {8, 0});
  const auto above = machine.relatives(path, kIterateParents);
  ASSERT_EQ(above.size(), 1u);
  EXPECT_THAT(machine.relatives(above.front(), 0),
              testing::UnorderedElementsAre(path, machine.id(Kind::kPath, {8, 16}),
                                            machine.id(Kind::kPath, {8, 32}),
                                            machine.id(Kind::kPath, {8, 48})));
}

TEST(LinuxRegistry, TheHostsPortIsFoundAboveThePath) {
  // A name that is not set is passed over.
  const std::pair<const char*, std::pair<const char*, const char*>> names[] = {
      {"iscsi_host/host0/hwaddress", {"02:00", "30323A3030"}},
      {"iscsi_host/host0/initiatorname", {"(null)", "30323A3030"}},
      {"iscsi_host/host0/initiatorname", {"iqn.a", "69716E2E61"}},
      {"fc_host/host0/port_name", {"0xffffffffffffffff", "69716E2E61"}},
      {"fc_host/host0/port_name", {"0x5001438022e50a4c", "5001438022E50A4C"}}};
  const CopiedMachine copy("states");
  RecordedMachine machine(copy.root.string());
  const ScopedHandle path(machine.registry(),
                          machine.registry().findServiceByEntryID(machine.id(Kind::kPath, {8, 0})));
  for (const auto& [file, name] : names) {
    SCOPED_TRACE(file + std::string(": ") + name.first);
    copy.write(std::string("/sys/class/") + file, std::string(name.first) + '\n');
    const auto found = machine.registry().searchProperty(path.get(), registry::kServicePlane,
                                                         registry::kControllerCharacteristics, 3);
    ASSERT_NE(ob::as<ob::Dictionary>(found.get()), nullptr);
    EXPECT_EQ(hexUnder(*ob::as<ob::Dictionary>(found.get()), registry::kSCSIPortIdentifier),
              name.second);
  }
}

TEST(LinuxRegistry, MediaLieOnMediaDownToTheLeaves) {
  RecordedMachine machine("volumes");
  const auto leaf = [&](EntryID medium) {
    return machine.properties(medium)->valueAs<ob::Boolean>(registry::kLeaf)->value();
  };
  const EntryID whole = machine.id(Kind::kMedium, {254, 1});
  const EntryID partition = machine.id(Kind::kMedium, {254, 4});
  EXPECT_THAT(machine.relatives(machine.id(Kind::kUnit, {254, 1}), kIterateRecursively),
              testing::ElementsAre(whole, partition));
  EXPECT_FALSE(leaf(whole));
  EXPECT_TRUE(leaf(partition));
  EXPECT_TRUE(leaf(machine.id(Kind::kMedium, {254, 0})));
  EXPECT_THAT(machine.relatives(partition, kIterateParents | kIterateRecursively),
              testing::IsSupersetOf(
                  {whole, machine.id(Kind::kUnit, {254, 1}), machine.id(Kind::kPath, {8, 16})}));
}

// Label, name and size of a medium.
std::string described(RecordedMachine& machine, sys::DeviceNumber device) {
  const ScopedHandle media(machine.registry(), machine.registry().findServiceByEntryID(
                                                   machine.id(Kind::kMedium, device)));
  const auto description = machine.host.disks().describe(media.get());
  if (!description || !description->volumeName) return "(none)";
  return std::string(description->volumeName->view()) + ' ' +
         std::string(description->bsdName->view()) + ' ' +
         std::to_string(description->mediaSize->asUInt64().value());
}

TEST(LinuxDisks, TellLabelsOfWholeUnitsPartitionsAndVolumes) {
  RecordedMachine machine("volumes");
  std::vector<std::string> told;
  for (const std::uint32_t minor : {0U, 4U, 5U, 3U})
    told.push_back(described(machine, {254, minor}));
  EXPECT_THAT(told[0], testing::EndsWith(" mpatha 67108864"));
  EXPECT_THAT(told[1], testing::EndsWith(" mpathb-part1 33554432"));
  EXPECT_THAT(told[2], testing::EndsWith(" group-volume 41943040"));
  EXPECT_EQ(told[3], "(none)");
  EXPECT_FALSE(machine.host.disks().describe(0));
}

TEST(LinuxRegistry, ADeviceThatTookTheNumberOfAnotherIsAnother) {
  const CopiedMachine copy("states");
  RecordedMachine machine(copy.root.string());
  const EntryID old = machine.id(Kind::kPath, {8, 0});
  const auto link = copy.root / "sys/dev/block/8:0";
  std::filesystem::create_symlink("8:16", link.string() + ".next");
  std::filesystem::rename(link.string() + ".next", link);  // another device now bears the number
  EXPECT_EQ(machine.registry().findServiceByEntryID(old), 0u);
  EXPECT_NE(machine.registry().findServiceByEntryID(machine.id(Kind::kPath, {8, 0})), 0u);
}

TEST(LinuxRegistry, PathsThatAreGoneAreNotListedAndTheUnitStays) {
  const CopiedMachine copy("states");
  RecordedMachine machine(copy.root.string());
  const EntryID unit = machine.id(Kind::kUnit, {254, 0});
  for (const auto* path : {"8:0", "8:64"}) {
    std::filesystem::remove(copy.root / "sys/dev/block" / path);
  }
  EXPECT_TRUE(machine.relatives(unit, kIterateParents).empty());
  const auto properties = machine.properties(unit);
  EXPECT_EQ(textUnder(*properties, registry::kAlias), "mpatha");
  EXPECT_EQ(properties->valueAs<ob::Number>(registry::kPeripheralDeviceType)->asInt64(), 0);
  machine.port.maps[{254, 0}].table.line = "0 0 0 0 ";
  EXPECT_EQ(ofClass(machine, registry::kLogicalUnitClass).size(), 4u);
}

TEST(LinuxRegistry, WhatDevicesSayOfThemselvesIsMadeHarmless) {
  const CopiedMachine copy("states");
  std::string inquiry(96, '\0');
  inquiry.replace(8, 24, "EV\x1b[IL  ../../../../etc\xff\n");
  copy.write("/sys/block/sda/device/inquiry", inquiry);
  RecordedMachine machine(copy.root.string());
  machine.port.maps[{254, 0}].name = "a\x1b[31m";
  const auto unit = machine.properties(machine.id(Kind::kUnit, {254, 0}));
  EXPECT_EQ(textUnder(*unit, registry::kVendor), "EV?[IL");
  EXPECT_EQ(textUnder(*unit, registry::kProduct), "../../../../etc?");
  EXPECT_EQ(textUnder(*unit, registry::kAlias), "a?[31m");
}

TEST(LinuxRegistry, TellsWhenTheDriverCannotBeAsked) {
  RecordedMachine machine("states");
  machine.port.listStatus = -EACCES;
  const auto [status, iterator] =
      machine.registry().findServicesByClass(registry::kLogicalUnitClass);
  EXPECT_EQ(status, -EACCES);
  EXPECT_EQ(iterator, 0u);
}

TEST(LinuxRegistryDeathTest, AHandleReleasedTwiceEndsTheProcess) {
  RecordedMachine machine("states");
  const RegistryHandle entry =
      machine.registry().findServiceByEntryID(machine.id(Kind::kUnit, {254, 0}));
  machine.registry().release(entry);
  EXPECT_DEATH(machine.registry().release(entry), "released twice");
}

}  // namespace
}  // namespace tavrenix::test
