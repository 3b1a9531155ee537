#include "monitor/health.hpp"

#include <algorithm>
#include <set>

#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

bool isRunning(const Path& path) {
  return !path.deviceState || *path.deviceState == "running" || *path.deviceState == "live";
}

std::string ofPaths(std::size_t usable, std::size_t all) {
  return std::to_string(usable) + " of " + std::to_string(all) + (all == 1 ? " path" : " paths") +
         " usable";
}

}  // namespace

bool isUsable(const Path& path) {
  const bool isActive = path.state == kStates[0] || path.state == kStates[1];
  return path.enabled && isActive && path.driverState != "failed";
}

std::size_t usablePaths(const Unit& unit) {
  return static_cast<std::size_t>(std::ranges::count_if(unit.paths, isUsable));
}

std::optional<std::string> onlyPort(const Unit& unit, std::optional<std::string> Path::*port) {
  std::set<std::optional<std::string>> ports;
  for (const Path& path : unit.paths) {
    if (isUsable(path)) ports.insert(path.*port);
  }
  if (ports.size() != 1 || !*ports.begin()) return std::nullopt;
  const std::string& name = **ports.begin();
  // An iSCSI name is that of a node, which may have many ports.
  const bool isNode = name.starts_with("iqn.") || name.starts_with("eui.");
  if (isNode && name.find(",t,") == std::string::npos) return std::nullopt;
  return name;
}

std::string faultOf(const Path& path) {
  const std::string name = visible(path.title());
  if (!isRunning(path)) return name + ": the device is " + visible(*path.deviceState);
  if (path.driverState == "failed" || !path.enabled) {
    std::string text = name + (path.driverState ? " failed by driver" : " disabled");
    if (path.deviceState) text += " although the device runs";
    if (path.deviceState && path.accessState) {
      text += " and the array reports " + visible(*path.accessState);
    }
    return text;
  }
  if (path.state == kStates[3]) {
    return name + ": the array reports " + visible(path.accessState.value_or(kStates[3]));
  }
  return {};
}

std::vector<Finding> findingsOf(const Unit& unit, std::optional<std::uint64_t> expected) {
  std::vector<Finding> findings;
  const std::size_t usable = usablePaths(unit);
  std::string faults;
  for (const Path& path : unit.paths) {
    const std::string fault = faultOf(path);
    if (!fault.empty()) faults += "; " + fault;
  }
  const bool isShort = expected && usable < *expected;
  if (usable == 0 || !faults.empty() || isShort) {
    std::string text = ofPaths(usable, unit.paths.size());
    if (isShort) text += ", " + std::to_string(*expected) + " expected";
    if (usable == 0 && unit.queueing) {
      text += *unit.queueing ? ", requests wait" : ", requests fail";
    }
    findings.push_back({usable == 0, text + faults});
  }
  if (unit.suspended == true) findings.push_back({false, "suspended: requests wait"});
  if (usable < 2) return findings;  // one path is judged by how many are expected
  if (const auto port = onlyPort(unit, &Path::hostPort)) {
    findings.push_back({false, "all usable paths go through host port " + visible(*port)});
  }
  if (const auto port = onlyPort(unit, &Path::targetPort)) {
    findings.push_back({false, "all usable paths go to target port " + visible(*port)});
  }
  return findings;
}

}  // namespace tavrenix::monitor
