#include "linux/device_mapper_ioctl.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "linux/dm_message.hpp"

namespace tavrenix::sys {

namespace {

using Lock = std::lock_guard<std::mutex>;

// What udev's rules read out of the number that an event carries, as libdevmapper.h names the
// flags: nobody's library makes nodes in place of udev; the event is a change of the map and not a
// replay; and, of the subsystem's own flags, the one that means to the rules of multipath maps:
// reloaded, content as before.
constexpr std::uint32_t kDisableLibraryFallback = 0x0020;
constexpr std::uint32_t kPrimarySource = 0x0040;
constexpr std::uint32_t kSubsystemFlag0 = 0x0100;
constexpr int kEventFlagsShift = 16;

// Enough for the list of some hundred maps; the lines of one map seldom fill a page.
constexpr std::size_t kListBytes = 65536;

}  // namespace

KernelDeviceMapper::~KernelDeviceMapper() {
  if (file_ >= 0) ::close(file_);
}

int KernelDeviceMapper::control() {
  const Lock lock(mutex_);
  if (file_ >= 0) return file_;
  // The node alone says nothing: opening it would load the driver.
  if (::access("/sys/class/misc/device-mapper", F_OK) != 0) return -ENXIO;
  file_ = ::open("/dev/mapper/control", O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  if (file_ >= 0) return file_;
  return errno == ENOENT ? -ENXIO : -errno;
}

Answer<std::vector<ListedMap>> KernelDeviceMapper::list() {
  const int file = control();
  if (file < 0) return {file, {}};
  DmMessage question({}, DM_UUID_FLAG);  // with uuids, where the kernel can (5.13)
  if (const int status = question.ask(file, DM_LIST_DEVICES, kListBytes); status != 0)
    return {status, {}};
  return {0, question.maps()};
}

Answer<MapLines> KernelDeviceMapper::read(DeviceNumber map, Lines which) {
  const int file = control();
  if (file < 0) return {file, {}};
  std::uint32_t flags = DM_NOFLUSH_FLAG;
  if (which != Lines::kStatus) flags |= DM_STATUS_TABLE_FLAG;
  if (which == Lines::kInactiveTable) flags |= DM_QUERY_INACTIVE_TABLE_FLAG;
  DmMessage question(map, flags);
  if (const int status = question.ask(file, DM_TABLE_STATUS); status != 0) return {status, {}};
  return {0, question.lines()};
}

int KernelDeviceMapper::load(DeviceNumber map, const Target& table, bool readOnly) {
  const int file = control();
  if (file < 0) return file;
  DmMessage question(map, readOnly ? DM_READONLY_FLAG : 0);
  question.addTarget(table);
  return question.ask(file, DM_TABLE_LOAD);
}

int KernelDeviceMapper::resume(DeviceNumber map) {
  const int file = control();
  if (file < 0) return file;
  DmMessage question(map, DM_NOFLUSH_FLAG | DM_SKIP_LOCKFS_FLAG);
  question.setEvent((kDisableLibraryFallback | kPrimarySource | kSubsystemFlag0)
                    << kEventFlagsShift);
  return question.ask(file, DM_DEV_SUSPEND);  // which resumes without its flag
}

int KernelDeviceMapper::clear(DeviceNumber map) {
  const int file = control();
  return file < 0 ? file : DmMessage(map).ask(file, DM_TABLE_CLEAR);
}

int KernelDeviceMapper::message(DeviceNumber map, const std::string& text) {
  const int file = control();
  if (file < 0) return file;
  DmMessage question(map);
  question.addText(text);
  return question.ask(file, DM_TARGET_MSG);
}

}  // namespace tavrenix::sys
