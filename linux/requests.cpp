#include "linux/requests.hpp"

#include <algorithm>
#include <cerrno>

#include "linux/properties.hpp"
#include "linux/reload.hpp"
#include "model/registry_names.hpp"
#include "runtime/values.hpp"

namespace tavrenix::sys {

namespace {

// The change that one member of a path-state request asks for, or the error number of why it is
// none.
Answer<PathChange> readChange(Machine& machine, const Unit& unit, std::string_view identifier,
                              const ob::Object& value) {
  const auto* number = ob::as<ob::Number>(&value);
  const auto state = number == nullptr ? std::nullopt : number->asInt64();
  const bool use = state == registry::kMPIOPathStateRequestEnable;
  if (!use && state != registry::kMPIOPathStateRequestDisable) return {-EINVAL, {}};
  for (const EntryID path : machine.pathsOf(unit)) {
    if (textOfIdentifier(identifierOfPath(machine, path)) != identifier) continue;
    const auto place = machine.place(path);
    if (place) return {0, {nameOf(path).device(), place->name, use}};
  }
  return {-ENOENT, {}};
}

}  // namespace

KernelStatus Requests::carryOut(EntryID id, const ob::Dictionary& request) {
  const std::lock_guard lock(oneAtATime_);
  machine_.forget();  // decide on what is true now
  const auto unit = machine_.unit(id);
  if (!unit) return -ENXIO;
  if (unit->lines.suspended) return -EBUSY;
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
  // 0 stands for a count that was never known: what is set stays, and one request in a row is the
  // least.
  const std::uint64_t repeat =
      *count != 0 ? *count : std::max<std::uint64_t>(repeatCount(*unit.table), 1);
  return reload(machine_.port(), unit.device, *selector, repeat);
}

int Requests::setPathStates(const Unit& unit, const ob::Dictionary& states) {
  std::vector<PathChange> changes;
  for (const auto& [identifier, value] : states.pairs()) {
    auto change = readChange(machine_, unit, identifier->view(), *value);
    if (change.status != 0) return change.status;  // before any path is touched
    changes.push_back(std::move(change.value));
  }
  return switchPaths(machine_.port(), daemon_, unit.device, changes);
}

}  // namespace tavrenix::sys
