// Which metrics there are: one table for units, one for paths.
#include "monitor/health.hpp"
#include "monitor/metrics_text.hpp"

namespace tavrenix::monitor {

namespace {

using Number = std::optional<std::uint64_t>;
using Type = MetricsText::Type;

// A family of one number for each unit or path.
template <class Of>
struct Family {
  const char* name;
  Type type;
  const char* help;
  Number (*value)(const Of& of);
};

const Family<Unit> kUnitFamilies[] = {
    {"unit_paths", Type::gauge, "Paths of the unit.",
     [](const Unit& unit) { return Number(unit.paths.size()); }},
    {"unit_paths_usable", Type::gauge, "Paths that requests can go down now.",
     [](const Unit& unit) { return Number(usablePaths(unit)); }},
    {"unit_size_bytes", Type::gauge, "Size of the unit.",
     [](const Unit& unit) { return unit.size; }},
    {"unit_queueing", Type::gauge, "1 if requests wait while no path is usable, 0 if they fail.",
     [](const Unit& unit) { return Number(unit.queueing); }},
    {"unit_suspended", Type::gauge, "1 if the unit is suspended.",
     [](const Unit& unit) { return Number(unit.suspended); }},
    {"unit_commands_total", Type::counter, "Commands of the unit.",
     [](const Unit& unit) { return Number(unit.counters.commands); }},
};

const Family<Path> kPathFamilies[] = {
    {"path_enabled", Type::gauge, "1 if the driver may use the path.",
     [](const Path& path) { return Number(path.enabled); }},
    {"path_usable", Type::gauge, "1 if requests can go down the path now.",
     [](const Path& path) { return Number(isUsable(path)); }},
    {"path_commands_total", Type::counter, "Commands of the path.",
     [](const Path& path) { return path.counters ? Number(path.counters->commands) : Number(); }},
    {"path_failures_total", Type::counter, "How often the driver has failed the path.",
     [](const Path& path) { return path.failures; }},
    {"path_errors_total", Type::counter, "Requests that the path's disk ended with an error.",
     [](const Path& path) { return path.errors; }},
    {"path_timeouts_total", Type::counter, "Requests that timed out at the path's disk.",
     [](const Path& path) { return path.timeouts; }},
};

std::string named(const char* name) {
  return std::string("tavrenix_") + name;
}

std::string with(const std::string& labels, const char* name,
                 const std::optional<std::string>& value) {
  return value ? labels + ',' + label(name, *value) : labels;
}

void addBytes(MetricsText& metrics, const std::string& labels, const Counters& counters) {
  metrics.sample(labels + ",direction=\"read\"", counters.bytesReceived);
  metrics.sample(labels + ",direction=\"written\"", counters.bytesSent);
}

// One family with a sample for each that has the value.
template <class Of, class Value>
void addFamily(MetricsText& metrics, const char* name, Type type, const char* help,
               const std::vector<std::pair<const Of*, std::string>>& all, const Value& value) {
  metrics.family(named(name), type, help);
  for (const auto& [one, labels] : all) {
    if (const Number number = value(*one)) metrics.sample(labels, *number);
  }
}

void addUnits(MetricsText& metrics, const MetricsSource& source) {
  const auto& units = source.storage.units;
  metrics.family(named("unit_info"), Type::gauge, "The unit: its names and how it is used.");
  for (const auto& [unit, known] : units) {
    std::string labels = with(with(known, "alias", unit->alias), "device", unit->device);
    labels = with(with(labels, "wwid", unit->wwid), "vendor", unit->vendor);
    labels = with(with(labels, "product", unit->product), "algorithm", unit->algorithm);
    metrics.sample(with(labels, "selector", unit->selector), std::uint64_t{1});
  }
  for (const auto& family : kUnitFamilies) {
    addFamily(metrics, family.name, family.type, family.help, units, family.value);
  }
  addFamily(metrics, "unit_paths_expected", Type::gauge, "Paths that the unit should have.", units,
            source.expectedPaths);
  metrics.family(named("unit_bytes_total"), Type::counter, "Bytes of the unit by direction.");
  for (const auto& [unit, labels] : units) addBytes(metrics, labels, unit->counters);
}

void addPaths(MetricsText& metrics, const LabelledStorage& storage) {
  metrics.family(named("path_info"), Type::gauge, "The path: where it begins and ends.");
  for (const auto& [path, known] : storage.paths) {
    std::string labels =
        with(with(known, "interconnect", path->interconnect), "device", path->device);
    labels = with(with(labels, "host_port", path->hostPort), "target_port", path->targetPort);
    if (path->group) labels += ",group=\"" + std::to_string(*path->group) + '"';
    metrics.sample(labels, std::uint64_t{1});
  }
  metrics.family(named("path_state"), Type::gauge, "1 for the access state that the path has.");
  for (const auto& [path, labels] : storage.paths) {
    for (const char* state : kStates) {
      metrics.sample(labels + ",state=\"" + state + '"', std::uint64_t{path->state == state});
    }
  }
  for (const auto& family : kPathFamilies) {
    addFamily(metrics, family.name, family.type, family.help, storage.paths, family.value);
  }
  metrics.family(named("path_bytes_total"), Type::counter, "Bytes of the path by direction.");
  for (const auto& [path, labels] : storage.paths) {
    if (path->counters) addBytes(metrics, labels, *path->counters);
  }
}

}  // namespace

void addMetrics(MetricsText& metrics, const MetricsSource& source) {
  addUnits(metrics, source);
  addPaths(metrics, source.storage);
  const Host& host = source.host;
  if (host.driverPresent) {
    metrics.family(named("driver_present"), Type::gauge, "1 if the multipath driver is present.");
    metrics.sample("", std::uint64_t{*host.driverPresent});
  }
  if (host.generation) {
    metrics.family(named("generation_info"), Type::gauge,
                   "Another one after each change of units, paths or tables.");
    metrics.sample(label("generation", std::to_string(*host.generation)), std::uint64_t{1});
  }
}

void addCollector(MetricsText& metrics, bool success, double seconds) {
  metrics.family(named("collector_success"), Type::gauge, "1 if the storage could be read.");
  metrics.sample("", std::uint64_t{success});
  metrics.family(named("collector_duration_seconds"), Type::gauge, "How long reading took.");
  metrics.sample("", seconds);
  metrics.family(named("build_info"), Type::gauge, "The version of the program.");
  metrics.sample(label("version", TAVRENIX_VERSION), std::uint64_t{1});
}

}  // namespace tavrenix::monitor
