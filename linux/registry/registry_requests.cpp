#include "linux/registry/registry_requests.hpp"

#include <algorithm>
#include <cerrno>

#include "host/registry_names.hpp"
#include "linux/registry/entry_properties.hpp"
#include "linux/registry/reload.hpp"
#include "runtime/byte_text.hpp"
#include "runtime/values.hpp"

namespace tavrenix::sys {

KernelStatus Requests::carryOut(EntryID id, const ob::Dictionary& request) {
  const auto lock = machine_.port().lockChanges();
  if (lock.status != 0) return lock.status;
  machine_.forget();  // the previous holder of the lock may have changed the map
  const auto unit = machine_.unit(id);
  if (!unit) return -ENXIO;
  if (unit->lines.suspended) return -EBUSY;
  if (const int status = clearLeftTable(machine_.port(), unit->device); status != 0) return status;
  const auto* states = request.valueAs<ob::Dictionary>(registry::kPathState);
  const int status =
      states != nullptr ? setPathStates(*unit, *states) : setAlgorithm(*unit, request);
  machine_.forget();
  return status;
}

int Requests::setAlgorithm(const Unit& unit, const ob::Dictionary& request) {
  const auto* algorithm = request.valueAs<ob::String>(registry::kAlgorithm);
  const Selector* selector =
      algorithm == nullptr ? nullptr : selectorForAlgorithm(algorithm->view());
  const auto* number = request.valueAs<ob::Number>(registry::kBatchCount);
  const auto count = number == nullptr ? std::optional<std::uint64_t>(0) : number->asUInt64();
  if (selector == nullptr || !count || *count > UINT32_MAX || !unit.table) return -EINVAL;
  // The model sends 0 if it never knew a count: the map keeps its own, which is at least 1.
  const std::uint64_t repeat =
      *count != 0 ? *count : std::max<std::uint64_t>(repeatCount(*unit.table), 1);
  return reload(machine_.port(), unit.device, *selector, repeat);
}

int Requests::setPathStates(const Unit& unit, const ob::Dictionary& states) {
  std::vector<PathChange> changes;
  for (const auto& [identifier, state] : states.pairs()) {
    auto change = readPathChange(unit, identifier->view(), *state);
    if (change.status != 0) return change.status;  // before any path is touched
    changes.push_back(std::move(change.value));
  }
  int result = 0;
  for (const auto& change : changes) {
    const int status = switchPath(unit.device, change);
    if (result == 0) result = status;
  }
  return result != 0 ? result : checkPaths(unit.device, changes);
}

Answer<Requests::PathChange> Requests::readPathChange(const Unit& unit, std::string_view identifier,
                                                      const ob::Object& state) {
  const auto* number = ob::as<ob::Number>(&state);
  const auto value = number == nullptr ? std::nullopt : number->asInt64();
  const bool use = value == registry::kMPIOPathStateRequestEnable;
  if (!use && value != registry::kMPIOPathStateRequestDisable) return {-EINVAL, {}};
  for (const EntryID path : machine_.pathsOf(unit)) {
    if (ob::hexadecimal(identifierOfPath(machine_, path)) != identifier) continue;
    const auto place = machine_.place(path);
    if (place) return {0, {keyOf(path).device(), place->name, use}};
  }
  return {-ENOENT, {}};
}

int Requests::switchPath(DeviceNumber map, const PathChange& change) {
  const std::string verb = change.use ? "reinstate" : "fail";
  const auto [status, reply] = daemon_.ask(verb + " path " + change.name);
  if (status != 0 && status != -ENOENT) return status;
  if (status == 0 && reply == DaemonReply::kDone) return 0;
  if (status == 0 && reply == DaemonReply::kTooLate) return -ETIMEDOUT;
  // No daemon runs, or it does not look after the path.
  return machine_.port().message(map, verb + "_path " + change.device.text());
}

int Requests::checkPaths(DeviceNumber map, const std::vector<PathChange>& changes) {
  const auto lines = machine_.port().read(map, Lines::kStatus);
  if (lines.status != 0) return lines.status;
  const auto now = statusOf(lines.value);
  const bool done = now && std::all_of(changes.begin(), changes.end(), [&](const auto& change) {
                      return now->uses(change.device) == change.use;
                    });
  return done ? 0 : -EIO;
}

}  // namespace tavrenix::sys
