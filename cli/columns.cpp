#include "cli/columns.hpp"

#include <tavrenix/mpio.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "cli/objects.hpp"

namespace tavrenix::cli {

namespace {

std::optional<std::string> plainText(ObDictionaryRef properties, ObStringRef key) {
  return asciiText(ObDictionaryGetValue(properties, key));
}

// Fixed: these names differ from the words that --algorithm takes.
std::optional<std::string> algorithmName(ObDictionaryRef properties, ObStringRef key) {
  const auto value = static_cast<ObStringRef>(ObDictionaryGetValue(properties, key));
  if (ObStringCompare(value, kMPIOLogicalUnitAlgorithmLeastQueueDepth) == 0) {
    return "Least Queue Depth";
  }
  if (ObStringCompare(value, kMPIOLogicalUnitAlgorithmRoundRobin) == 0) {
    return "Modified Round Robin";
  }
  if (ObStringCompare(value, kMPIOLogicalUnitAlgorithmLeastBytes) == 0) return "Least Bytes";
  return std::nullopt;
}

// A path without the key counts as enabled.
std::optional<std::string> accessState(ObDictionaryRef properties, ObStringRef key) {
  const ObTypeRef enabled = ObDictionaryGetValue(properties, kMPIOLogicalUnitPathEnabledKey);
  if (enabled == kObBooleanFalse) return "Disabled";
  return plainText(properties, key);
}

std::optional<std::string> interconnectName(ObDictionaryRef properties, ObStringRef key) {
  std::optional<std::string> name = plainText(properties, key);
  if (name == "Fibre Channel Interface") return "Fibre Channel";
  return name;
}

struct SizeUnit {
  const char* name;
  std::int64_t divisor;
};

// Fixed: the ranges are uneven. 10^9 bytes are the first GB, and 10^12 bytes are the last.
SizeUnit unitFor(std::int64_t bytes) {
  if (bytes <= 999'999'999) return {"MB", 1'000'000};
  if (bytes <= 1'000'000'000'000) return {"GB", 1'000'000'000};
  return {"TB", 1'000'000'000'000};
}

// Returns the size in decimal units, followed by the exact count: "500.0 GB (500000000000 Bytes)".
std::string formatVolumeSize(std::int64_t bytes) {
  const SizeUnit unit = unitFor(bytes);
  char text[32];
  std::snprintf(text, sizeof text, "%6.1f %s (%" PRId64 " Bytes)",
                static_cast<double>(bytes) / static_cast<double>(unit.divisor), unit.name, bytes);
  return text;
}

std::optional<std::string> volumeSize(ObDictionaryRef properties, ObStringRef key) {
  std::int64_t bytes = 0;
  const auto value = static_cast<ObNumberRef>(ObDictionaryGetValue(properties, key));
  if (!ObNumberGetInt64(value, &bytes)) return std::nullopt;
  return formatVolumeSize(bytes);
}

// A row has: the header, the blanks before it, the blanks before a value, the width, the key, the
// text if there is no value, and the function that returns the text of a value.

const Column kUnitTable[] = {
    {"Alias", 1, 1, 16, &kMPIOLogicalUnitAliasKey, "No Alias", plainText},
    {"Vendor", 1, 1, 16, &kMPIOLogicalUnitVendorIDKey, "(NULL)", plainText},
    {"Product", 1, 1, 16, &kMPIOLogicalUnitProductIDKey, "", plainText},
    {"LUN Identifier", 1, 1, 35, &kMPIOLogicalUnitIdentifierKey, "", plainText},
    {"Algorithm", 1, 1, 22, &kMPIOLogicalUnitAlgorithmKey, "", algorithmName},
};

const Column kPathTable[] = {
    {"Access State", 4, 4, 20, &kMPIOLogicalUnitPathStateKey, "", accessState},
    {"Path Identifier", 1, 1, 30, &kMPIOLogicalUnitPathIdentifierKey, "", plainText},
    {"Interface", 1, 1, 16, &kMPIOLogicalUnitPathInterconnectKey, "", interconnectName},
};

const Column kVolumeTable[] = {
    {"BSD Name", 4, 4, 15, &kMPIOLogicalUnitVolumeMountPointKey, "", plainText},
    {"Name", 1, 1, 40, &kMPIOLogicalUnitVolumeNameKey, "", plainText},
    // Fixed: sizes start one blank to the left of their header. Scripts cut columns by position.
    {"Size", 1, 0, 32, &kMPIOLogicalUnitVolumeSizeKey, "", volumeSize},
};

void appendField(std::string& line, std::size_t gap, std::size_t width, std::string_view text) {
  text = text.substr(0, width);
  line.append(gap, ' ').append(text).append(width - text.size(), ' ');
}

}  // namespace

const std::span<const Column> kUnitColumns = kUnitTable;
const std::span<const Column> kPathColumns = kPathTable;
const std::span<const Column> kVolumeColumns = kVolumeTable;

std::string headerLine(std::span<const Column> columns) {
  std::string line;
  for (const Column& column : columns) {
    appendField(line, column.headerGap, column.width, column.header);
  }
  return line;
}

std::string rowLine(std::span<const Column> columns, ObDictionaryRef properties) {
  std::string line;
  for (const Column& column : columns) {
    const auto text = column.text(properties, *column.key);
    appendField(line, column.gap, column.width, text ? std::string_view(*text) : column.absent);
  }
  return line;
}

}  // namespace tavrenix::cli
