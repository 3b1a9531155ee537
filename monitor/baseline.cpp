#include "monitor/baseline.hpp"

#include <algorithm>

#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

Baseline::Path recorded(const Path& path) {
  return {path.identifier, path.hostPort, path.targetPort};
}

template <class Units>
auto findUnit(const Units& units, const std::string& identifier) {
  return std::ranges::find_if(units,
                              [&](const auto& unit) { return unit.identifier == identifier; });
}

// The paths of `all` without those of `others`, each of which stands for one.
std::vector<Baseline::Path> without(std::vector<Baseline::Path> all,
                                    const std::vector<Baseline::Path>& others) {
  for (const auto& other : others) {
    const auto found = std::ranges::find(all, other);
    if (found != all.end()) all.erase(found);
  }
  return all;
}

std::vector<Baseline::Path> recordedPaths(const Unit& unit) {
  std::vector<Baseline::Path> paths;
  for (const Path& path : unit.paths) paths.push_back(recorded(path));
  return paths;
}

Json pathAsJson(const Baseline::Path& path) {
  Json object = {{"identifier", path.identifier}};
  if (path.hostPort) object["host_port"] = *path.hostPort;
  if (path.targetPort) object["target_port"] = *path.targetPort;
  return object;
}

std::optional<std::string> textIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end()) return std::nullopt;
  return found->get<std::string>();
}

Baseline parse(const Json& document) {
  if (document.at("version").at("major").get<int>() != 1) {
    throw Failure("its version is not one that this program knows");
  }
  Baseline baseline;
  for (const Json& object : document.at("units")) {
    Baseline::Unit unit{object.at("identifier").get<std::string>(),
                        object.at("title").get<std::string>(),
                        {},
                        object.at("usable_paths").get<std::uint64_t>()};
    for (const Json& path : object.at("paths")) {
      unit.paths.push_back({path.at("identifier").get<std::string>(), textIn(path, "host_port"),
                            textIn(path, "target_port")});
    }
    baseline.units.push_back(std::move(unit));
  }
  return baseline;
}

}  // namespace

bool Baseline::Path::operator==(const Path& other) const {
  if (hostPort && targetPort && other.hostPort && other.targetPort) {
    return hostPort == other.hostPort && targetPort == other.targetPort;
  }
  return identifier == other.identifier;
}

std::optional<std::uint64_t> Baseline::expectedPaths(const monitor::Unit& unit) const {
  const auto found = findUnit(units, unit.identifier);
  if (found == units.end()) return std::nullopt;
  return found->usablePaths;
}

Baseline baselineOf(const Storage& storage) {
  Baseline baseline;
  for (const Unit& unit : storage.units) {
    const auto standby = std::ranges::count(unit.paths, kStates[2], &Path::state);
    baseline.units.push_back({unit.identifier, unit.title(), recordedPaths(unit),
                              unit.paths.size() - static_cast<std::size_t>(standby)});
  }
  return baseline;
}

std::string textOf(const Baseline& baseline) {
  Json document = {{"version", {{"major", 1}, {"minor", 0}}}, {"units", Json::array()}};
  for (const auto& unit : baseline.units) {
    Json paths = Json::array();
    for (const auto& path : unit.paths) paths.push_back(pathAsJson(path));
    document["units"].push_back({{"identifier", unit.identifier},
                                 {"title", unit.title},
                                 {"usable_paths", unit.usablePaths},
                                 {"paths", std::move(paths)}});
  }
  return textOf(document, false);
}

Baseline readBaseline(const std::string& file) {
  const std::string content = readFile(file);
  try {
    return parse(Json::parse(content));
  } catch (const std::exception& error) {
    throw Failure(visible(file) + ": not a baseline: " + visible(error.what()) +
                  "; record it anew with: baseline record");
  }
}

std::vector<Difference> compare(const Baseline& baseline, const Storage& storage) {
  std::vector<Difference> differences;
  const auto addPaths = [&](bool isMissing, const std::string& unit, const auto& paths) {
    for (const auto& path : paths) differences.push_back({isMissing, false, unit, path.identifier});
  };
  for (const auto& was : baseline.units) {
    const auto now = findUnit(storage.units, was.identifier);
    if (now == storage.units.end()) {
      differences.push_back({true, true, was.title, {}});
      continue;
    }
    addPaths(true, now->title(), without(was.paths, recordedPaths(*now)));
    addPaths(false, now->title(), without(recordedPaths(*now), was.paths));
  }
  for (const Unit& now : storage.units) {
    const bool isNew = findUnit(baseline.units, now.identifier) == baseline.units.end();
    if (isNew) differences.push_back({false, true, now.title(), {}});
  }
  return differences;
}

std::string describe(const Difference& difference) {
  const char* what = difference.isMissing ? " is missing" : " is new";
  if (difference.isUnit) return visible(difference.unit) + what;
  return visible(difference.unit) + ": path " + visible(difference.path) + what;
}

}  // namespace tavrenix::monitor
