// Storage in memory to test and measure on.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "model/memory/host.hpp"
#include "runtime/values.hpp"

namespace tavrenix::test {

using Value = ob::Ref<const ob::Object>;

Value text(std::string_view utf8);
Value number(std::int64_t value);
Value flag(bool value);
Value data(std::initializer_list<std::uint8_t> bytes);
ob::Ref<const ob::Dictionary> dictionary(
    std::initializer_list<std::pair<std::string_view, Value>> pairs);
// What a test reads most: the string under key, or "<none>".
std::string textUnder(const ob::Dictionary* dictionary, const ob::String& key);
// The signed number under key, or -999.
std::int64_t numberUnder(const ob::Dictionary* dictionary, const ob::String& key);

// The entry's properties with one more, or one replaced; a null value takes it away.
void setProperty(memory::MemoryHost& host, EntryID entry, std::string_view name, Value value);

// Moves the generation to a number that this process has not seen, so that the next scan runs.
void touch(memory::MemoryHost& host);

// Units of a storage array: entry IDs follow from the position.
struct Shape {
  std::uint64_t units = 2;
  std::uint64_t paths = 3;    // a unit
  std::uint64_t volumes = 1;  // a unit; leaves below its whole disk
};
EntryID unitID(std::uint64_t unit);
EntryID pathID(std::uint64_t unit, std::uint64_t path);
EntryID wholeDiskID(std::uint64_t unit);
EntryID volumeID(std::uint64_t unit, std::uint64_t volume);
// Fills the host with units that use round robin with a batch count of 16, active optimized paths
// over two host ports, and statistics; then moves the generation.
void addStorage(memory::MemoryHost& host, const Shape& shape);
// The identifier bytes that addStorage gives the unit.
std::vector<std::uint8_t> unitIdentifier(std::uint64_t unit);

}  // namespace tavrenix::test
