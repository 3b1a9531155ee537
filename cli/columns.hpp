// The columns of the reports. A table is an array of columns; a line of it is made here, as text
// without its newline.
#pragma once

#include <tavrenix/ob.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace tavrenix::cli {

/// The text that a column shows of properties, of any length. Nothing stands for an absent value.
using FieldText = std::optional<std::string> (*)(ObDictionaryRef properties, ObStringRef key);

struct Column {
  const char* header;
  std::size_t headerGap;  // blanks in front of the header
  std::size_t gap;        // blanks in front of a value
  std::size_t width;      // characters; longer texts are cut, shorter ones padded on the right
  const ObStringRef* key;
  const char* absent;  // shown where there is no value
  FieldText text;
};

/// The logical-unit table without its row numbers.
extern const std::span<const Column> unitColumns;
extern const std::span<const Column> pathColumns;
extern const std::span<const Column> volumeColumns;

std::string headerLine(std::span<const Column> columns);
std::string rowLine(std::span<const Column> columns, ObDictionaryRef properties);

}  // namespace tavrenix::cli
