// Storage in memory for tests and benchmarks.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "host/memory/memory_host.hpp"
#include "runtime/values.hpp"

namespace tavrenix::test {

using Value = ob::Ref<const ob::Object>;

Value text(std::string_view utf8);
Value number(std::int64_t value);
Value flag(bool value);
Value data(std::initializer_list<std::uint8_t> bytes);
ob::Ref<const ob::Dictionary> dictionary(
    std::initializer_list<std::pair<std::string_view, Value>> pairs);

// Sets one property of the entry. A null value removes it.
void setProperty(memory::MemoryHost& host, EntryID entry, std::string_view name, Value value);

// Changes the generation to a number that this process has not seen, so that the library scans.
void touch(memory::MemoryHost& host);

// The number of units of a storage array, and of their parts. The functions below return the entry
// ID of each part.
struct Shape {
  std::uint64_t units = 2;
  std::uint64_t paths = 3;    // a unit
  std::uint64_t volumes = 1;  // a unit; leaves below its whole disk
};
EntryID unitID(std::uint64_t unit);
EntryID pathID(std::uint64_t unit, std::uint64_t path);
EntryID wholeDiskID(std::uint64_t unit);
EntryID volumeID(std::uint64_t unit, std::uint64_t volume);
// Adds the units and parts that the host does not have, and then changes the generation. Units use
// round robin with a batch count of 16. Paths are active optimized, over two host ports. All have
// statistics.
void addStorage(memory::MemoryHost& host, const Shape& shape);
// Returns the bytes of the identifier that addStorage gives the unit.
std::vector<std::uint8_t> unitIdentifier(std::uint64_t unit);

}  // namespace tavrenix::test
