#include "tests/linux/fake_device_mapper.hpp"

#include <cerrno>
#include <utility>

namespace tavrenix::test {

namespace {

std::string statusLine(const FakeDeviceMapper::Map& map) {
  const auto table = sys::parseMultipathTable(map.table.line);
  if (!table) return {};
  std::string line = "2 0 0 0 " + std::to_string(table->groups.size()) + " 1";
  std::size_t number = 0;
  for (const auto& group : table->groups) {
    ++number;
    line += map.disabledGroups.contains(number) ? " D" : number == 1 ? " A" : " E";
    line += " 0 " + std::to_string(group.paths.size()) + " 0";
    for (const auto& path : group.paths) {
      line += ' ' + path.device.text() + (map.failed.contains(path.device) ? " F 1" : " A 0");
    }
  }
  return line + ' ';
}

}  // namespace

FakeDeviceMapper::Map& FakeDeviceMapper::add(sys::DeviceNumber device, const std::string& name,
                                             const std::string& uuid, const std::string& line) {
  Map& map = maps[device];
  map.name = name;
  map.uuid = uuid;
  map.table = {0, 16384, "multipath", line};
  return map;
}

int FakeDeviceMapper::takeFault(const std::string& name) {
  const auto taken = faults.extract(name);
  return taken ? taken.mapped() : 0;
}

sys::Answer<std::vector<sys::ListedMap>> FakeDeviceMapper::list() {
  const std::lock_guard lock(mutex);
  if (listStatus != 0) ++failedLists;
  if (listStatus != 0) return {listStatus, {}};
  sys::Answer<std::vector<sys::ListedMap>> listed;
  for (const auto& [device, map] : maps) {
    listed.value.push_back({device, map.name, tellsUuids ? map.uuid : "", map.event});
  }
  return listed;
}

sys::Answer<sys::MapLines> FakeDeviceMapper::read(sys::DeviceNumber device, sys::Lines which) {
  const std::lock_guard lock(mutex);
  const auto found = maps.find(device);
  if (found == maps.end()) return {-ENXIO, {}};
  const Map& map = found->second;
  sys::MapLines lines{map.name,      map.uuid,      map.suspended, map.readOnly,
                      map.hasLoaded, map.openCount, map.event,     {}};
  sys::Target target = map.table;
  if (which == sys::Lines::kStatus) target.line = statusLine(map);
  if (which == sys::Lines::kInactiveTable) target.line = map.loaded;
  const bool there = which != sys::Lines::kInactiveTable || map.hasLoaded;
  if (there && !target.type.empty()) lines.targets.push_back(target);
  return {0, lines};
}

int FakeDeviceMapper::change(sys::DeviceNumber device, const std::string& call, const char* fault,
                             const std::function<int(Map&)>& how) {
  calls.push_back(call);
  const auto found = maps.find(device);
  if (found == maps.end()) return -ENXIO;
  const int status = takeFault(fault);
  return status != 0 ? status : how(found->second);
}

int FakeDeviceMapper::load(sys::DeviceNumber device, const sys::Target& target, bool readOnly) {
  return change(device, "load " + target.line, "load", [&](Map& map) {
    auto table = sys::parseMultipathTable(target.line);
    const bool same = target.start == map.table.start && target.length == map.table.length &&
                      readOnly == map.readOnly;
    if (!table || !same) return -EINVAL;
    for (auto& group : table->groups) {
      for (auto& path : group.paths) {
        if (clampsRepeats && !path.arguments.empty()) path.arguments[0] = "1";
      }
    }
    map.loaded = sys::formatMultipathTable(*table) + ' ';
    map.hasLoaded = true;
    return 0;
  });
}

int FakeDeviceMapper::resume(sys::DeviceNumber device) {
  return change(device, "resume", "interrupt", [&](Map& map) {
    const int status = takeFault("resume");
    map.suspended = status != 0;
    // The kernel throws a table away that it cannot put in force.
    const bool swaps = std::exchange(map.hasLoaded, false) && status == 0;
    if (!swaps) return status;
    map.table.line = takeFault("swap") != 0 ? "0 0 1 1 round-robin 0 0 0 " : map.loaded;
    map.failed.clear();
    map.disabledGroups.clear();
    ++map.event;
    return 0;
  });
}

int FakeDeviceMapper::clear(sys::DeviceNumber device) {
  return change(device, "clear", "clear", [](Map& map) {
    map.hasLoaded = false;
    return 0;
  });
}

int FakeDeviceMapper::message(sys::DeviceNumber device, const std::string& text) {
  return change(device, text, "message", [&](Map& map) {
    if (map.suspended) return -EBUSY;
    const std::string verb = text.substr(0, text.find(' '));
    const std::string argument = text.substr(verb.size() + 1);
    if (verb == "disable_group") {
      map.disabledGroups.insert(std::stoul(argument));
      return 0;
    }
    const auto path = sys::parseDeviceNumber(argument);
    if (!path || map.table.line.find(' ' + argument + ' ') == std::string::npos) return -EINVAL;
    if (verb == "fail_path") map.failed.insert(*path);
    if (verb == "reinstate_path") map.failed.erase(*path);
    ++map.event;
    return 0;
  });
}

}  // namespace tavrenix::test
