#include "linux/topology/snapshot.hpp"

#include <algorithm>

#include "linux/topology/ports.hpp"
#include "runtime/byte_text.hpp"

namespace tavrenix::sys {

namespace {

void mixIn(std::uint64_t& hash, std::uint64_t value) {
  hash = ob::NumberKeyTraits::hash(hash * 31 + value);
}

// Mixes two kinds of numbers: the one number of all device events of the machine, and the event
// number of each map, which counts changes inside the map.
std::uint32_t generationOf(std::uint64_t events, const std::vector<ListedMap>& maps) {
  std::uint64_t hash = events;
  for (const auto& map : maps) {
    mixIn(hash, (std::uint64_t{map.device.major} << 52) | (std::uint64_t{map.device.minor} << 32) |
                    map.event);
  }
  const auto number = static_cast<std::uint32_t>(hash ^ (hash >> 32));
  return number == 0 ? 1 : number;
}

// Returns the key of a link in sysfs. A map, a path and a medium of the same number have the same
// link.
EntryID linkOf(EntryKey name) {
  return makeEntryID({name.kind == Kind::kHost ? Kind::kHost : Kind::kUnit, name.number}, 0);
}

std::vector<DeviceNumber> pathsIn(const MultipathTable& table) {
  std::vector<DeviceNumber> paths;
  for (const auto& group : table.groups) {
    for (const auto& path : group.paths) paths.push_back(path.device);
  }
  return paths;
}

}  // namespace

Snapshot::Snapshot(const HostFiles& files, DeviceMapperPort& port,
                   std::optional<std::uint64_t> events)
    : files_(files), port_(port), events_(events), maps_(port.list()) {
  if (maps_.status == 0) generation_ = generationOf(events.value_or(0), maps_.value);
}

Answer<std::vector<EntryID>> Snapshot::units() {
  if (listedUnits_) return *listedUnits_;
  auto& found = listedUnits_.emplace();
  found.status = maps_.status;
  for (const auto& map : maps_.value) {
    std::shared_ptr<const Unit> unit;
    if (map.uuid.empty()) {  // the map has none, or the kernel does not list it
      unit = readMap(map.device).value;
      if (!unit) continue;
    }
    if (!isMultipathUuid(unit ? unit->lines.uuid : map.uuid)) continue;
    const auto id = identify(deviceEntry(Kind::kUnit, map.device));
    if (!id) continue;
    if (unit) units_.set(*id, unit);
    found.value.push_back(*id);
  }
  return found;
}

bool Snapshot::isUnit(DeviceNumber device) {
  const auto id = identify(deviceEntry(Kind::kUnit, device));
  const auto all = units();
  return id && std::find(all.value.begin(), all.value.end(), *id) != all.value.end();
}

std::optional<EntryID> Snapshot::identify(EntryKey name) {
  const auto inode = inodeOf(name);
  if (!inode) return std::nullopt;
  return makeEntryID(name, *inode);
}

bool Snapshot::has(EntryID id) {
  return keyOf(id).kind != Kind::kNone && identify(keyOf(id)) == id;
}

std::optional<std::uint64_t> Snapshot::inodeOf(EntryKey name) {
  if (name.kind != Kind::kHost && !devicesListed_) listDevices();
  const EntryID key = linkOf(name);
  if (const auto* known = inodes_.find(key)) return *known;
  const auto inode = files_.inode(folderOf(name));
  inodes_.set(key, inode);
  return inode;
}

// Reads the inode numbers of all block devices at once. A device that is not in the folder is
// looked up alone later, which shows that it is gone.
void Snapshot::listDevices() {
  devicesListed_ = true;
  const auto entries = files_.entries("/sys/dev/block");
  if (!entries) return;
  for (const auto& [name, inode] : *entries) {
    if (const auto device = parseDeviceNumber(name)) {
      inodes_.set(linkOf(deviceEntry(Kind::kUnit, *device)), inode);
    }
  }
}

std::shared_ptr<const Unit> Snapshot::unit(EntryID id) {
  if (const auto* known = units_.find(id)) return *known;
  if (keyOf(id).kind != Kind::kUnit || !has(id)) return nullptr;
  auto read = readMap(keyOf(id).device());
  if (read.status != 0) return nullptr;
  units_.set(id, read.value);
  return read.value;
}

Answer<std::shared_ptr<const Unit>> Snapshot::readMap(DeviceNumber device) {
  auto read = port_.read(device, Lines::kTable);
  if (read.status != 0) return {read.status, nullptr};
  auto unit = std::make_shared<Unit>();
  unit->device = device;
  unit->lines = std::move(read.value);
  unit->table = tableOf(unit->lines);
  if (unit->table) unit->paths = pathsIn(*unit->table);
  return {0, std::move(unit)};
}

std::vector<EntryID> Snapshot::pathsOf(const Unit& unit) {
  std::vector<EntryID> found;
  const auto unitID = identify(deviceEntry(Kind::kUnit, unit.device));
  for (const auto device : unit.paths) {
    const auto id = identify(deviceEntry(Kind::kPath, device));
    if (!id || !place(*id)) continue;
    if (unitID) unitOfPath_.set(*id, *unitID);
    found.push_back(*id);
  }
  return found;
}

std::shared_ptr<const Place> Snapshot::place(EntryID path) {
  if (const auto* known = places_.find(path)) return *known;
  if (keyOf(path).kind != Kind::kPath || !has(path)) return nullptr;
  const auto link = files_.link(folderOf(keyOf(path)));
  if (!link) inodes_.set(linkOf(keyOf(path)), std::nullopt);  // gone since it was listed
  auto read = link ? parsePlace(*link) : std::nullopt;
  auto place = read ? std::make_shared<const Place>(std::move(*read)) : nullptr;
  places_.set(path, place);
  return place;
}

Identity Snapshot::identityOf(EntryID id) {
  if (const Identity* known = identities_.find(id)) return *known;
  const auto unit = this->unit(id);
  if (!unit) return {};
  for (const auto disk : unit->paths) {
    const auto path = identify(deviceEntry(Kind::kPath, disk));
    Identity identity = path ? readIdentity(*path) : Identity{};
    if (identity.vendor.empty() && identity.product.empty()) continue;  // gone, or no SCSI disk
    identities_.set(id, identity);
    return identity;
  }
  return {};
}

Identity Snapshot::identityOfPath(EntryID path) {
  if (const EntryID* unit = unitOfPath_.find(path)) {
    Identity identity = identityOf(*unit);
    if (!identity.vendor.empty() || !identity.product.empty()) return identity;
  }
  return readIdentity(path);
}

Identity Snapshot::readIdentity(EntryID path) {
  const auto place = this->place(path);
  if (!place) return {};
  const std::string folder = place->device + '/';
  if (const auto data = files_.read(folder + "inquiry")) {
    if (const auto inquiry = parseInquiry(data.text)) return *inquiry;
  }
  const auto texts = files_.readTogether({folder + "vendor", folder + "model", folder + "type"});
  const auto type = parseNumber(trim(texts[2].text));
  // 0 is the type of disks, so a device must not get it because its type cannot be read.
  if (!type && !texts[2].isAbsent()) return {};
  return {ob::printable(trim(texts[0].text)), ob::printable(trim(texts[1].text)),
          static_cast<std::uint8_t>(type.value_or(0) & 0x1F)};
}

std::string Snapshot::interconnectOfPath(EntryID path) {
  const auto place = this->place(path);
  if (!place || !place->address) return {};
  const std::uint32_t number = place->address->host;
  if (place->transport != Transport::kUnknown) {
    return interconnectOf(files_, number, place->transport);
  }
  const auto host = identify(hostEntry(number));
  if (!host) return {};
  if (!interconnects_.contains(*host)) {
    interconnects_.set(*host, interconnectOf(files_, number, place->transport));
  }
  return *interconnects_.find(*host);
}

std::vector<std::uint8_t> Snapshot::portIdentifierOfHost(EntryID host) {
  if (keyOf(host).kind != Kind::kHost || !has(host)) return {};
  if (!portIdentifiers_.contains(host)) {
    portIdentifiers_.set(host, portIdentifierOf(files_, keyOf(host).number));
  }
  return *portIdentifiers_.find(host);
}

}  // namespace tavrenix::sys
