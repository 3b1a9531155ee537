#include "tests/support/storage.hpp"

#include <array>
#include <atomic>

#include "model/registry_names.hpp"

namespace tavrenix::test {

namespace {

constexpr EntryID kPorts = 10;  // two host ports: 10 and 11

ob::Ref<const ob::Data> bytes(std::vector<std::uint8_t> content) {
  return ob::Data::make(content);
}

void addPorts(memory::MemoryHost& host) {
  for (std::uint8_t port = 0; port < 2; ++port) {
    host.registry().addEntry(
        kPorts + port, "KsSCSIHost", {},
        dictionary({{"Controller Characteristics",
                     dictionary({{"Unique SCSI Port Identifier", data({0x50, 0x01, port})}})}}));
  }
}

// Values that all paths and units share: values are immutable, and at 100,000 units it matters.
struct Shared {
  Value vendor = text("MAKER");
  Value product = text("ARRAY");
  Value protocol = dictionary({{"Physical Interconnect", text("Fibre Channel Interface")}});
  ob::Ref<const ob::Dictionary> wholeDisk =
      dictionary({{"Leaf", flag(false)}, {"Content", text("Table")}});
  ob::Ref<const ob::Dictionary> volume =
      dictionary({{"Leaf", flag(true)}, {"Content", text("Data")}});
};

void addPath(memory::MemoryHost& host, const Shared& shared, std::uint64_t unit,
             std::uint64_t path) {
  ob::DictionaryBuilder properties(4);
  properties.add(registry::kPathIdentifier,
                 bytes({static_cast<std::uint8_t>(path >> 8), static_cast<std::uint8_t>(path)}));
  properties.add(registry::kVendor, shared.vendor);
  properties.add(registry::kProduct, shared.product);
  properties.add(registry::kProtocolCharacteristics, shared.protocol);
  const EntryID id = pathID(unit, path);
  host.registry().addEntry(id, std::string(registry::kPathClass), {kPorts + path % 2},
                           properties.build());
  host.tunable().setPathStatistics(id, {10 + path, 20 + path, 30 + path, 0});
}

void addMedia(memory::MemoryHost& host, const Shared& shared, std::uint64_t unit,
              std::uint64_t volumes) {
  const std::string media(registry::kMediaClass);
  host.registry().addEntry(wholeDiskID(unit), media, {unitID(unit)}, shared.wholeDisk);
  for (std::uint64_t volume = 0; volume < volumes; ++volume) {
    const EntryID id = volumeID(unit, volume);
    host.registry().addEntry(id, media, {wholeDiskID(unit)}, shared.volume);
    const std::string device = "disk" + std::to_string(unit) + "s" + std::to_string(volume + 1);
    host.disks().set(id, {.volumeName = ob::String::make("Volume " + std::to_string(volume)),
                          .bsdName = ob::String::make(device),
                          .mediaSize = ob::Number::make(std::int64_t{1'000'000'000})});
  }
}

void addUnit(memory::MemoryHost& host, const Shared& shared, std::uint64_t unit,
             const Shape& shape) {
  std::vector<EntryID> parents;
  for (std::uint64_t path = 0; path < shape.paths; ++path) {
    addPath(host, shared, unit, path);
    parents.push_back(pathID(unit, path));
  }
  ob::DictionaryBuilder properties(7);
  properties.add(registry::kUniqueIdentifier, bytes(unitIdentifier(unit)));
  properties.add(registry::kAlias, text("unit " + std::to_string(unit)));
  properties.add(registry::kVendor, shared.vendor);
  properties.add(registry::kProduct, shared.product);
  properties.add(registry::kLoadBalancingAlgorithm,
                 ob::Ref<const ob::String>::retain(&registry::kModifiedRoundRobin));
  properties.add(registry::kBatchCount, number(16));
  properties.add(registry::kPeripheralDeviceType, number(0));
  host.registry().addEntry(unitID(unit), std::string(registry::kLogicalUnitClass), parents,
                           properties.build());
  host.tunable().setLogicalUnitStatistics(unitID(unit), {100, 200, 300});
  addMedia(host, shared, unit, shape.volumes);
}

}  // namespace

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
  return bytes(content);
}

ob::Ref<const ob::Dictionary> dictionary(
    std::initializer_list<std::pair<std::string_view, Value>> pairs) {
  ob::DictionaryBuilder builder(pairs.size());
  for (const auto& [key, value] : pairs) builder.add(*ob::String::make(key), value);
  return builder.build();
}

std::string textUnder(const ob::Dictionary* dictionary, const ob::String& key) {
  const auto* found = dictionary == nullptr ? nullptr : dictionary->valueAs<ob::String>(key);
  return found == nullptr ? "<none>" : std::string(found->view());
}

std::int64_t numberUnder(const ob::Dictionary* dictionary, const ob::String& key) {
  const auto* found = dictionary == nullptr ? nullptr : dictionary->valueAs<ob::Number>(key);
  return found == nullptr ? -999 : found->asInt64().value_or(-999);
}

void setProperty(memory::MemoryHost& host, EntryID entry, std::string_view name, Value value) {
  const auto old = host.registry().properties(entry);
  const auto key = ob::String::make(name);
  auto pairs = old->pairs();
  if (value) {
    pairs.set(key, std::move(value));
  } else {
    pairs.erase(*key);
  }
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
  for (int shift = 56; shift >= 0; shift -= 8) {
    identifier.push_back(static_cast<std::uint8_t>(unit >> shift));
  }
  return identifier;
}

void addStorage(memory::MemoryHost& host, const Shape& shape) {
  addPorts(host);
  const Shared shared;
  for (std::uint64_t unit = 0; unit < shape.units; ++unit) addUnit(host, shared, unit, shape);
  touch(host);
}

}  // namespace tavrenix::test
