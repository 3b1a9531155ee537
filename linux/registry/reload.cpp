#include "linux/registry/reload.hpp"

#include <cerrno>

#include "runtime/posix.hpp"

namespace tavrenix::sys {

namespace {

// Compares all but the initial group. The driver prints the group in use there, which may change at
// any time.
bool isSame(std::optional<MultipathTable> found, const MultipathTable& wanted) {
  if (found) found->initialGroup = wanted.initialGroup;
  return found == wanted;
}

// Also leaves out kQueueFeature: the daemon may switch it at any time once the table is in force.
bool isSameButForQueueing(std::optional<MultipathTable> found, MultipathTable wanted) {
  if (found) std::erase(found->features, kQueueFeature);
  std::erase(wanted.features, kQueueFeature);
  return isSame(std::move(found), wanted);
}

// One reload of one map.
class Reload {
 public:
  Reload(DeviceMapperPort& port, DeviceNumber map) : port_(port), map_(map) {}

  // Reads the table in force. Fails if it may not be changed.
  int readOld() {
    const auto lines = port_.read(map_, Lines::kTable);
    if (lines.status != 0) return lines.status;
    if (lines.value.suspended) return -EBUSY;
    const auto table = tableOf(lines.value);
    if (!table) return -EINVAL;
    readOnly_ = lines.value.readOnly;
    target_ = lines.value.targets.front();
    old_ = *table;
    return 0;
  }
  const MultipathTable& old() const { return old_; }

  // Puts `wanted` in force. If a step before the resume fails, the old table stays; after it,
  // rollBack() decides.
  int change(const MultipathTable& wanted) {
    const ob::AllSignalsBlocked untilTheLastCheck;
    int status = rememberFailures();
    if (status == 0) status = load(wanted);
    if (status == 0) status = checkNothingMoved(wanted);
    // Reads the failed paths again, as late as possible. A path that fails later fails in its next
    // request.
    if (status == 0) status = rememberFailures();
    if (status != 0) {
      withdraw();
      // Another program's resume may have put the loaded table in force.
      if (check(wanted, Lines::kTable) == 0) failAgain();
      return status;
    }
    if (status = activate(); status != 0) return status;
    if (status = failAgain(); status == 0) status = check(wanted, Lines::kTable);
    return status == 0 ? 0 : rollBack(status);
  }

 private:
  int load(const MultipathTable& table) {
    Target target = target_;
    target.line = formatMultipathTable(table);
    return port_.load(map_, target, readOnly_);
  }

  // Other programs take no lock, so both tables are read once more before the resume: the one in
  // force must still be the old one, and the waiting one must be the one that was loaded.
  int checkNothingMoved(const MultipathTable& wanted) {
    const auto inForce = port_.read(map_, Lines::kTable);
    if (inForce.status != 0) return inForce.status;
    if (inForce.value.suspended || !isSame(tableOf(inForce.value), old_)) return -EBUSY;
    return check(wanted, Lines::kInactiveTable);
  }

  // Clears the loaded table, but not one that another program has loaded in its place.
  void withdraw() {
    const auto waiting = port_.read(map_, Lines::kInactiveTable);
    const auto table = waiting.status == 0 ? tableOf(waiting.value) : std::nullopt;
    if (table && differInSelectorsAlone(*table, old_)) port_.clear(map_);
  }

  // Puts the old table back after a failure. Returns `cause`, or -EBUSY if another program has
  // suspended the map, loaded a table or put one in force: that stays.
  int rollBack(int cause) {
    const auto lines = port_.read(map_, Lines::kTable);
    if (lines.status != 0) return cause;
    if (lines.value.suspended || lines.value.inactiveTable) return -EBUSY;
    const auto found = tableOf(lines.value);
    if (!found || !differInSelectorsAlone(*found, old_)) return -EBUSY;
    if (load(old_) == 0 && activate() == 0) failAgain();
    return cause;
  }

  int rememberFailures() {
    const auto lines = port_.read(map_, Lines::kStatus);
    if (lines.status != 0) return lines.status;
    const auto status = statusOf(lines.value);
    if (status) before_ = *status;
    return status ? 0 : -EINVAL;
  }

  int activate() {
    const int status = port_.resume(map_);
    if (status == 0) return 0;
    port_.clear(map_);   // first, because the next resume would put the new table in force
    port_.resume(map_);  // ends a suspension that the failed resume has left
    return status;
  }

  // Fails again the paths that had failed, and disables again the groups that were disabled: a new
  // table uses all of them.
  int failAgain() {
    int result = 0;
    const auto send = [&](const std::string& message) {
      const int status = port_.message(map_, message);
      if (result == 0) result = status;
    };
    std::size_t number = 0;
    for (const auto& group : before_.groups) {
      ++number;
      for (const auto& path : group.paths) {
        if (!path.used) send("fail_path " + path.device.text());
      }
      if (group.state == 'D') send("disable_group " + std::to_string(number));
    }
    return result;
  }

  int check(const MultipathTable& wanted, Lines which) {
    const auto lines = port_.read(map_, which);
    if (lines.status != 0) return lines.status;
    const auto found = tableOf(lines.value);
    if (which == Lines::kTable) return isSameButForQueueing(found, wanted) ? 0 : -EIO;
    if (isSame(found, wanted)) return 0;
    if (!found) return -EIO;
    if (!differInSelectorsAlone(*found, wanted)) return -EALREADY;
    return repeatCount(*found) != repeatCount(wanted) ? -EOPNOTSUPP : -EIO;
  }

  DeviceMapperPort& port_;
  DeviceNumber map_;
  Target target_;
  bool readOnly_ = false;
  MultipathTable old_;
  MultipathStatus before_;
};

}  // namespace

int clearLeftTable(DeviceMapperPort& port, DeviceNumber map) {
  const auto inForce = port.read(map, Lines::kTable);
  if (inForce.status != 0) return inForce.status;
  if (!inForce.value.inactiveTable) return 0;
  const auto waiting = port.read(map, Lines::kInactiveTable);
  if (waiting.status != 0) return waiting.status;
  const auto table = tableOf(inForce.value);
  const auto left = tableOf(waiting.value);
  if (!table || !left || !differInSelectorsAlone(*left, *table)) return -EALREADY;
  return port.clear(map);
}

int reload(DeviceMapperPort& port, DeviceNumber map, const Selector& selector,
           std::uint64_t repeat) {
  Reload reload(port, map);
  if (const int status = reload.readOld(); status != 0) return status;
  if (reload.old().groups.empty()) return -ENODEV;
  const MultipathTable wanted = withSelector(reload.old(), selector, repeat);
  return wanted == reload.old() ? 0 : reload.change(wanted);
}

}  // namespace tavrenix::sys
