// A device-mapper in memory: maps with the lines that they were given, changed by loads, resumes
// and messages as the driver changes them, and as faults are put in.
#pragma once

#include <map>
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
    std::string otherStatus;  // status lines of other targets, told as they are
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
  sys::Answer<sys::MapLines> read(sys::DeviceNumber map, sys::Lines which) override;
  int load(sys::DeviceNumber map, const sys::Target& table, bool readOnly) override;
  int resume(sys::DeviceNumber map) override;
  int clear(sys::DeviceNumber map) override;
  int message(sys::DeviceNumber map, const std::string& text) override;

  std::map<sys::DeviceNumber, Map> maps;
  std::vector<std::string> calls;  // every change asked for, in order
  int listStatus = 0;
  bool tellsUuids = true;
  bool clampsRepeats = true;  // as the driver does since 4.11
  // The next operation of that name fails: "load", "resume" (left suspended), "interrupt"
  // (a resume that changes nothing, the loaded table still waits), "message", "swap"
  // (the resume succeeds, with the table it was given changed).
  std::map<std::string, int> faults;

 private:
  Map* find(sys::DeviceNumber device);
  int fault(const std::string& name);
  std::string statusLine(const Map& map) const;
};

}  // namespace tavrenix::test
