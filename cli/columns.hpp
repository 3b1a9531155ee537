// The columns of the reports. A table is an array of columns.
#pragma once

#include <tavrenix/ob.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace tavrenix::cli {

// Returns the text of a column, of any length, or nothing if the value is absent.
using FieldText = std::optional<std::string> (*)(ObDictionaryRef properties, ObStringRef key);

struct Column {
  const char* header;
  std::size_t headerGap;  // blanks before the header
  std::size_t gap;        // blanks before a value
  std::size_t width;      // characters; a longer text is cut, a shorter one padded on the right
  const ObStringRef* key;
  const char* absent;  // shown if there is no value
  FieldText text;
};

// The columns of the three tables. The report adds the row numbers of logical units.
extern const std::span<const Column> kUnitColumns;
extern const std::span<const Column> kPathColumns;
extern const std::span<const Column> kVolumeColumns;

// Return a line of the table, without a newline.
std::string headerLine(std::span<const Column> columns);
std::string rowLine(std::span<const Column> columns, ObDictionaryRef properties);

}  // namespace tavrenix::cli
