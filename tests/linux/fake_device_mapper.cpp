#include "tests/linux/fake_device_mapper.hpp"

#include <cerrno>

namespace tavrenix::test {

using sys::DeviceNumber;

FakeDeviceMapper::Map& FakeDeviceMapper::add(DeviceNumber device, const std::string& name,
                                             const std::string& uuid, const std::string& line) {
  Map& map = maps[device];
  map.name = name;
  map.uuid = uuid;
  map.table = {0, 16384, "multipath", line};
  return map;
}

FakeDeviceMapper::Map* FakeDeviceMapper::find(DeviceNumber device) {
  const auto found = maps.find(device);
  return found == maps.end() ? nullptr : &found->second;
}

int FakeDeviceMapper::fault(const std::string& name) {
  const auto found = faults.find(name);
  if (found == faults.end()) return 0;
  const int status = found->second;
  faults.erase(found);
  return status;
}

sys::Answer<std::vector<sys::ListedMap>> FakeDeviceMapper::list() {
  if (listStatus != 0) return {listStatus, {}};
  sys::Answer<std::vector<sys::ListedMap>> listed;
  for (const auto& [device, map] : maps) {
    listed.value.push_back({device, map.name, tellsUuids ? map.uuid : "", map.event});
  }
  return listed;
}

std::string FakeDeviceMapper::statusLine(const Map& map) const {
  const auto table = sys::parseMultipathTable(map.table.line);
  if (!table) return map.otherStatus;
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

sys::Answer<sys::MapLines> FakeDeviceMapper::read(DeviceNumber device, sys::Lines which) {
  const Map* map = find(device);
  if (map == nullptr) return {-ENXIO, {}};
  sys::MapLines lines{map->name,      map->uuid,      map->suspended, map->readOnly,
                      map->hasLoaded, map->openCount, map->event,     {}};
  sys::Target target = map->table;
  if (which == sys::Lines::kStatus) target.line = statusLine(*map);
  if (which == sys::Lines::kInactiveTable) target.line = map->loaded;
  const bool there = which != sys::Lines::kInactiveTable || map->hasLoaded;
  if (there && !target.type.empty()) lines.targets.push_back(target);
  return {0, lines};
}

int FakeDeviceMapper::load(DeviceNumber device, const sys::Target& target, bool readOnly) {
  calls.push_back("load " + target.line);
  Map* map = find(device);
  if (map == nullptr) return -ENXIO;
  if (const int status = fault("load"); status != 0) return status;
  auto table = sys::parseMultipathTable(target.line);
  const bool same = target.start == map->table.start && target.length == map->table.length &&
                    readOnly == map->readOnly;
  if (!table || !same) return -EINVAL;
  for (auto& group : table->groups) {
    for (auto& path : group.paths) {
      if (clampsRepeats && !path.arguments.empty()) path.arguments[0] = "1";
    }
  }
  map->loaded = sys::formatMultipathTable(*table) + ' ';
  map->hasLoaded = true;
  return 0;
}

int FakeDeviceMapper::resume(DeviceNumber device) {
  calls.emplace_back("resume");
  Map* map = find(device);
  if (map == nullptr) return -ENXIO;
  if (const int status = fault("interrupt"); status != 0) return status;
  if (const int status = fault("resume"); status != 0) {
    map->suspended = true;
    map->hasLoaded = false;  // the kernel throws a table away that it cannot put in force
    return status;
  }
  map->suspended = false;
  if (map->hasLoaded) {
    map->table.line = fault("swap") != 0 ? "0 0 1 1 round-robin 0 0 0 " : map->loaded;
    map->hasLoaded = false;
    map->failed.clear();
    map->disabledGroups.clear();
    ++map->event;
  }
  return 0;
}

int FakeDeviceMapper::clear(DeviceNumber device) {
  calls.emplace_back("clear");
  if (Map* map = find(device)) map->hasLoaded = false;
  return 0;
}

int FakeDeviceMapper::message(DeviceNumber device, const std::string& text) {
  calls.push_back(text);
  Map* map = find(device);
  if (map == nullptr) return -ENXIO;
  if (const int status = fault("message"); status != 0) return status;
  if (map->suspended) return -EBUSY;
  const std::string verb = text.substr(0, text.find(' '));
  const std::string argument = text.substr(verb.size() + 1);
  if (verb == "disable_group") {
    map->disabledGroups.insert(std::stoul(argument));
    return 0;
  }
  const auto path = sys::parseDeviceNumber(argument);
  if (!path || map->table.line.find(' ' + argument + ' ') == std::string::npos) return -EINVAL;
  if (verb == "fail_path") map->failed.insert(*path);
  if (verb == "reinstate_path") map->failed.erase(*path);
  ++map->event;
  return 0;
}

}  // namespace tavrenix::test
