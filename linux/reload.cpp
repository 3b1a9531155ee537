#include "linux/reload.hpp"

#include <cerrno>

#include "linux/multipath_status.hpp"

namespace tavrenix::sys {

namespace {

// One reload of one map.
class Reload {
 public:
  Reload(DeviceMapperPort& port, DeviceNumber map) : port_(port), map_(map) {}

  // The table in force, once it is one that may be changed.
  int readOld() {
    auto lines = port_.read(map_, Lines::kTable);
    if (lines.status != 0) return lines.status;
    if (lines.value.suspended) return -EBUSY;
    readOnly_ = lines.value.readOnly;
    if (lines.value.targets.size() != 1) return -EINVAL;
    target_ = lines.value.targets.front();
    if (target_.type != "multipath") return -EINVAL;
    const auto table = parseMultipathTable(target_.line);
    if (!table) return -EINVAL;
    old_ = *table;
    return 0;
  }
  const MultipathTable& old() const { return old_; }

  // Puts table in force; if anything is wrong the old one stays or comes back.
  int change(const MultipathTable& table) {
    if (const int status = load(table); status != 0) return status;
    // As late as can be: a path that fails from here on is found out anew by its first request.
    int status = rememberFailures();
    if (status == 0) {
      status = activate();
    } else {
      port_.clear(map_);
    }
    if (status != 0) return status;
    if (status = failAgain(); status == 0) status = check(table, Lines::kTable);
    if (status != 0 && load(old_) == 0 && activate() == 0) failAgain();
    return status;
  }

 private:
  int load(const MultipathTable& table) {
    Target target = target_;
    target.line = formatMultipathTable(table);
    int status = port_.load(map_, target, readOnly_);
    // The kernel may have changed what it was given: seen now, the old table never leaves.
    if (status == 0) status = check(table, Lines::kInactiveTable);
    if (status != 0) port_.clear(map_);
    return status;
  }

  int rememberFailures() {
    const auto lines = port_.read(map_, Lines::kStatus);
    if (lines.status != 0) return lines.status;
    const bool one = lines.value.targets.size() == 1;
    const auto status = one ? parseMultipathStatus(lines.value.targets.front().line) : std::nullopt;
    if (status) before_ = *status;
    return status ? 0 : -EINVAL;
  }

  int activate() {
    const int status = port_.resume(map_);
    if (status == 0) return 0;
    port_.clear(map_);   // first: the new table may wait again, for the next resume
    port_.resume(map_);  // it may have been left suspended, with the old table
    return status;
  }

  // A new table starts with all paths and groups in use.
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
    if (lines.value.targets.size() != 1) return -EIO;
    auto found = parseMultipathTable(lines.value.targets.front().line);
    if (!found) return -EIO;
    found->initialGroup =
        wanted.initialGroup;  // tells the group in use, which may move at any time
    if (*found == wanted) return 0;
    const bool clamped =
        which == Lines::kInactiveTable && repeatCount(*found) != repeatCount(wanted);
    return clamped ? -EOPNOTSUPP : -EIO;
  }

  DeviceMapperPort& port_;
  DeviceNumber map_;
  Target target_;
  bool readOnly_ = false;
  MultipathTable old_;
  MultipathStatus before_;
};

}  // namespace

MultipathTable withSelector(MultipathTable table, const Selector& selector, std::uint64_t repeat) {
  for (auto& group : table.groups) {
    const Selector* former = selectorNamed(group.selector);
    const bool hadThroughput = former != nullptr && former->takesThroughput;
    group.selector = selector.name;
    group.selectorArguments.clear();
    for (auto& path : group.paths) {
      const bool keep = hadThroughput && path.arguments.size() == 2;
      const std::string throughput = keep ? path.arguments[1] : "1";
      path.arguments = {std::to_string(repeat)};
      if (selector.takesThroughput) path.arguments.push_back(throughput);
    }
  }
  return table;
}

int reload(DeviceMapperPort& port, DeviceNumber map, const Selector& selector,
           std::uint64_t repeat) {
  Reload reload(port, map);
  if (const int status = reload.readOld(); status != 0) return status;
  if (reload.old().groups.empty()) return -ENODEV;  // nothing is there that would carry a selector
  const MultipathTable wanted = withSelector(reload.old(), selector, repeat);
  return wanted == reload.old() ? 0 : reload.change(wanted);
}

}  // namespace tavrenix::sys
