#include "tests/soak/truth.hpp"

#include <algorithm>

#include "library/call.hpp"
#include "model/registry_names.hpp"
#include "tests/library/owned.hpp"

namespace tavrenix::soak {

using test::at;
using test::Owned;
using test::textUnder;

namespace {

std::string joined(std::vector<std::string> words) {
  std::sort(words.begin(), words.end());  // the library promises no order
  std::string text;
  for (const auto& word : words) text += "\n    " + word;
  return text;
}

// ---- the host's side ----

std::string hexUnder(const Json& properties, const char* key) {
  return properties.at(key).at("$data").get<std::string>();
}

std::string counters(const Json& statistics) {
  const auto sent = statistics.at("sent").get<std::uint64_t>();
  const auto received = statistics.at("received").get<std::uint64_t>();
  return std::to_string(sent) + "+" + std::to_string(received) + "=" +
         std::to_string(sent + received) + "/" +
         std::to_string(statistics.at("commands").get<std::uint64_t>());
}

std::string_view stateText(int state) {
  switch (state & 0x0F) {
    case 0:
      return "Active Optimized";
    case 1:
      return "Active Non-Optimized";
    case 2:
      return "Standby";
    default:
      return "Unavailable";
  }
}

std::string truthOfPath(const Json& image, const Json& path) {
  const int state = path.at("statistics").at("state").get<int>();
  const Json& port = entryOf(image, path.at("parents").at(0).get<EntryID>());
  const Json& properties = path.at("properties");
  return hexUnder(properties, "Logical Unit Path Identifier") + " [" +
         std::string(stateText(state)) + "] " + ((state & 0x80) == 0 ? "enabled " : "disabled ") +
         properties.at("Protocol Characteristics").at("Physical Interconnect").get<std::string>() +
         " " +
         hexUnder(port.at("properties").at("Controller Characteristics"),
                  "Unique SCSI Port Identifier") +
         " " + counters(path.at("statistics")) + " state " + std::to_string(state);
}

std::string truthOfUnit(const Json& image, const Json& unit) {
  const Json& properties = unit.at("properties");
  const auto named = properties.at("Load Balancing Algorithm").get<std::string>();
  const bool roundRobin = named == "Modified Round Robin";
  // The count is read for round robin alone; whatever is not known shows as least bytes.
  const auto count = roundRobin ? properties.at("Batch Count").get<std::uint64_t>() : 0;
  const std::string algorithm = roundRobin                     ? "Round Robin"
                                : named == "Least Queue Depth" ? named
                                                               : "Least Bytes";
  std::vector<std::string> parts;
  for (const Json& path : unit.at("parents"))
    parts.push_back("path " + truthOfPath(image, entryOf(image, path.get<EntryID>())));
  for (const Json* medium : entriesOf(image, registry::kMediaClass)) {
    if (medium->at("parents").at(0) != unit.at("id")) continue;
    const Json& disk = medium->at("disk");
    parts.push_back("volume " + disk.at("volumeName").get<std::string>() + " " +
                    disk.at("bsdName").get<std::string>() + " " +
                    std::to_string(disk.at("mediaSize").get<std::uint64_t>()));
  }
  return hexUnder(properties, "Logical Unit Unique Identifier") + " \"" +
         properties.at("Logical Unit Alias").get<std::string>() + "\" " +
         properties.at("Vendor Identification").get<std::string>() + "/" +
         properties.at("Product Identification").get<std::string>() + " Logical Unit Algorithm " +
         algorithm + " " + std::to_string(count) + " " + counters(unit.at("statistics")) +
         joined(std::move(parts));
}

// ---- the library's side ----

std::string numberText(ObDictionaryRef dictionary, ObStringRef key) {
  std::uint64_t value = 0;
  const auto number = static_cast<ObNumberRef>(ObDictionaryGetValue(dictionary, key));
  return ObNumberGetUInt64(number, &value) ? std::to_string(value) : "<none>";
}

std::string dataText(ObDictionaryRef dictionary, ObStringRef key) {
  const auto* data =
      dynamic_cast<const ob::Data*>(ob::fromC<ob::Object>(ObDictionaryGetValue(dictionary, key)));
  if (data == nullptr) return "<none>";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : data->bytes()) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

std::string references(ObTypeRef handle, std::uint32_t expected) {
  const std::uint32_t held = ob::fromC<ob::Object>(handle)->retainCount();
  return held == expected ? "" : " with " + std::to_string(held) + " references";
}

std::string shownPath(MPIOLogicalUnitRef unit, MPIOLogicalUnitPathRef path) {
  const Owned<ObDictionaryRef> properties(MPIOLogicalUnitPathCopyProperties(path));
  const Owned<ObDictionaryRef> statistics(MPIOLogicalUnitPathCopyStatistics(path));
  const Owned<MPIOLogicalUnitRef> itsUnit(MPIOLogicalUnitPathCopyLogicalUnit(path));
  const ObDictionaryRef shown = properties.get();
  const ObDictionaryRef counted = statistics.get();
  const bool enabled =
      ObDictionaryGetValue(shown, kMPIOLogicalUnitPathEnabledKey) == kObBooleanTrue;
  return textUnder(shown, kMPIOLogicalUnitPathIdentifierKey) + " [" +
         textUnder(shown, kMPIOLogicalUnitPathStateKey) + "] " +
         (enabled ? "enabled " : "disabled ") +
         textUnder(shown, kMPIOLogicalUnitPathInterconnectKey) + " " +
         dataText(shown, kMPIOLogicalUnitPathHostPortIdentifierKey) + " " +
         numberText(counted, kMPIOLogicalUnitPathStatisticsBytesSentKey) + "+" +
         numberText(counted, kMPIOLogicalUnitPathStatisticsBytesReceivedKey) + "=" +
         numberText(counted, kMPIOLogicalUnitPathStatisticsTotalBytesKey) + "/" +
         numberText(counted, kMPIOLogicalUnitPathStatisticsTotalCommandsKey) + " state " +
         numberText(counted, kMPIOLogicalUnitPathStatisticsPathStateKey) +
         (itsUnit.get() == unit ? "" : " of another unit") +
         references(path, 3);  // those of the manager, of the unit and of the array
}

std::string shownUnit(MPIOLogicalUnitRef unit, std::vector<std::string> parts) {
  const Owned<ObDictionaryRef> properties(MPIOLogicalUnitCopyProperties(unit));
  const Owned<ObDictionaryRef> statistics(MPIOLogicalUnitCopyStatistics(unit));
  const ObDictionaryRef shown = properties.get();
  const ObDictionaryRef counted = statistics.get();
  const auto volumes =
      static_cast<ObArrayRef>(ObDictionaryGetValue(shown, kMPIOLogicalUnitVolumesKey));
  for (std::size_t i = 0; i < ObArrayGetCount(volumes); ++i) {
    const auto volume = static_cast<ObDictionaryRef>(ObArrayGetValueAtIndex(volumes, i));
    parts.push_back("volume " + textUnder(volume, kMPIOLogicalUnitVolumeNameKey) + " " +
                    textUnder(volume, kMPIOLogicalUnitVolumeMountPointKey) + " " +
                    numberText(volume, kMPIOLogicalUnitVolumeSizeKey));
  }
  return textUnder(shown, kMPIOLogicalUnitIdentifierKey) + " \"" +
         textUnder(shown, kMPIOLogicalUnitAliasKey) + "\" " +
         textUnder(shown, kMPIOLogicalUnitVendorIDKey) + "/" +
         textUnder(shown, kMPIOLogicalUnitProductIDKey) + " " +
         textUnder(shown, kMPIOLogicalUnitAlgorithmKey) + " " +
         numberText(shown, kMPIOLogicalUnitBatchCountKey) + " " +
         numberText(counted, kMPIOLogicalUnitStatisticsBytesSentKey) + "+" +
         numberText(counted, kMPIOLogicalUnitStatisticsBytesReceivedKey) + "=" +
         numberText(counted, kMPIOLogicalUnitStatisticsTotalBytesKey) + "/" +
         numberText(counted, kMPIOLogicalUnitStatisticsTotalCommandsKey) +
         references(unit, 2) +  // those of the manager and of the array
         joined(std::move(parts));
}

}  // namespace

Shown truthOf(const Json& image) {
  Shown truth;
  for (const Json* unit : entriesOf(image, registry::kLogicalUnitClass)) {
    if (unit->at("properties").at("Peripheral Device Type") != 0) continue;  // no storage
    truth[unit->at("id").get<EntryID>()] = truthOfUnit(image, *unit);
    for (const Json& parent : unit->at("parents")) {
      const auto id = parent.get<EntryID>();
      truth[id] = truthOfPath(image, entryOf(image, id));
    }
  }
  return truth;
}

Shown shownByLibrary(memory::MemoryRegistry& registry) {
  Shown shown;
  const Owned<ObArrayRef> units(MPIOCopyLogicalUnits());
  for (std::size_t i = 0; i < ObArrayGetCount(units.get()); ++i) {
    const auto unit = at<MPIOLogicalUnitRef>(units, i);
    const EntryID unitID = modelOf<MPIOLogicalUnit>(unit)->serviceEntryID();
    std::vector<std::string> parts;
    const Owned<ObArrayRef> paths(MPIOLogicalUnitCopyPaths(unit));
    for (std::size_t j = 0; j < ObArrayGetCount(paths.get()); ++j) {
      const auto path = at<MPIOLogicalUnitPathRef>(paths, j);
      const EntryID id = modelOf<MPIOLogicalUnitPath>(path)->serviceEntryID();
      shown[id] = shownPath(unit, path);
      parts.push_back("path " + shown[id]);
      const ScopedHandle entry(registry, registry.findServiceByEntryID(id));
      const Owned<MPIOLogicalUnitPathRef> found(MPIOCopyLogicalUnitPathForService(entry.get()));
      if (found.get() != path) shown[id] += " not found by its entry";
    }
    shown[unitID] = shownUnit(unit, std::move(parts));
    const ScopedHandle entry(registry, registry.findServiceByEntryID(unitID));
    const Owned<MPIOLogicalUnitRef> found(MPIOCopyLogicalUnitForService(entry.get()));
    if (found.get() != unit) shown[unitID] += " not found by its entry";
  }
  return shown;
}

}  // namespace tavrenix::soak
