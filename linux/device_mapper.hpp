// The port to the kernel's device-mapper: what the driver tells and takes, without any meaning yet.
//
// Errors are negative error numbers, 0 is success. No operation but resume waits for storage. Any
// thread.
#pragma once

#include <string>
#include <vector>

#include "linux/device_number.hpp"

namespace tavrenix::sys {

// A map in the list of all maps.
struct ListedMap {
  DeviceNumber device;
  std::string name;
  std::string uuid;         // empty where the map has none
  std::uint32_t event = 0;  // counts what happened to the map; 0 where the kernel does not tell
};

struct Target {
  std::uint64_t start = 0;   // sectors
  std::uint64_t length = 0;  // sectors
  std::string type;          // "multipath", "linear" and so on
  std::string line;          // table or status, in the type's own grammar
};

// A map by itself, with the lines that were asked for.
struct MapLines {
  std::string name;
  std::string uuid;
  bool suspended = false;
  bool readOnly = false;
  bool inactiveTable = false;  // a table is loaded that is not in force
  std::int32_t openCount = 0;  // mounts, holders and programs that have it open
  std::uint32_t event = 0;
  std::vector<Target> targets;
};

// Which lines of a map.
enum class Lines { kTable, kStatus, kInactiveTable };

template <class T>
struct Answer {
  int status = 0;
  T value{};  // holds something only where status is 0
};

class DeviceMapperPort {
 public:
  virtual ~DeviceMapperPort() = default;

  // All maps. -ENXIO where the driver is not loaded; asking never loads it.
  virtual Answer<std::vector<ListedMap>> list() = 0;
  // -ENXIO where there is no such map.
  virtual Answer<MapLines> read(DeviceNumber map, Lines which) = 0;

  // Loads a table beside the one in force, which stays in force.
  virtual int load(DeviceNumber map, const Target& table, bool readOnly) = 0;
  // Puts a loaded table in force, requests under way kept and waited for, and ends a suspension.
  // udev is told that the map's content did not change.
  virtual int resume(DeviceNumber map) = 0;
  // Throws a loaded table away.
  virtual int clear(DeviceNumber map) = 0;
  // A message to the target at sector 0.
  virtual int message(DeviceNumber map, const std::string& text) = 0;
};

}  // namespace tavrenix::sys
