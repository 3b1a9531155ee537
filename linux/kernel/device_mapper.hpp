// The kernel's device-mapper: the port that this system uses, and the port's real class over the
// kernel's own interface, linux/dm-ioctl.h.
//
// libdevmapper would do the same, but that of Debian 12 asks for no uuids in the list of maps, it
// obeys environment variables, and loading it takes longer than `tavrenix list` takes on a machine
// of some dozen units.
#pragma once

#include <chrono>
#include <memory>

#include "linux/text/multipath_lines.hpp"
#include "runtime/mutex.hpp"
#include "runtime/posix.hpp"
#include "runtime/result.hpp"

namespace tavrenix::sys {

// Names and uuids are the raw bytes that the kernel has. libdevmapper writes some bytes of them as
// \x and two digits.

// A map in the list of all maps.
struct ListedMap {
  DeviceNumber device;
  std::string name;
  std::string uuid;         // empty if the map has none or the kernel does not list it
  std::uint32_t event = 0;  // counts the map's events; 0 if the kernel does not list it
};

struct Target {
  std::uint64_t start = 0;   // sectors
  std::uint64_t length = 0;  // sectors
  std::string type;          // "multipath", "linear" and so on
  std::string line;          // table or status, in the type's own grammar
};

// One map, with the lines that the caller asked for.
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

// Return what the line says if the map has exactly one target, of type multipath, and its line
// follows the grammar. Otherwise return std::nullopt.
std::optional<MultipathTable> tableOf(const MapLines& lines);
std::optional<MultipathStatus> statusOf(const MapLines& lines);

// The lines of a map that a call reads.
enum class Lines { kTable, kStatus, kInactiveTable };

template <class T>
using Answer = ob::Result<T>;

// The lock on changes of maps, released with its last copy.
using ChangeLock = std::shared_ptr<void>;

// The port to device-mapper. Only resume waits for storage.
// Errors: a negative error number; 0 is success.
// Thread safety: any thread.
class DeviceMapperPort {
 public:
  virtual ~DeviceMapperPort() = default;

  // Waits, for a bounded time, until no other caller on this machine changes a map. Programs that
  // do not use this library take no such lock.
  // Errors: -EBUSY if the other change takes too long.
  virtual Answer<ChangeLock> lockChanges() = 0;

  // Lists all maps. Errors: -ENXIO if the driver is not loaded. This call never loads it.
  virtual Answer<std::vector<ListedMap>> list() = 0;
  // Returns true if something may have happened to any map since the last call of list() began.
  virtual bool hasChangedSinceList() = 0;
  // Errors: -ENXIO if there is no such map.
  virtual Answer<MapLines> read(DeviceNumber map, Lines which) = 0;

  // Loads a table beside the one in force, which stays in force.
  virtual int load(DeviceNumber map, const Target& table, bool readOnly) = 0;
  // Puts a loaded table in force and ends a suspension. Waits for requests under way; none is lost.
  // Marks its event as a reload, so that udev does not scan the map's contents again.
  virtual int resume(DeviceNumber map) = 0;
  // Removes a loaded table that is not in force.
  virtual int clear(DeviceNumber map) = 0;
  // Sends a message to the target at sector 0.
  virtual int message(DeviceNumber map, const std::string& text) = 0;
};

// The device-mapper of this machine. Opens /dev/mapper/control at the first call and keeps it open.
class KernelDeviceMapper final : public DeviceMapperPort {
 public:
  Answer<ChangeLock> lockChanges() override;
  Answer<std::vector<ListedMap>> list() override;
  bool hasChangedSinceList() override;
  Answer<MapLines> read(DeviceNumber map, Lines which) override;
  int load(DeviceNumber map, const Target& table, bool readOnly) override;
  int resume(DeviceNumber map) override;
  int clear(DeviceNumber map) override;
  int message(DeviceNumber map, const std::string& text) override;

 private:
  // Returns the control file or a negative error number.
  int control() OB_EXCLUDES(mutex_);

  ob::Mutex mutex_;
  ob::FileDescriptor file_ OB_GUARDED_BY(mutex_);
};

// Locks the file for this holder alone, against other processes and other threads.
// Errors: -EBUSY if another holder keeps it for longer than `timeout`; -ENXIO if there is no such
// file; or the error of opening it.
Answer<ChangeLock> lockFile(const char* path, std::chrono::milliseconds timeout);

}  // namespace tavrenix::sys
