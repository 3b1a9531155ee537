#include "monitor/json_document.hpp"

#include <chrono>

#include "monitor/health.hpp"

namespace tavrenix::monitor {

namespace {

template <class T>
void add(Json& object, const char* name, const std::optional<T>& value) {
  if (value) object[name] = *value;
}

Json countersAsJson(const Counters& counters) {
  return {{"bytes_sent", counters.bytesSent},
          {"bytes_received", counters.bytesReceived},
          {"commands", counters.commands}};
}

void addPath(Json& object, const Path& path) {
  object["identifier"] = path.identifier;
  object["state"] = path.state;
  object["enabled"] = path.enabled;
  object["usable"] = isUsable(path);
  add(object, "interconnect", path.interconnect);
  add(object, "host_port", path.hostPort);
  add(object, "target_port", path.targetPort);
  add(object, "device", path.device);
  add(object, "device_number", path.deviceNumber);
  add(object, "address", path.address);
  add(object, "group", path.group);
  add(object, "driver_state", path.driverState);
  add(object, "device_state", path.deviceState);
  add(object, "access_state", path.accessState);
  add(object, "failures", path.failures);
  add(object, "errors", path.errors);
  add(object, "timeouts", path.timeouts);
  add(object, "in_flight", path.inFlight);
  if (path.counters) object["counters"] = countersAsJson(*path.counters);
}

Json volumesAsJson(const std::vector<Volume>& volumes) {
  Json list = Json::array();
  for (const Volume& volume : volumes) {
    Json object = Json::object();
    add(object, "name", volume.name);
    add(object, "device", volume.device);
    add(object, "size_bytes", volume.size);
    list.push_back(std::move(object));
  }
  return list;
}

Json unitAsJson(const Unit& unit, bool withPaths) {
  Json object = {{"identifier", unit.identifier}};
  add(object, "alias", unit.alias);
  add(object, "vendor", unit.vendor);
  add(object, "product", unit.product);
  add(object, "device", unit.device);
  add(object, "map_name", unit.mapName);
  add(object, "wwid", unit.wwid);
  add(object, "size_bytes", unit.size);
  add(object, "algorithm", unit.algorithm);
  add(object, "batch_count", unit.batchCount);
  add(object, "selector", unit.selector);
  add(object, "hardware_handler", unit.handler);
  add(object, "queueing", unit.queueing);
  add(object, "suspended", unit.suspended);
  add(object, "open_count", unit.openCount);
  object["group_states"] = unit.groups;
  object["paths_total"] = unit.paths.size();
  object["paths_usable"] = usablePaths(unit);
  object["counters"] = countersAsJson(unit.counters);
  object["volumes"] = volumesAsJson(unit.volumes);
  if (!withPaths) return object;
  Json paths = Json::array();
  for (const Path& path : unit.paths) addPath(paths.emplace_back(Json::object()), path);
  object["paths"] = std::move(paths);
  return object;
}

Json hostAsJson(const Host& host) {
  Json object = Json::object();
  add(object, "backing", host.backing);
  add(object, "driver_present", host.driverPresent);
  add(object, "kernel_release", host.kernelRelease);
  add(object, "generation", host.generation);
  return object;
}

Json beginDocument(const Host& host) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return {{"version", {{"major", 1}, {"minor", 1}}},
          {"time_unix_ms", std::chrono::duration_cast<std::chrono::milliseconds>(now).count()},
          {"host", hostAsJson(host)}};
}

}  // namespace

Json documentOfUnits(const Storage& storage, bool withPaths) {
  Json document = beginDocument(storage.host);
  Json units = Json::array();
  for (const Unit& unit : storage.units) units.push_back(unitAsJson(unit, withPaths));
  document["units"] = std::move(units);
  return document;
}

Json documentOfPaths(const Storage& storage) {
  Json document = beginDocument(storage.host);
  Json paths = Json::array();
  for (const Unit& unit : storage.units) {
    for (const Path& path : unit.paths) {
      Json object = {{"unit", unit.identifier}};
      add(object, "unit_device", unit.device);
      addPath(object, path);
      paths.push_back(std::move(object));
    }
  }
  document["paths"] = std::move(paths);
  return document;
}

std::string textOf(const Json& document, bool onOneLine) {
  constexpr bool kAsciiOnly = true;
  // Text that is not UTF-8, as of a command line, must not keep a journal from being written.
  return document.dump(onOneLine ? -1 : 2, ' ', kAsciiOnly, Json::error_handler_t::replace) + '\n';
}

}  // namespace tavrenix::monitor
