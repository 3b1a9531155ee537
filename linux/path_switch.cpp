#include "linux/path_switch.hpp"

#include <cerrno>

namespace tavrenix::sys {

namespace {

int askDriver(DeviceMapperPort& port, DeviceNumber map, const PathChange& change) {
  return port.message(map, (change.use ? "reinstate_path " : "fail_path ") + change.device.text());
}

int switchPath(DeviceMapperPort& port, PathDaemon& daemon, DeviceNumber map,
               const PathChange& change) {
  const auto [status, reply] =
      daemon.ask((change.use ? "reinstate path " : "fail path ") + change.name);
  if (status == -ENOENT) return askDriver(port, map, change);
  if (status != 0) return status;
  switch (reply) {
    case DaemonReply::kDone:
      return 0;
    case DaemonReply::kTooLate:
      return -ETIMEDOUT;
    case DaemonReply::kRefused:  // a path that it does not look after
    case DaemonReply::kUnknown:
      break;
  }
  return askDriver(port, map, change);
}

}  // namespace

int switchPaths(DeviceMapperPort& port, PathDaemon& daemon, DeviceNumber map,
                const std::vector<PathChange>& changes) {
  int result = 0;
  for (const auto& change : changes) {
    const int status = switchPath(port, daemon, map, change);
    if (result == 0) result = status;
  }
  if (result != 0) return result;

  const auto lines = port.read(map, Lines::kStatus);
  if (lines.status != 0) return lines.status;
  const bool one = lines.value.targets.size() == 1;
  const auto now = one ? parseMultipathStatus(lines.value.targets.front().line) : std::nullopt;
  if (!now) return -EIO;
  for (const auto& change : changes) {
    if (now->uses(change.device) != change.use) return -EIO;
  }
  return 0;
}

}  // namespace tavrenix::sys
