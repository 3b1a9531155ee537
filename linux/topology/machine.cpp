#include "linux/topology/machine.hpp"

#include <algorithm>
#include <array>

#include "linux/text/identity.hpp"

namespace tavrenix::sys {

using Lock = ob::MutexLock;

namespace {

std::array<std::string, 2> stateFiles(const Place& place) {
  return {place.device + "/state", place.device + "/access_state"};
}

}  // namespace

Machine::Look::Look(Machine& machine)
    : machine_(machine), burst_(machine.files_), thread_(std::this_thread::get_id()) {
  const Lock lock(machine_.mutex_);
  ++machine_.views_[thread_].looks;
}

Machine::Look::~Look() {
  const Lock lock(machine_.mutex_);
  const auto view = machine_.views_.find(thread_);
  if (--view->second.looks == 0) machine_.views_.erase(view);
}

Machine::View* Machine::view() {
  const auto found = views_.find(std::this_thread::get_id());
  return found == views_.end() ? nullptr : &found->second;
}

Snapshot& Machine::snapshot() {
  View* const view = this->view();
  if (snapshot_ && view != nullptr && view->checked) return *snapshot_;
  if (!snapshot_ || !snapshot_->events() || lastEvent() != snapshot_->events()) renew();
  if (view != nullptr) view->checked = true;
  return *snapshot_;
}

void Machine::renew() {
  // Reads the number first, so that any later event makes the snapshot invalid.
  const auto events = lastEvent();
  setSnapshot(Snapshot(files_, port_, events));
}

void Machine::setSnapshot(Snapshot fresh) {
  snapshot_.emplace(std::move(fresh));
  ++snapshotNumber_;
  labels_ = {};  // those of media that have gone would stay
}

// Returns the number of the kernel's last event, or std::nullopt if it cannot be read.
std::optional<std::uint64_t> Machine::lastEvent() {
  if (!eventCounter_) eventCounter_ = files_.open("/sys/kernel/uevent_seqnum");
  const auto text = HostFiles::readAgain(eventCounter_);
  return text ? parseNumber(trim(text.text)) : std::nullopt;
}

std::uint32_t Machine::generation() {
  const Lock lock(mutex_);
  const bool same = snapshot_ && snapshot_->events() && lastEvent() == snapshot_->events();
  if (!same || port_.hasChangedSinceList()) {
    const auto events = lastEvent();
    Snapshot fresh(files_, port_, events);
    // A driver without the poll always reports a change, so the list may be the same as before.
    if (!same || fresh.generation() != snapshot_->generation()) setSnapshot(std::move(fresh));
  }
  if (View* const view = this->view()) view->checked = true;
  return snapshot_->generation();
}

void Machine::forget() {
  const Lock lock(mutex_);
  snapshot_.reset();
  if (View* const view = this->view()) {
    View fresh;
    fresh.looks = view->looks;
    *view = std::move(fresh);
  }
}

std::uint64_t Machine::snapshotNumber() {
  const Lock lock(mutex_);
  snapshot();
  return snapshotNumber_;
}

Answer<std::vector<EntryID>> Machine::units() {
  const Lock lock(mutex_);
  // Who lists the units asks for the counters of all of them.
  if (View* const view = this->view()) view->counterQuestions = kFewCounters;
  return snapshot().units();
}

bool Machine::isUnit(DeviceNumber device) {
  const Lock lock(mutex_);
  return snapshot().isUnit(device);
}

bool Machine::exists(EntryID id) {
  const Lock lock(mutex_);
  return snapshot().has(id);
}

std::optional<EntryID> Machine::entry(EntryKey name) {
  const Lock lock(mutex_);
  return snapshot().identify(name);
}

std::shared_ptr<const Unit> Machine::unit(EntryID id) {
  const Lock lock(mutex_);
  return snapshot().unit(id);
}

std::vector<EntryID> Machine::pathsOf(const Unit& unit) {
  const Lock lock(mutex_);
  return snapshot().pathsOf(unit);
}

std::shared_ptr<const Place> Machine::place(EntryID path) {
  const Lock lock(mutex_);
  return snapshot().place(path);
}

Identity Machine::identityOf(EntryID unit) {
  const Lock lock(mutex_);
  return snapshot().identityOf(unit);
}

Identity Machine::identityOfPath(EntryID path) {
  const Lock lock(mutex_);
  return snapshot().identityOfPath(path);
}

std::optional<EntryID> Machine::hostOf(EntryID path) {
  const Lock lock(mutex_);
  Snapshot& now = snapshot();
  const auto place = now.place(path);
  if (!place || !place->address) return std::nullopt;
  return now.identify(hostEntry(place->address->host));
}

std::string Machine::interconnectOfPath(EntryID path) {
  const Lock lock(mutex_);
  return snapshot().interconnectOfPath(path);
}

std::vector<std::uint8_t> Machine::portIdentifierOfHost(EntryID host) {
  const Lock lock(mutex_);
  return snapshot().portIdentifierOfHost(host);
}

std::shared_ptr<const MultipathStatus> Machine::status(EntryID unit) {
  const Lock lock(mutex_);
  View* const view = this->view();
  if (view != nullptr) {
    if (const auto* known = view->statuses.find(unit)) return *known;
  }
  if (keyOf(unit).kind != Kind::kUnit || !snapshot().has(unit)) return nullptr;
  const auto read = port_.read(keyOf(unit).device(), Lines::kStatus);
  auto parsed = read.status == 0 ? statusOf(read.value) : std::nullopt;
  auto status = parsed ? std::make_shared<const MultipathStatus>(std::move(*parsed)) : nullptr;
  if (view != nullptr) view->statuses.set(unit, status);
  return status;
}

std::optional<DiskStates> Machine::statesOf(EntryID unit, EntryID path) {
  const Lock lock(mutex_);
  const auto place = snapshot().place(path);
  if (!place) return std::nullopt;
  std::optional<DiskStates> states;
  if (View* const view = this->view()) {
    if (!view->states.contains(path)) readStates(unit, *view);
    if (const auto* read = view->states.find(path)) {
      states = *read;
      view->states.erase(path);
    }
  }
  if (!states) {
    const auto [device, access] = stateFiles(*place);
    auto texts = files_.readTogether({device, access});
    states = DiskStates{std::move(texts[0]), std::move(texts[1])};
  }
  // The kernel has this file for every SCSI device. If it is absent, the disk has just gone.
  if (place->address && states->device.isAbsent()) return std::nullopt;
  return states;
}

// Reads the states of all paths of the unit.
void Machine::readStates(EntryID unitID, View& view) {
  Snapshot& now = snapshot();
  const auto unit = now.unit(unitID);
  if (!unit) return;
  std::vector<EntryID> paths = now.pathsOf(*unit);
  for (std::size_t begin = 0; begin < paths.size(); begin += kPathsAtOnce) {
    const std::size_t end = std::min(begin + kPathsAtOnce, paths.size());
    std::vector<std::string> files;
    for (std::size_t i = begin; i < end; ++i) {
      for (auto& file : stateFiles(*now.place(paths[i]))) files.push_back(std::move(file));
    }
    auto texts = files_.readTogether(files);
    for (std::size_t i = begin; i < end; ++i) {
      const std::size_t at = 2 * (i - begin);
      view.states.set(paths[i], {std::move(texts[at]), std::move(texts[at + 1])});
    }
  }
}

std::optional<std::string> Machine::counters(EntryID id) {
  const Lock lock(mutex_);
  if (!snapshot().has(id)) return std::nullopt;
  const DeviceNumber device = keyOf(id).device();
  View* const view = this->view();
  if (view != nullptr && view->counterQuestions++ >= kFewCounters) {
    if (!view->counters) view->counters.emplace(files_.readTable("/proc/diskstats").text);
    if (auto counters = view->counters->take(device)) return counters;
  }
  auto own = files_.read(folderOf(keyOf(id)) + "/stat");
  return own ? std::optional(std::move(own.text)) : std::nullopt;
}

std::optional<std::string> Machine::label(EntryID medium) {
  const std::string file = "/run/udev/data/b" + keyOf(medium).device().text();
  // First, so that a record that comes meanwhile is read the next time.
  const auto version = files_.version(file);
  const Lock lock(mutex_);
  if (!version) {
    labels_.erase(medium);
    return std::nullopt;
  }
  if (const auto* kept = labels_.find(medium); kept != nullptr && kept->record == *version) {
    return kept->label;
  }
  const auto record = files_.read(file);
  if (!record) return std::nullopt;
  auto label = fileSystemLabel(record.text);
  labels_.set(medium, {*version, label});
  return label;
}

}  // namespace tavrenix::sys
