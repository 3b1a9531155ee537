#include "linux/device_mapper_libdm.hpp"

#include <libdevmapper.h>
#include <linux/dm-ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace tavrenix::sys {

namespace {

using Lock = std::lock_guard<std::mutex>;
using Task = std::unique_ptr<dm_task, void (*)(dm_task*)>;

[[gnu::format(printf, 5, 6)]] void staySilent(int, const char*, int, int, const char*, ...) {}

Task makeTask(int type) {
  return {::dm_task_create(type), ::dm_task_destroy};
}

Task makeTask(int type, DeviceNumber map) {
  Task task = makeTask(type);
  const bool made = task && ::dm_task_set_major_minor(task.get(), static_cast<int>(map.major),
                                                      static_cast<int>(map.minor), 0) != 0;
  return made ? std::move(task) : Task{nullptr, ::dm_task_destroy};
}

// 0, or the negative error number of what the driver answered.
int run(const Task& task) {
  if (!task) return -ENOMEM;
  errno = 0;
  if (::dm_task_run(task.get()) != 0) return 0;
  const int error = ::dm_task_get_errno(task.get()) != 0 ? ::dm_task_get_errno(task.get()) : errno;
  return error != 0 ? -error : -EIO;
}

DeviceNumber deviceNumber(std::uint64_t kernelNumber) {
  // As the kernel's huge_encode_dev writes it into this interface.
  return {static_cast<std::uint32_t>((kernelNumber >> 8) & 0xFFF),
          static_cast<std::uint32_t>((kernelNumber & 0xFF) | ((kernelNumber >> 12) & 0xFFF00))};
}

// Since control version 4.37 an event number stands behind each name, 8 bytes aligned; flags and,
// where they say so, the uuid follow it. See struct dm_name_list in linux/dm-ioctl.h.
bool tellsEvents(dm_task& task) {
  char version[32] = {};
  unsigned major = 0;
  unsigned minor = 0;
  return ::dm_task_get_driver_version(&task, version, sizeof version) != 0 &&
         std::sscanf(version, "%u.%u", &major, &minor) == 2 &&
         (major > 4 || (major == 4 && minor >= 37));
}

const char* aligned(const char* at) {
  const auto address = reinterpret_cast<std::uintptr_t>(at);
  return at + ((8 - address % 8) % 8);
}

ListedMap listedMap(const dm_names& names, bool withEvent) {
  ListedMap map{deviceNumber(names.dev), names.name, {}, 0};
  if (!withEvent) return map;
  std::uint32_t eventAndFlags[2];
  const char* behind = aligned(names.name + map.name.size() + 1);
  std::memcpy(eventAndFlags, behind, sizeof eventAndFlags);
  map.event = eventAndFlags[0];
  if (eventAndFlags[1] == DM_NAME_LIST_FLAG_HAS_UUID) {
    map.uuid = aligned(behind + sizeof eventAndFlags);
  }
  return map;
}

std::vector<Target> takeTargets(dm_task& task) {
  std::vector<Target> targets;
  void* next = nullptr;
  do {
    Target target;
    char* type = nullptr;
    char* line = nullptr;
    next = ::dm_get_next_target(&task, next, &target.start, &target.length, &type, &line);
    if (type == nullptr) break;
    target.type = type;
    target.line = line == nullptr ? "" : line;
    targets.push_back(std::move(target));
  } while (next != nullptr);
  return targets;
}

}  // namespace

int LibDeviceMapper::prepare() {
  if (::dm_log_is_non_default() == 0) ::dm_log_with_errno_init(staySilent);
  if (prepared_) return 0;
  // The node alone says nothing: opening it would load the driver; and the library would make the
  // node.
  const bool loaded = ::access("/sys/class/misc/device-mapper", F_OK) == 0;
  if (!loaded || ::access("/dev/mapper/control", F_OK) != 0) return -ENXIO;
  // Events of a map carry flags for udev's rules; nobody waits for the rules to end.
  ::dm_udev_set_sync_support(0);
  prepared_ = true;
  return 0;
}

