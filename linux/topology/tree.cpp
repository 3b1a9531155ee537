#include "linux/topology/tree.hpp"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "host/registry_names.hpp"

namespace tavrenix::sys {

namespace {

void add(Entries& entries, std::optional<EntryID> id) {
  if (id && std::find(entries.begin(), entries.end(), *id) == entries.end()) {
    entries.push_back(*id);
  }
}

std::optional<DeviceNumber> numberOfDisk(const Machine& machine, const std::string& name) {
  const auto text = machine.files().read("/sys/block/" + name + "/dev");
  return text ? parseDeviceNumber(trim(text.text)) : std::nullopt;
}

// Returns the devices in the folder "/holders" or "/slaves" of a device, by number.
std::vector<DeviceNumber> neighbours(const Machine& machine, EntryID id, const char* folder) {
  std::vector<DeviceNumber> found;
  const auto listed = machine.files().entries(folderOf(keyOf(id)) + folder);
  if (!listed) return found;
  for (const auto& [name, inode] : *listed) {
    if (const auto device = numberOfDisk(machine, name)) found.push_back(*device);
  }
  std::sort(found.begin(), found.end());
  return found;
}

// Returns the paths of all units that are reached through the host.
Entries pathsBelow(Machine& machine, EntryID host) {
  Entries found;
  for (const EntryID unitID : machine.units().value) {
    const auto unit = machine.unit(unitID);
    if (!unit) continue;
    for (const EntryID path : machine.pathsOf(*unit)) {
      if (machine.hostOf(path) == host) add(found, path);
    }
  }
  return found;
}

void descend(Machine& machine, EntryID id, bool recursively, Entries& found) {
  for (const EntryID child : childrenOf(machine, id)) {
    if (std::find(found.begin(), found.end(), child) != found.end()) continue;
    found.push_back(child);
    if (recursively) descend(machine, child, true, found);
  }
}

}  // namespace

Entries parentsOf(Machine& machine, EntryID id) {
  Entries found;
  switch (keyOf(id).kind) {
    case Kind::kUnit:
      if (const auto unit = machine.unit(id)) return machine.pathsOf(*unit);
      break;
    case Kind::kPath:
      add(found, machine.hostOf(id));
      break;
    case Kind::kMedium: {
      const DeviceNumber own = keyOf(id).device();
      if (machine.isUnit(own)) {
        add(found, machine.entry(deviceEntry(Kind::kUnit, own)));
        break;
      }
      for (const auto device : neighbours(machine, id, "/slaves")) {
        add(found, machine.entry(deviceEntry(Kind::kMedium, device)));
      }
      break;
    }
    case Kind::kHost:
    case Kind::kNone:
      break;
  }
  return found;
}

Entries childrenOf(Machine& machine, EntryID id) {
  Entries found;
  switch (keyOf(id).kind) {
    case Kind::kHost:
      return pathsBelow(machine, id);
    case Kind::kPath:
      for (const auto device : neighbours(machine, id, "/holders")) {
        if (machine.isUnit(device)) add(found, machine.entry(deviceEntry(Kind::kUnit, device)));
      }
      break;
    case Kind::kUnit:
      if (machine.exists(id)) {
        add(found, machine.entry(deviceEntry(Kind::kMedium, keyOf(id).device())));
      }
      break;
    case Kind::kMedium:
      if (isLeaf(machine, id)) break;
      for (const auto device : neighbours(machine, id, "/holders")) {
        add(found, machine.entry(deviceEntry(Kind::kMedium, device)));
      }
      break;
    case Kind::kNone:
      break;
  }
  return found;
}

Entries relativesOf(Machine& machine, EntryID id, std::uint32_t options) {
  const bool recursively = (options & kIterateRecursively) != 0;
  Entries found;
  if ((options & kIterateParents) == 0) {
    descend(machine, id, recursively, found);
    return found;
  }
  found = parentsOf(machine, id);
  for (std::size_t next = 0; recursively && next < found.size(); ++next) {
    for (const EntryID parent : parentsOf(machine, found[next])) add(found, parent);
  }
  return found;
}

Answer<Entries> entriesOfClass(Machine& machine, std::string_view className) {
  auto units = machine.units();
  if (units.status != 0 || className == registry::kLogicalUnitClass) return units;
  ob::NumberMap<bool> met;
  Answer<Entries> found;
  const auto take = [&](EntryID id) {
    if (!conformsTo(keyOf(id).kind, className) || met.contains(id)) return;
    met.set(id, true);
    found.value.push_back(id);
  };
  for (const EntryID unit : units.value) {
    take(unit);
    for (const auto id : relativesOf(machine, unit, kIterateRecursively | kIterateParents))
      take(id);
    if (className == registry::kPathClass) continue;  // no path is below a unit
    for (const auto id : relativesOf(machine, unit, kIterateRecursively)) take(id);
  }
  return found;
}

Answer<Entries> announcedEntries(Machine& machine, const std::vector<std::string>& classes) {
  auto units = machine.units();
  if (units.status != 0) return units;
  Entries bare;
  for (const EntryID id : units.value) {
    const auto unit = machine.unit(id);
    if (!unit && machine.exists(id)) return {-EAGAIN, {}};
    if (!unit || unit->lines.targets.empty()) bare.push_back(id);
  }
  Answer<Entries> found;
  for (const auto& className : classes) {
    auto listed = entriesOfClass(machine, className);
    if (listed.status != 0) return listed;
    std::copy_if(listed.value.begin(), listed.value.end(), std::back_inserter(found.value),
                 [&](EntryID id) { return std::find(bare.begin(), bare.end(), id) == bare.end(); });
  }
  return found;
}

bool conformsTo(Kind kind, std::string_view className) {
  if (kind == Kind::kNone) return false;
  if (className == registry::kServiceClass) return true;
  return (kind == Kind::kUnit && className == registry::kLogicalUnitClass) ||
         (kind == Kind::kPath && className == registry::kPathClass) ||
         (kind == Kind::kMedium && className == registry::kMediaClass);
}

bool isLeaf(Machine& machine, EntryID medium) {
  // What lies on a map has it open, so the folders of most maps need not be read.
  const auto map = machine.unit(withKind(medium, Kind::kUnit));
  if (map && map->lines.openCount == 0) return true;
  const auto holders = machine.files().entries(folderOf(keyOf(medium)) + "/holders");
  return holders && holders->empty();
}

}  // namespace tavrenix::sys
