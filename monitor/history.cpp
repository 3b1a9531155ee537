#include "monitor/history.hpp"

#include "monitor/health.hpp"

namespace tavrenix::monitor {

namespace {

std::string conditionOf(const Path& path) {
  return path.state + (path.enabled ? "+" : "-") + (isUsable(path) ? "+" : "-") +
         path.driverState.value_or("") + '/' + path.deviceState.value_or("");
}

}  // namespace

void History::observe(const LabelledStorage& storage, std::uint64_t unixSeconds) {
  std::set<std::string> units;
  for (const auto& [unit, labels] : storage.units) {
    if (begun_ && !units_.contains(labels)) ++unitMoves_.arrivals;
    units.insert(labels);
  }
  for (const std::string& labels : units_) {
    if (!units.contains(labels)) ++unitMoves_.departures;
  }
  std::map<std::string, Record> paths;
  for (const auto& [path, labels] : storage.paths) {
    Record record;
    const auto before = paths_.find(labels);
    if (before != paths_.end()) record = before->second;
    const std::string condition = conditionOf(*path);
    const bool isNew = before == paths_.end();
    if (begun_ && isNew) ++pathMoves_.arrivals;
    if (!isNew && record.condition != condition) ++record.changes;
    if (begun_ && (isNew || record.condition != condition)) record.lastChange = unixSeconds;
    record.condition = condition;
    paths[labels] = record;
  }
  for (const auto& [labels, record] : paths_) {
    if (!paths.contains(labels)) ++pathMoves_.departures;
  }
  units_ = std::move(units);
  paths_ = std::move(paths);
  begun_ = true;
}

void History::addTo(MetricsText& metrics) const {
  using Type = MetricsText::Type;
  const std::string ofUnits = label("kind", "unit");
  const std::string ofPaths = label("kind", "path");
  metrics.family("tavrenix_arrivals_total", Type::counter, "Units and paths that have come.");
  metrics.sample(ofUnits, unitMoves_.arrivals);
  metrics.sample(ofPaths, pathMoves_.arrivals);
  metrics.family("tavrenix_departures_total", Type::counter, "Units and paths that have gone.");
  metrics.sample(ofUnits, unitMoves_.departures);
  metrics.sample(ofPaths, pathMoves_.departures);
  metrics.family("tavrenix_path_changes_total", Type::counter,
                 "Changes of the path's states that were seen.");
  for (const auto& [labels, record] : paths_) metrics.sample(labels, record.changes);
  metrics.family("tavrenix_path_last_change_timestamp_seconds", Type::gauge,
                 "When the last change of the path was seen, or its arrival.");
  for (const auto& [labels, record] : paths_) {
    if (record.lastChange != 0) metrics.sample(labels, record.lastChange);
  }
}

}  // namespace tavrenix::monitor