Answer<std::vector<ListedMap>> LibDeviceMapper::list() {
  const Lock lock(mutex_);
  if (const int status = prepare(); status != 0) return {status, {}};
  const Task task = makeTask(DM_DEVICE_LIST);
  if (const int status = run(task); status != 0) return {status, {}};

  Answer<std::vector<ListedMap>> maps;
  const dm_names* names = ::dm_task_get_names(task.get());
  if (names == nullptr || names->dev == 0) return maps;  // the driver's way of saying none
  const bool withEvents = tellsEvents(*task);
  for (;;) {
    maps.value.push_back(listedMap(*names, withEvents));
    if (names->next == 0) return maps;
    names = reinterpret_cast<const dm_names*>(reinterpret_cast<const char*>(names) + names->next);
  }
}

Answer<MapLines> LibDeviceMapper::read(DeviceNumber map, Lines which) {
  const Lock lock(mutex_);
  if (const int status = prepare(); status != 0) return {status, {}};
  const Task task = makeTask(which == Lines::kStatus ? DM_DEVICE_STATUS : DM_DEVICE_TABLE, map);
  if (task) ::dm_task_no_flush(task.get());
  if (task && which == Lines::kInactiveTable) ::dm_task_query_inactive_table(task.get());
  if (const int status = run(task); status != 0) return {status, {}};

  dm_info info{};
  if (::dm_task_get_info(task.get(), &info) == 0 || info.exists == 0) return {-ENXIO, {}};
  const char* name = ::dm_task_get_name(task.get());
  const char* uuid = ::dm_task_get_uuid(task.get());
  Answer<MapLines> lines;
  lines.value.name = name == nullptr ? "" : name;
  lines.value.uuid = uuid == nullptr ? "" : uuid;
  lines.value.suspended = info.suspended != 0;
  lines.value.readOnly = info.read_only != 0;
  lines.value.inactiveTable = info.inactive_table != 0;
  lines.value.openCount = info.open_count;
  lines.value.event = info.event_nr;
  lines.value.targets = takeTargets(*task);
  return lines;
}

int LibDeviceMapper::load(DeviceNumber map, const Target& table, bool readOnly) {
  const Lock lock(mutex_);
  if (const int status = prepare(); status != 0) return status;
  const Task task = makeTask(DM_DEVICE_RELOAD, map);
  if (!task || ::dm_task_add_target(task.get(), table.start, table.length, table.type.c_str(),
                                    table.line.c_str()) == 0) {
    return -ENOMEM;
  }
  if (readOnly) ::dm_task_set_ro(task.get());
  return run(task);
}

int LibDeviceMapper::resume(DeviceNumber map) {
  const Lock lock(mutex_);
  if (const int status = prepare(); status != 0) return status;
  const Task task = makeTask(DM_DEVICE_RESUME, map);
  if (!task) return -ENOMEM;
  ::dm_task_no_flush(task.get());
  ::dm_task_skip_lockfs(task.get());
  // Flag 0 of the subsystem means to the rules of multipath maps: reloaded, content as before.
  std::uint32_t cookie = 0;
  ::dm_task_set_cookie(task.get(), &cookie,
                       DM_UDEV_DISABLE_LIBRARY_FALLBACK | DM_SUBSYSTEM_UDEV_FLAG0);
  return run(task);
}

int LibDeviceMapper::clear(DeviceNumber map) {
  const Lock lock(mutex_);
  if (const int status = prepare(); status != 0) return status;
  return run(makeTask(DM_DEVICE_CLEAR, map));
}

int LibDeviceMapper::message(DeviceNumber map, const std::string& text) {
  const Lock lock(mutex_);
  if (const int status = prepare(); status != 0) return status;
  const Task task = makeTask(DM_DEVICE_TARGET_MSG, map);
  if (!task || ::dm_task_set_sector(task.get(), 0) == 0 ||
      ::dm_task_set_message(task.get(), text.c_str()) == 0) {
    return -ENOMEM;
  }
  return run(task);
}

}  // namespace tavrenix::sys
