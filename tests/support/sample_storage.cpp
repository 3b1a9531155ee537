#include "tests/support/sample_storage.hpp"

#include <atomic>

#include "host/registry_names.hpp"

namespace tavrenix::test {

Value text(std::string_view utf8) {
  return ob::String::make(utf8);
}
Value number(std::int64_t value) {
  return ob::Number::make(value);
}
Value flag(bool value) {
  return ob::Ref<const ob::Boolean>::retain(ob::Boolean::of(value));
}
Value data(std::initializer_list<std::uint8_t> content) {
  return ob::Data::make(std::vector<std::uint8_t>(content));
}
ob::Ref<const ob::Dictionary> dictionary(
    std::initializer_list<std::pair<std::string_view, Value>> pairs) {
  ob::DictionaryBuilder builder(pairs.size());
  for (const auto& [key, value] : pairs) builder.add(*ob::String::make(key), value);
  return builder.build();
}

void setProperty(memory::MemoryHost& host, EntryID entry, std::string_view name, Value value) {
  auto pairs = host.registry().properties(entry)->pairs();
  const auto key = ob::String::make(name);
  value ? pairs.set(key, std::move(value)) : static_cast<void>(pairs.erase(*key));
  host.registry().replaceProperties(entry, ob::Dictionary::make(std::move(pairs)));
}

void touch(memory::MemoryHost& host) {
  static std::atomic<std::uint32_t> generation{0};
  host.tunable().setGeneration(++generation);
}

EntryID unitID(std::uint64_t unit) {
  return 0x1'0000'0000 + unit;
}
EntryID pathID(std::uint64_t unit, std::uint64_t path) {
  return 0x2'0000'0000 + unit * 0x1000 + path;
}
EntryID wholeDiskID(std::uint64_t unit) {
  return 0x4000'0000'0000 + unit * 0x1000;
}
EntryID volumeID(std::uint64_t unit, std::uint64_t volume) {
  return wholeDiskID(unit) + 1 + volume;
}

std::vector<std::uint8_t> unitIdentifier(std::uint64_t unit) {
  std::vector<std::uint8_t> identifier{0x60, 0x0A, 0x0B, 0x80, 0, 0, 0, 0};
  for (int shift = 56; shift >= 0; shift -= 8)
    identifier.push_back(static_cast<std::uint8_t>(unit >> shift));
  return identifier;
}

void addStorage(memory::MemoryHost& host, const Shape& shape) {
  constexpr EntryID kPorts = 10;  // two host ports: 10 and 11
  // Values that all entries share, as they are immutable: benchmarks have 100,000 units.
  const Value maker = text("MAKER"), product = text("ARRAY"), roundRobin = number(16),
              disk = number(0);
  const Value protocol = dictionary({{"Physical Interconnect", text("Fibre Channel Interface")}});
  const auto wholeDisk = dictionary({{"Leaf", flag(false)}, {"Content", text("Table")}});
  const auto volume = dictionary({{"Leaf", flag(true)}, {"Content", text("Data")}});
  const auto add = [&](EntryID id, std::string_view className, const std::vector<EntryID>& parents,
                       const ob::Ref<const ob::Dictionary>& properties) {
    host.registry().addEntry(id, std::string(className), parents, properties);
  };
  for (std::uint8_t port = 0; port < 2; ++port) {
    const Value own = dictionary({{"Unique SCSI Port Identifier", data({0x50, 0x01, port})}});
    add(kPorts + port, "KsSCSIHost", {}, dictionary({{"Controller Characteristics", own}}));
  }
  for (std::uint64_t unit = 0; unit < shape.units; ++unit) {
    const std::string number = std::to_string(unit);
    std::vector<EntryID> paths;
    for (std::uint64_t path = 0; path < shape.paths; ++path) {
      paths.push_back(pathID(unit, path));
      const Value identifier =
          data({static_cast<std::uint8_t>(path >> 8), static_cast<std::uint8_t>(path)});
      add(paths.back(), registry::kPathClass, {kPorts + path % 2},
          dictionary({{"Logical Unit Path Identifier", identifier},
                      {"Vendor Identification", maker},
                      {"Product Identification", product},
                      {"Protocol Characteristics", protocol}}));
      host.tunable().setPathStatistics(paths.back(), {10 + path, 20 + path, 30 + path, 0});
    }
    add(unitID(unit), registry::kLogicalUnitClass, paths,
        dictionary({{"Logical Unit Unique Identifier", ob::Data::make(unitIdentifier(unit))},
                    {"Logical Unit Alias", text("unit " + number)},
                    {"Vendor Identification", maker},
                    {"Product Identification", product},
                    {"Load Balancing Algorithm", text("Modified Round Robin")},
                    {"Batch Count", roundRobin},
                    {"Peripheral Device Type", disk}}));
    host.tunable().setLogicalUnitStatistics(unitID(unit), {100, 200, 300});
    add(wholeDiskID(unit), registry::kMediaClass, {unitID(unit)}, wholeDisk);
    for (std::uint64_t at = 0; at < shape.volumes; ++at) {
      add(volumeID(unit, at), registry::kMediaClass, {wholeDiskID(unit)}, volume);
      const std::string device = "disk" + number + "s" + std::to_string(at + 1);
      host.disks().set(volumeID(unit, at),
                       {.volumeName = ob::String::make("Volume " + std::to_string(at)),
                        .bsdName = ob::String::make(device),
                        .mediaSize = ob::Number::make(std::int64_t{1'000'000'000})});
    }
  }
  touch(host);
}

}  // namespace tavrenix::test
