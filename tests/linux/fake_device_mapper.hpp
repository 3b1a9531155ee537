// A device-mapper in memory: maps with the lines that they were given, changed by loads, resumes
// and messages as the driver changes them, and as faults are put in.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <set>

#include "linux/device_mapper.hpp"
#include "linux/multipath_status.hpp"
#include "linux/multipath_table.hpp"

namespace tavrenix::test {

class FakeDeviceMapper final : public sys::DeviceMapperPort {
 public:
  struct Map {
    std::string name;
    std::string uuid;
    sys::Target table;
    std::set<sys::DeviceNumber> failed;
    std::set<std::size_t> disabledGroups;  // from 1
    bool suspended = false;
    bool readOnly = false;
    std::int32_t openCount = 0;
    std::uint32_t event = 0;
    std::string loaded;  // the line of an inactive table
    bool hasLoaded = false;
  };
  // Adds a map with a multipath table.
  Map& add(sys::DeviceNumber device, const std::string& name, const std::string& uuid,
           const std::string& line);

  sys::Answer<std::vector<sys::ListedMap>> list() override;
  sys::Answer<sys::MapLines> read(sys::DeviceNumber device, sys::Lines which) override;
  int load(sys::DeviceNumber device, const sys::Target& target, bool readOnly) override;
  int resume(sys::DeviceNumber device) override;
  int clear(sys::DeviceNumber device) override;
  int message(sys::DeviceNumber device, const std::string& text) override;

  std::mutex mutex;  // held by list() and read(), and by a test while other threads call them
  std::map<sys::DeviceNumber, Map> maps;
  std::vector<std::string> calls;  // every change asked for, in order
  int listStatus = 0;
  std::atomic<int> failedLists = 0;
  bool tellsUuids = true;
  bool clampsRepeats = true;  // as the driver does since 4.11
  // The next operation of that name fails: "load", "resume" (left suspended), "interrupt"
  // (a resume that changes nothing, the loaded table still waits), "message", "swap"
  // (the resume succeeds, with the table it was given changed).
  std::map<std::string, int> faults;

 private:
  int change(sys::DeviceNumber device, const std::string& call, const char* fault,
             const std::function<int(Map&)>& how);
  int takeFault(const std::string& name);
};

}  // namespace tavrenix::test
