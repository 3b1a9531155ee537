#include "cli/columns.hpp"

#include <tavrenix/mpio.h>

#include <cstdint>
#include <string_view>

#include "cli/text.hpp"

namespace tavrenix::cli {

namespace {

std::optional<std::string> plainText(ObDictionaryRef properties, ObStringRef key) {
  return asciiText(ObDictionaryGetValue(properties, key));
}

// These names differ from the words that --algorithm takes. Both are fixed.
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

// A path that does not say whether it is enabled counts as enabled.
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

std::optional<std::string> volumeSize(ObDictionaryRef properties, ObStringRef key) {
  std::int64_t bytes = 0;
  const auto value = static_cast<ObNumberRef>(ObDictionaryGetValue(properties, key));
  if (!ObNumberGetInt64(value, &bytes)) return std::nullopt;
  return formatVolumeSize(bytes);
}

// Header, blanks before it, blanks before its values, width, key, shown when absent, converter.

const Column unitTable[] = {
    {"Alias", 1, 1, 16, &kMPIOLogicalUnitAliasKey, "No Alias", plainText},
    {"Vendor", 1, 1, 16, &kMPIOLogicalUnitVendorIDKey, "(NULL)", plainText},
    {"Product", 1, 1, 16, &kMPIOLogicalUnitProductIDKey, "", plainText},
    {"LUN Identifier", 1, 1, 35, &kMPIOLogicalUnitIdentifierKey, "", plainText},
    {"Algorithm", 1, 1, 22, &kMPIOLogicalUnitAlgorithmKey, "", algorithmName},
};

const Column pathTable[] = {
    {"Access State", 4, 4, 20, &kMPIOLogicalUnitPathStateKey, "", accessState},
    {"Path Identifier", 1, 1, 30, &kMPIOLogicalUnitPathIdentifierKey, "", plainText},
    {"Interface", 1, 1, 16, &kMPIOLogicalUnitPathInterconnectKey, "", interconnectName},
};

const Column volumeTable[] = {
    {"BSD Name", 4, 4, 15, &kMPIOLogicalUnitVolumeMountPointKey, "", plainText},
    {"Name", 1, 1, 40, &kMPIOLogicalUnitVolumeNameKey, "", plainText},
    // Sizes start one blank to the left of their header. Scripts count on it.
    {"Size", 1, 0, 32, &kMPIOLogicalUnitVolumeSizeKey, "", volumeSize},
};

void appendField(std::string& line, std::size_t gap, std::size_t width, std::string_view text) {
  text = text.substr(0, width);
  line.append(gap, ' ').append(text).append(width - text.size(), ' ');
}

}  // namespace

const std::span<const Column> unitColumns = unitTable;
const std::span<const Column> pathColumns = pathTable;
const std::span<const Column> volumeColumns = volumeTable;

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
