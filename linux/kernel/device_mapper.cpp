#include "linux/kernel/device_mapper.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "linux/kernel/dm_message.hpp"

namespace tavrenix::sys {

namespace {

// Flags for udev's rules, which the event number of a resume carries. Their names are those of
// libdevmapper.h. In their order: no library makes nodes in place of udev; the event comes from a
// change and is not a replay; the rules of multipath maps take it for a reload.
constexpr std::uint32_t kDisableLibraryFallback = 0x0020;
constexpr std::uint32_t kPrimarySource = 0x0040;
constexpr std::uint32_t kSubsystemFlag0 = 0x0100;
constexpr int kEventFlagsShift = 16;

// Room for a list of some hundred maps. The lines of one map seldom fill a page.
constexpr std::size_t kListBytes = 65536;

constexpr const char* kControlFile = "/dev/mapper/control";
constexpr std::chrono::seconds kChangeTimeout(10);  // multipathd may take 5 seconds for a path
constexpr std::chrono::milliseconds kLockPoll(5);

// The node of the control file proves nothing: it exists without the driver, and opening it would
// load the driver.
bool isDriverLoaded() {
  return ::access("/sys/class/misc/device-mapper", F_OK) == 0;
}

const Target* onlyMultipathTarget(const MapLines& lines) {
  const bool one = lines.targets.size() == 1 && lines.targets.front().type == "multipath";
  return one ? &lines.targets.front() : nullptr;
}

}  // namespace

std::optional<MultipathTable> tableOf(const MapLines& lines) {
  const Target* target = onlyMultipathTarget(lines);
  return target == nullptr ? std::nullopt : parseMultipathTable(target->line);
}

std::optional<MultipathStatus> statusOf(const MapLines& lines) {
  const Target* target = onlyMultipathTarget(lines);
  return target == nullptr ? std::nullopt : parseMultipathStatus(target->line);
}

Answer<ChangeLock> lockFile(const char* path, std::chrono::milliseconds timeout) {
  // The lock belongs to one opening of the file. Opening it anew also keeps out other threads and
  // forked children.
  const auto file =
      std::make_shared<ob::FileDescriptor>(::open(path, O_RDWR | O_CLOEXEC | O_NOFOLLOW));
  if (!*file) return {errno == ENOENT ? -ENXIO : -errno, {}};
  const auto end = std::chrono::steady_clock::now() + timeout;
  while (::flock(file->get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) return {-errno, {}};
    if (std::chrono::steady_clock::now() >= end) return {-EBUSY, {}};
    std::this_thread::sleep_for(kLockPoll);
  }
  return {0, file};
}

int KernelDeviceMapper::control() {
  const ob::MutexLock lock(mutex_);
  if (file_) return file_.get();
  if (!isDriverLoaded()) return -ENXIO;
  file_ = ob::FileDescriptor(::open(kControlFile, O_RDWR | O_CLOEXEC | O_NOFOLLOW));
  if (file_) return file_.get();
  return errno == ENOENT ? -ENXIO : -errno;
}

Answer<ChangeLock> KernelDeviceMapper::lockChanges() {
  if (!isDriverLoaded()) return {-ENXIO, {}};
  return lockFile(kControlFile, kChangeTimeout);
}

Answer<std::vector<ListedMap>> KernelDeviceMapper::list() {
  const int file = control();
  if (file < 0) return {file, {}};
  // Arms the poll first, so that a change while the list is made is not missed. Kernels before 4.13
  // do not know the request: there, every poll reports a change.
  DmMessage().ask(file, DM_DEV_ARM_POLL);
  DmMessage question({}, DM_UUID_FLAG);  // with uuids, if the kernel lists them (5.13)
  if (const int status = question.ask(file, DM_LIST_DEVICES, kListBytes); status != 0)
    return {status, {}};
  return {0, question.maps()};
}

bool KernelDeviceMapper::hasChangedSinceList() {
  const int file = control();
  pollfd poll{file, POLLIN, 0};
  return file < 0 || ::poll(&poll, 1, 0) != 0;
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
  return question.ask(file, DM_DEV_SUSPEND);  // without DM_SUSPEND_FLAG this request resumes
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
