#include "linux/registry/linux_details.hpp"

#include <algorithm>
#include <cerrno>

#include "linux/registry/selectors.hpp"
#include "linux/topology/ports.hpp"
#include "runtime/byte_text.hpp"
#include "runtime/values.hpp"

namespace tavrenix::sys {

namespace {

using Value = ob::Ref<const ob::Object>;

Value detailText(std::string_view text) {
  return text.empty() ? nullptr : Value(ob::String::make(ob::printable(text)));
}

Value fileValue(const FileText& file) {
  return detailText(trim(file.text));
}

Value booleanValue(bool value) {
  return ob::Ref<const ob::Boolean>::retain(ob::Boolean::of(value));
}

Value numberValue(std::uint64_t number) {
  return ob::Number::make(number);
}

// The SCSI core writes its counters as "0x1f".
Value counterValue(const FileText& file) {
  std::string_view text = trim(file.text);
  if (text.starts_with("0x")) text.remove_prefix(2);
  const auto number = parseNumber(text, 16);
  if (!number) return nullptr;
  return numberValue(*number);
}

// The block layer writes the reads and the writes that are under way as two numbers.
Value inFlightValue(const FileText& file) {
  std::string_view text = file.text;
  const auto reads = parseNumber(trim(takeWord(text)));
  const auto writes = parseNumber(trim(takeWord(text)));
  if (!reads || !writes) return nullptr;
  return numberValue(*reads + *writes);
}

Value groupStates(const MultipathStatus& status) {
  ob::Array::Values states;
  for (const auto& group : status.groups) {
    states.push_back(ob::String::make(group.state == 'A'   ? "active"
                                      : group.state == 'D' ? "disabled"
                                                           : "enabled"));
  }
  return ob::Array::make(std::move(states));
}

void addTable(ob::DictionaryBuilder& details, const MapLines& lines) {
  constexpr std::uint64_t kSectorBytes = 512;
  std::uint64_t sectors = 0;
  for (const Target& target : lines.targets) sectors += target.length;
  details.add(keys::kMPIOLogicalUnitDetailSizeKey, numberValue(sectors * kSectorBytes));
  const auto table = tableOf(lines);
  if (!table) return;
  const bool queues = std::ranges::find(table->features, kQueueFeature) != table->features.end();
  details.add(keys::kMPIOLogicalUnitDetailSelectorKey, detailText(commonSelector(*table)));
  details.add(keys::kMPIOLogicalUnitDetailQueueingKey, booleanValue(queues));
  if (!table->handler.empty()) {
    details.add(keys::kMPIOLogicalUnitDetailHardwareHandlerKey, detailText(table->handler.front()));
  }
}

// Adds what the driver's status of the unit says of the path.
void addDriverState(ob::DictionaryBuilder& details, const MultipathStatus& status,
                    DeviceNumber device) {
  std::uint64_t group = 0;
  for (const auto& each : status.groups) {
    ++group;
    const auto path = std::ranges::find(each.paths, device, &StatusPath::device);
    if (path == each.paths.end()) continue;
    details.add(keys::kMPIOLogicalUnitPathDetailGroupKey, numberValue(group));
    details.add(keys::kMPIOLogicalUnitPathDetailDriverStateKey,
                detailText(path->used ? "active" : "failed"));
    details.add(keys::kMPIOLogicalUnitPathDetailFailureCountKey, numberValue(path->failures));
    return;
  }
}

std::string textOf(const ScsiAddress& address) {
  return std::to_string(address.host) + ':' + std::to_string(address.channel) + ':' +
         std::to_string(address.target) + ':' + std::to_string(address.lun);
}

}  // namespace

ob::Ref<const ob::Dictionary> LinuxDetails::ofLogicalUnit(EntryID id) {
  if (keyOf(id).kind != Kind::kUnit || !machine_.exists(id)) return nullptr;
  const DeviceNumber device = keyOf(id).device();
  const auto table = machine_.port().read(device, Lines::kTable);
  if (table.status != 0 || !isMultipathUuid(table.value.uuid)) return nullptr;
  ob::DictionaryBuilder details(10);
  details.add(keys::kMPIOLogicalUnitDetailDeviceKey,
              detailText("dm-" + std::to_string(device.minor)));
  details.add(keys::kMPIOLogicalUnitDetailMapNameKey, detailText(table.value.name));
  details.add(keys::kMPIOLogicalUnitDetailWWIDKey,
              detailText(std::string_view(table.value.uuid).substr(kMultipathUuidPrefix.size())));
  details.add(keys::kMPIOLogicalUnitDetailSuspendedKey, booleanValue(table.value.suspended));
  details.add(keys::kMPIOLogicalUnitDetailOpenCountKey,
              ob::Number::make(std::int64_t{table.value.openCount}));
  addTable(details, table.value);
  if (const auto status = machine_.status(id)) {
    details.add(keys::kMPIOLogicalUnitDetailGroupStatesKey, groupStates(*status));
  }
  return details.build();
}

ob::Ref<const ob::Dictionary> LinuxDetails::ofPath(EntryID unit, EntryID path) {
  const auto place = machine_.place(path);
  if (!place) return nullptr;
  const DeviceNumber device = keyOf(path).device();
  const std::string folder = place->device + '/';
  const auto texts = machine_.files().readTogether({folder + "state", folder + "access_state",
                                                    folder + "ioerr_cnt", folder + "iotmo_cnt",
                                                    folderOf(keyOf(path)) + "/inflight"});
  ob::DictionaryBuilder details(13);
  details.add(keys::kMPIOLogicalUnitPathDetailDeviceKey, detailText(place->name));
  details.add(keys::kMPIOLogicalUnitPathDetailDeviceNumberKey, detailText(device.text()));
  details.add(keys::kMPIOLogicalUnitPathDetailDeviceStateKey, fileValue(texts[0]));
  details.add(keys::kMPIOLogicalUnitPathDetailAccessStateKey, fileValue(texts[1]));
  details.add(keys::kMPIOLogicalUnitPathDetailErrorCountKey, counterValue(texts[2]));
  details.add(keys::kMPIOLogicalUnitPathDetailTimeoutCountKey, counterValue(texts[3]));
  details.add(keys::kMPIOLogicalUnitPathDetailInFlightKey, inFlightValue(texts[4]));
  if (place->address) {
    details.add(keys::kMPIOLogicalUnitPathDetailAddressKey, detailText(textOf(*place->address)));
  }
  if (const auto host = machine_.hostOf(path)) {
    details.add(keys::kMPIOLogicalUnitPathDetailHostPortKey,
                detailText(textOfPort(machine_.portIdentifierOfHost(*host))));
  }
  details.add(keys::kMPIOLogicalUnitPathDetailTargetPortKey,
              detailText(targetPortOf(machine_.files(), place->device)));
  const auto status = unit == 0 ? nullptr : machine_.status(unit);
  if (status) addDriverState(details, *status, device);
  return details.build();
}

// Root of a container may lack CAP_SYS_ADMIN, or the right to open the driver's device.
bool LinuxDetails::mayAsk() {
  if (!isRoot_) return false;
  const int status = machine_.units().status;
  return status != -EACCES && status != -EPERM;
}

ob::Ref<const ob::Dictionary> LinuxDetails::ofHost() {
  ob::DictionaryBuilder details(4);
  // A module with parameters, like this one, is in /sys/module even if it is built in.
  const bool isPresent = machine_.files().exists("/sys/module/dm_multipath");
  details.add(keys::kMPIOHostDetailBackingKey, ob::String::make("linux"));
  details.add(keys::kMPIOHostDetailDriverPresentKey, booleanValue(isPresent));
  details.add(keys::kMPIOHostDetailPermittedKey, booleanValue(mayAsk()));
  details.add(keys::kMPIOHostDetailKernelReleaseKey,
              fileValue(machine_.files().read("/proc/sys/kernel/osrelease")));
  return details.build();
}

}  // namespace tavrenix::sys
