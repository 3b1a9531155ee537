// The two drivers of a machine, in memory: a device-mapper whose maps change by loads, resumes and
// messages as the kernel's do, and a multipathd that answers as the test chooses.
#pragma once

#include <atomic>
#include <cerrno>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "linux/kernel/path_daemon.hpp"

namespace tavrenix::test {

class FakeDeviceMapper final : public sys::DeviceMapperPort {
 public:
  struct Map {
    std::string name;
    std::string uuid;
    sys::Target table;
    std::string status;  // the driver's line; if empty, it is made of what follows
    std::set<sys::DeviceNumber> failed;
    std::set<std::size_t> disabledGroups;  // counted from 1
    bool suspended = false;
    bool readOnly = false;
    std::int32_t openCount = 0;
    std::uint32_t event = 0;
    std::optional<std::string> loaded;  // the line of an inactive table
  };

  sys::Answer<sys::ChangeLock> lockChanges() override {
    return {takeFault("lock"), std::make_shared<int>()};
  }

  sys::Answer<std::vector<sys::ListedMap>> list() override {
    const std::lock_guard lock(mutex);
    ++lists;
    before("list");
    if (listStatus != 0) return {listStatus, {}};
    sys::Answer<std::vector<sys::ListedMap>> listed;
    for (const auto& [device, map] : maps) {
      listed.value.push_back({device, map.name, tellsUuids ? map.uuid : "", map.event});
    }
    return listed;
  }

  bool hasChangedSinceList() override { return !tellsChanges; }

  sys::Answer<sys::MapLines> read(sys::DeviceNumber device, sys::Lines which) override {
    before("read");
    const std::lock_guard lock(mutex);
    const auto found = maps.find(device);
    if (found == maps.end()) return {-ENXIO, {}};
    const Map& map = found->second;
    sys::MapLines lines{map.name,         map.uuid,      map.suspended, map.readOnly,
                        bool(map.loaded), map.openCount, map.event,     {}};
    sys::Target target = map.table;
    if (which == sys::Lines::kStatus)
      target.line = map.status.empty() ? statusLine(map) : map.status;
    if (which == sys::Lines::kInactiveTable) target.line = map.loaded.value_or("");
    const bool there = which != sys::Lines::kInactiveTable || map.loaded;
    if (there && !target.type.empty()) lines.targets.push_back(target);
    return {0, lines};
  }

  int load(sys::DeviceNumber device, const sys::Target& target, bool readOnly) override {
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
      return 0;
    });
  }

  int resume(sys::DeviceNumber device) override {
    return change(device, "resume", "interrupt", [&](Map& map) {
      const int status = takeFault("resume");
      map.suspended = status != 0;
      // The kernel discards a table that it cannot put in force.
      const auto loaded = std::exchange(map.loaded, std::nullopt);
      if (!loaded || status != 0) return status;
      map.table.line = *loaded;
      map.failed.clear();
      map.disabledGroups.clear();
      ++map.event;
      return 0;
    });
  }

  int clear(sys::DeviceNumber device) override {
    return change(device, "clear", "clear", [](Map& map) {
      map.loaded.reset();
      return 0;
    });
  }

  int message(sys::DeviceNumber device, const std::string& text) override {
    return change(device, text, "message", [&](Map& map) {
      if (map.suspended) return -EBUSY;
      const std::string verb = text.substr(0, text.find(' '));
      const std::string argument = text.substr(verb.size() + 1);
      const auto path = sys::parseDeviceNumber(argument);
      if (verb == "disable_group") {
        map.disabledGroups.insert(std::stoul(argument));
      } else if (!path || map.table.line.find(' ' + argument + ' ') == std::string::npos) {
        return -EINVAL;
      }
      if (verb == "fail_path") map.failed.insert(*path);
      if (verb == "reinstate_path") map.failed.erase(*path);
      ++map.event;
      return 0;
    });
  }

  std::mutex mutex;  // held by list() and read(), and by a test while other threads call them
  std::map<sys::DeviceNumber, Map> maps;
  std::vector<std::string> calls;  // every change asked for, in order
  int listStatus = 0;
  bool tellsUuids = true;
  bool tellsChanges = false;  // as since kernel 4.13; then the maps stay as they were listed
  bool clampsRepeats = true;  // as the driver does since 4.11
  // The next operation of that name fails: "lock", "load", "resume" (left suspended), "interrupt"
  // (a resume that changes nothing, the loaded table still waits), "message".
  std::map<std::string, int> faults;
  std::atomic<int> lists = 0;  // how often maps were listed
  // Called before each "list" and "read". Set only while no other thread asks.
  std::function<void(const std::string&)> before = [](const std::string&) {};

 private:
  static std::string statusLine(const Map& map) {
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

  int change(sys::DeviceNumber device, const std::string& call, const char* fault,
             const std::function<int(Map&)>& how) {
    calls.push_back(call);
    const auto found = maps.find(device);
    if (found == maps.end()) return -ENXIO;
    const int status = takeFault(fault);
    return status != 0 ? status : how(found->second);
  }

  int takeFault(const std::string& name) {
    const auto taken = faults.extract(name);
    return taken ? taken.mapped() : 0;
  }
};

class FakeDaemon final : public sys::PathDaemon {
 public:
  sys::Answer<sys::DaemonReply> ask(const std::string& command) override {
    return answer ? answer(command) : sys::Answer<sys::DaemonReply>{-ENOENT, {}};
  }
  std::function<sys::Answer<sys::DaemonReply>(const std::string&)> answer;  // none: it does not run
};

}  // namespace tavrenix::test
