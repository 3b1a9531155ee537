#include "linux/machine.hpp"

#include <cerrno>

#include "linux/udev_record.hpp"
#include "linux/wwid.hpp"

namespace tavrenix::sys {

namespace {

void mixIn(std::uint64_t& hash, std::uint64_t value) {
  hash = ob::NumberKeyTraits::hash(hash * 31 + value);
}

std::string folderOf(DeviceNumber device) {
  return "/sys/dev/block/" + device.text();
}

// What stands for the link of a device number or of a host: a map, a path and a medium of one
// number have one.
EntryID linkOf(EntryName name) {
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

class Machine::Question {
 public:
  explicit Question(Machine& machine) : machine_(machine), lock_(machine.mutex_) {
    if (!machine.burst_.goesOn()) {
      machine.forgetAll();
    } else if (machine.burst_.needsCheck()) {
      machine.forgetWhatNothingTellsOf();
      machine.readGeneration();
    }
  }
  Question(const Question&) = delete;
  Question& operator=(const Question&) = delete;
  ~Question() { machine_.burst_.answered(); }

 private:
  Machine& machine_;
  std::lock_guard<std::mutex> lock_;
};

std::uint32_t Machine::generation() {
  const Question question(*this);
  return readGeneration();
}

void Machine::forget() {
  const Question question(*this);
  forgetAll();
}

void Machine::answered() {
  const std::lock_guard lock(mutex_);
  burst_.answered();
}

void Machine::forgetAll() {
  inodes_.clear();
  units_.clear();
  statuses_.clear();
  places_.clear();
  identities_.clear();
  unitOfPath_.clear();
  interconnects_.clear();
  portIdentifiers_.clear();
  forgetWhatNothingTellsOf();
  burst_.checked();
}

void Machine::forgetWhatNothingTellsOf() {
  labels_.clear();
  if (burst_.paused()) counterQuestions_ = 0;
  counters_.reset();
}

std::uint32_t Machine::readGeneration() {
  std::uint32_t number = 0;
  const auto maps = port_.list();
  if (maps.status == 0) {
    // Events of every device are counted in one number; what happens inside a map, in the map's
    // own.
    const auto events = files_.read("/sys/kernel/uevent_seqnum");
    std::uint64_t hash = events ? parseNumber(trim(*events)).value_or(0) : 0;
    for (const auto& map : maps.value) {
      mixIn(hash, (std::uint64_t{map.device.major} << 52) |
                      (std::uint64_t{map.device.minor} << 32) | map.event);
    }
    number = static_cast<std::uint32_t>(hash ^ (hash >> 32));
    if (number == 0) number = 1;
  }
  if (number != generation_) forgetAll();
  generation_ = number;
  burst_.checked();
  return number;
}

Answer<std::vector<EntryID>> Machine::units() {
  const Question question(*this);
  const auto maps = port_.list();
  if (maps.status != 0) return {maps.status, {}};
  Answer<std::vector<EntryID>> found;
  for (const auto& map : maps.value) {
    if (map.uuid.empty()) {  // none, or a kernel that does not tell it here
      const auto read = readMap(map.device);
      if (read.status != 0 || !isMultipathUuid(read.value->lines.uuid)) continue;
      if (const auto id = identify(deviceEntry(Kind::kUnit, map.device))) {
        units_.set(*id, read.value);
        found.value.push_back(*id);
      }
    } else if (isMultipathUuid(map.uuid)) {
      if (const auto id = identify(deviceEntry(Kind::kUnit, map.device)))
        found.value.push_back(*id);
    }
  }
  return found;
}

bool Machine::exists(EntryID id) {
  const Question question(*this);
  return verify(id);
}

std::shared_ptr<const Unit> Machine::unit(EntryID id) {
  const Question question(*this);
  return readUnit(id);
}

std::optional<MultipathStatus> Machine::status(EntryID id) {
  const Question question(*this);
  if (const auto* kept = statuses_.find(id)) return *kept;
  if (nameOf(id).kind != Kind::kUnit || !verify(id)) return std::nullopt;
  const auto read = port_.read(nameOf(id).device(), Lines::kStatus);
  std::optional<MultipathStatus> status;
  if (read.status == 0 && read.value.targets.size() == 1) {
    status = parseMultipathStatus(read.value.targets.front().line);
  }
  statuses_.set(id, status);
  return status;
}

std::vector<EntryID> Machine::pathsOf(const Unit& unit) {
  const Question question(*this);
  std::vector<EntryID> found;
  const auto unitID = identify(deviceEntry(Kind::kUnit, unit.device));
  for (const auto device : unit.paths) {
    const auto id = identify(deviceEntry(Kind::kPath, device));
    if (id) placeOf(*id);  // notices that it has gone since its link was listed
    // Gone, though the map has not let go of it yet.
    if (!id || !verify(*id)) continue;
    if (unitID) unitOfPath_.set(*id, *unitID);
    found.push_back(*id);
  }
  return found;
}

Identity Machine::identityOf(EntryID unit) {
  const Question question(*this);
  const Identity* identity = rememberIdentity(unit);
  return identity == nullptr ? Identity{} : *identity;
}

Identity Machine::identityOfPath(EntryID path) {
  const Question question(*this);
  if (const EntryID* unit = unitOfPath_.find(path)) {
    if (const Identity* identity = rememberIdentity(*unit)) return *identity;
  }
  return readIdentity(path);
}

std::shared_ptr<const Place> Machine::place(EntryID path) {
  const Question question(*this);
  return placeOf(path);
}

std::shared_ptr<const Place> Machine::placeOf(EntryID path) {
  if (nameOf(path).kind != Kind::kPath || !verify(path)) return nullptr;
  if (const auto* known = places_.find(path)) return *known;
  const auto link = files_.link(folderOf(nameOf(path).device()));
  if (!link) inodes_.set(linkOf(nameOf(path)), std::nullopt);
  auto read = link ? parsePlace(*link) : std::nullopt;
  if (!read) return nullptr;
  auto place = std::make_shared<const Place>(std::move(*read));
  places_.set(path, place);
  return place;
}

std::optional<std::string> Machine::counters(EntryID id) {
  const Question question(*this);
  if (!verify(id)) return std::nullopt;
  const DeviceNumber device = nameOf(id).device();
  if (counterQuestions_++ >= kFewQuestions && (!counters_ || counters_->taken(device))) {
    counters_.emplace(files_.readTable("/proc/diskstats").value_or(""));
  }
  auto counters = counters_ ? counters_->take(device) : std::nullopt;
  return counters ? counters : files_.read(folderOf(device) + "/stat");
}

std::optional<std::string> Machine::label(EntryID medium) {
  const Question question(*this);
  if (const auto* known = labels_.find(medium)) return *known;
  const auto record = files_.read("/run/udev/data/b" + nameOf(medium).device().text());
  auto label = record ? fileSystemLabel(*record) : std::nullopt;
  labels_.set(medium, label);
  return label;
}

std::optional<EntryID> Machine::entry(EntryName name) {
  const Question question(*this);
  return identify(name);
}

std::optional<EntryID> Machine::hostOf(EntryID path) {
  const auto where = place(path);
  return where && where->address ? entry(hostEntry(where->address->host)) : std::nullopt;
}

std::string Machine::interconnectOfPath(EntryID path) {
  const auto where = place(path);
  if (!where || !where->address) return {};
  const std::uint32_t number = where->address->host;
  if (where->transport != Transport::kUnknown) {
    return interconnectOf(files_, number, where->transport);
  }
  const Question question(*this);
  const auto host = identify(hostEntry(number));
  if (!host) return {};
  if (!interconnects_.contains(*host)) {
    interconnects_.set(*host, interconnectOf(files_, number, where->transport));
  }
  return *interconnects_.find(*host);
}

std::vector<std::uint8_t> Machine::portIdentifierOfHost(EntryID host) {
  const Question question(*this);
  if (nameOf(host).kind != Kind::kHost || !verify(host)) return {};
  if (!portIdentifiers_.contains(host)) {
    portIdentifiers_.set(host, portIdentifierOf(files_, nameOf(host).number));
  }
  return *portIdentifiers_.find(host);
}

std::optional<std::uint64_t> Machine::inodeOf(EntryName name) {
  const EntryID key = linkOf(name);
  if (const auto* known = inodes_.find(key)) return *known;
  const auto inode = files_.inode(sys::folderOf(name));
  inodes_.set(key, inode);
  if (inodes_.size() == kFewQuestions) readInodesOfAll(key);
  return inode;
}

void Machine::readInodesOfAll(EntryID known) {
  decltype(inodes_) listed;
  for (const auto& [name, inode] : files_.entries("/sys/dev/block")) {
    if (const auto device = parseDeviceNumber(name))
      listed.set(linkOf(deviceEntry(Kind::kUnit, *device)), inode);
  }
  // Some file systems list other numbers than they tell of each file; sysfs is none of them.
  const auto* same = listed.find(known);
  if (same != nullptr && *same == *inodes_.find(known)) inodes_ = std::move(listed);
}

bool Machine::verify(EntryID id) {
  if (nameOf(id).kind == Kind::kNone) return false;
  const auto inode = inodeOf(nameOf(id));
  return inode && makeEntryID(nameOf(id), *inode) == id;
}

std::optional<EntryID> Machine::identify(EntryName name) {
  const auto inode = inodeOf(name);
  if (!inode) return std::nullopt;
  return makeEntryID(name, *inode);
}

std::shared_ptr<const Unit> Machine::readUnit(EntryID id) {
  if (nameOf(id).kind != Kind::kUnit || !verify(id)) return nullptr;
  if (const auto* kept = units_.find(id)) return *kept;
  const auto read = readMap(nameOf(id).device());
  if (read.status != 0) return nullptr;
  units_.set(id, read.value);
  return read.value;
}

Answer<std::shared_ptr<const Unit>> Machine::readMap(DeviceNumber device) {
  auto read = port_.read(device, Lines::kTable);
  if (read.status != 0) return {read.status, nullptr};
  auto unit = std::make_shared<Unit>();
  unit->device = device;
  unit->lines = std::move(read.value);
  const auto& targets = unit->lines.targets;
  if (targets.size() == 1 && targets.front().type == "multipath") {
    unit->table = parseMultipathTable(targets.front().line);
  }
  if (unit->table) unit->paths = pathsIn(*unit->table);
  return {0, std::move(unit)};
}

const Identity* Machine::rememberIdentity(EntryID id) {
  if (const Identity* known = identities_.find(id)) return known;
  const auto unit = readUnit(id);
  if (!unit || unit->paths.empty()) return nullptr;
  for (const auto disk : unit->paths) {
    const auto path = identify(deviceEntry(Kind::kPath, disk));
    const Identity identity = path ? readIdentity(*path) : Identity{};
    if (identity.vendor.empty() && identity.product.empty()) continue;  // not there, not SCSI
    identities_.set(id, identity);
    return identities_.find(id);
  }
  return nullptr;
}

Identity Machine::readIdentity(EntryID path) {
  const auto place = placeOf(path);
  if (!place) return {};
  const std::string folder = place->device + '/';
  if (const auto data = files_.read(folder + "inquiry")) {
    if (const auto inquiry = parseInquiry(*data)) return *inquiry;
  }
  const auto [vendor, model, type] =
      files_.readTogether<3>({folder + "vendor", folder + "model", folder + "type"});
  const auto number = type ? parseNumber(trim(*type)) : std::nullopt;
  return {printable(trim(vendor.value_or(""))), printable(trim(model.value_or(""))),
          static_cast<std::uint8_t>(number.value_or(0) & 0x1F)};
}

}  // namespace tavrenix::sys
