#include "bench/floor.hpp"

#include <benchmark/benchmark.h>

#include <string>

#include "host/registry_names.hpp"
#include "tests/support/sample_storage.hpp"

namespace tavrenix::bench {

namespace {

using test::pathID;
using test::unitID;

int length(std::string_view text) {
  return static_cast<int>(text.size());
}

std::string_view textOf(const ob::Dictionary& properties, const ob::String& name) {
  const auto* value = properties.valueAs<ob::String>(name);
  return value == nullptr ? std::string_view() : value->view();
}

void formatIdentifier(const ob::Data* identifier, char (&text)[256]) {
  text[0] = '\0';
  if (identifier == nullptr) return;
  std::size_t at = 0;
  for (const std::uint8_t byte : identifier->bytes()) {
    at += static_cast<std::size_t>(std::snprintf(text + at, sizeof text - at, "%.2X", byte));
  }
}

}  // namespace

Floor::Floor(memory::MemoryHost& host, std::uint64_t units, std::uint64_t paths) {
  units_.resize(units);
  for (std::uint64_t unit = 0; unit < units; ++unit) {
    Unit& made = units_[unit];
    made.properties = host.registry().properties(unitID(unit)).get();
    for (std::uint64_t path = 0; path < paths; ++path) {
      made.paths.push_back(host.registry().properties(pathID(unit, path)).get());
      made.states.push_back(host.tunable().pathStatistics(pathID(unit, path)).value());
      made.ports.push_back(host.registry().properties(10 + path % 2).get());
    }
    for (const EntryID id : {test::wholeDiskID(unit), test::volumeID(unit, 0)}) {
      const ScopedHandle media(host.registry(), host.registry().findServiceByEntryID(id));
      made.media.push_back({host.registry().properties(id).get(),
                            host.disks().describe(media.get()).value_or(DiskDescription{})});
    }
  }
}

void Floor::readUnit(const Unit& unit, char* row, std::size_t size) const {
  char identifier[256];
  const ob::Dictionary& properties = *unit.properties;
  formatIdentifier(properties.valueAs<ob::Data>(registry::kUniqueIdentifier), identifier);
  const auto alias = textOf(properties, registry::kAlias);
  const auto vendor = textOf(properties, registry::kVendor);
  const auto product = textOf(properties, registry::kProduct);
  const auto algorithm = textOf(properties, registry::kLoadBalancingAlgorithm);
  const auto* count = properties.valueAs<ob::Number>(registry::kBatchCount);
  benchmark::DoNotOptimize(count->bits());
  std::snprintf(row, size, "%3d %-16.*s %-16.*s %-16.*s %-35s %-22.*s\n", 1, length(alias),
                alias.data(), length(vendor), vendor.data(), length(product), product.data(),
                identifier, length(algorithm), algorithm.data());
  for (const Media& media : unit.media) {
    const auto* leaf = media.properties->valueAs<ob::Boolean>(registry::kLeaf);
    const auto content = textOf(*media.properties, registry::kContent);
    benchmark::DoNotOptimize(leaf);
    benchmark::DoNotOptimize(content);
    benchmark::DoNotOptimize(media.description.volumeName.get());
  }
}

void Floor::readPath(const Unit& unit, std::size_t path, char* row, std::size_t size) const {
  char identifier[256];
  const ob::Dictionary& properties = *unit.paths[path];
  formatIdentifier(properties.valueAs<ob::Data>(registry::kPathIdentifier), identifier);
  const auto* protocol = properties.valueAs<ob::Dictionary>(registry::kProtocolCharacteristics);
  const auto interconnect = textOf(*protocol, registry::kPhysicalInterconnect);
  benchmark::DoNotOptimize(textOf(properties, registry::kVendor));
  benchmark::DoNotOptimize(textOf(properties, registry::kProduct));
  const auto* port =
      unit.ports[path]->valueAs<ob::Dictionary>(registry::kControllerCharacteristics);
  benchmark::DoNotOptimize(port->valueAs<ob::Data>(registry::kSCSIPortIdentifier));
  const char* state =
      (unit.states[path].state & kPathStateAccessMask) == 0 ? "Active Optimized" : "";
  std::snprintf(row, size, "    %-20s %-30s %-16.*s\n", state, identifier, length(interconnect),
                interconnect.data());
}

void Floor::scan() const {
  char row[256];
  for (const Unit& unit : units_) {
    readUnit(unit, row, sizeof row);
    for (std::size_t path = 0; path < unit.paths.size(); ++path)
      readPath(unit, path, row, sizeof row);
    benchmark::ClobberMemory();
  }
}

void Floor::list(std::FILE* out) const {
  char row[256];
  for (const Unit& unit : units_) {
    readUnit(unit, row, sizeof row);
    std::fputs(row, out);
  }
}

void Floor::info(std::FILE* out) const {
  char row[256];
  for (int round = 0; round < 3; ++round) {
    for (const Unit& unit : units_) {
      readUnit(unit, row, sizeof row);
      benchmark::ClobberMemory();
    }
  }
  std::fputs(row, out);
  const Unit& last = units_.back();
  for (std::size_t path = 0; path < last.paths.size(); ++path) {
    readPath(last, path, row, sizeof row);
    std::fputs(row, out);
  }
}

void Floor::unitProperties(std::uint64_t unit) const {
  char row[256];
  readUnit(units_[unit], row, sizeof row);
  benchmark::ClobberMemory();
}

void Floor::pathProperties(std::uint64_t unit, std::uint64_t path) const {
  char row[256];
  readPath(units_[unit], path, row, sizeof row);
  benchmark::ClobberMemory();
}

}  // namespace tavrenix::bench
