#include "linux/registry/linux_backing.hpp"

#include <cerrno>

#include "host/registry_names.hpp"

namespace tavrenix::sys {

using Lock = ob::MutexLock;

std::uint32_t LinuxBacking::generation() {
  const Lock lock(mutex_);
  if (!held_) lastSeen_ = published_ ? *published_ : machine_.generation();
  return lastSeen_;
}

Result<Entries> LinuxBacking::entriesOfClass(std::string_view className) {
  auto found = sys::entriesOfClass(machine_, className);
  return {found.status, std::move(found.value)};
}

Result<Entries> LinuxBacking::relatives(EntryID entry, std::uint32_t options) {
  if (!machine_.exists(entry)) return {-ENXIO, {}};
  return {kSuccess, relativesOf(machine_, entry, options)};
}

std::string_view LinuxBacking::classOf(EntryID entry) {
  switch (keyOf(entry).kind) {
    case Kind::kUnit:
      return registry::kLogicalUnitClass;
    case Kind::kPath:
      return registry::kPathClass;
    case Kind::kMedium:
      return registry::kMediaClass;
    case Kind::kHost:
      return registry::kServiceClass;
    case Kind::kNone:
      break;
  }
  return {};
}

bool LinuxBacking::isKindOf(std::string_view className, std::string_view base) {
  return !className.empty() && (className == base || base == registry::kServiceClass);
}

ob::Ref<const ob::Dictionary> LinuxBacking::properties(EntryID entry) {
  return properties_.all(entry);
}

ob::Ref<const ob::Object> LinuxBacking::property(EntryID entry, const ob::String& name) {
  return properties_.one(entry, name);
}

KernelStatus LinuxBacking::carryOut(EntryID entry, const ob::String& name,
                                    const ob::Object& value) {
  if (!machine_.exists(entry)) return -ENXIO;
  const auto* request = ob::as<ob::Dictionary>(&value);
  if (keyOf(entry).kind != Kind::kUnit || !name.equals(registry::kProperties)) return -EOPNOTSUPP;
  if (request == nullptr) return -EINVAL;
  const KernelStatus status = requests_.carryOut(entry, *request);
  Announcements* announcements = nullptr;
  {
    const Lock lock(mutex_);
    announcements = announcements_;
  }
  // So the caller's next read shows its own change, and need not wait for the event.
  if (announcements != nullptr) announcements->publishUnlessEntriesChanged();
  return status;
}

bool LinuxBacking::startListening(Announcements& announcements) {
  if (!listener_.start(announcements)) return false;
  const Lock lock(mutex_);
  announcements_ = &announcements;
  return true;
}

void LinuxBacking::stopListening() {
  listener_.stop();
  const Lock lock(mutex_);
  announcements_ = nullptr;
  published_.reset();
  held_ = false;
}

Result<std::vector<Entry>> LinuxBacking::present() {
  machine_.forget();
  const Machine::Look look(machine_);  // so that the list and the generation are of one moment
  const std::uint32_t generation = machine_.generation();
  const auto listed = announcedEntries(
      machine_, {std::string(registry::kLogicalUnitClass), std::string(registry::kPathClass)});
  if (listed.status != 0 && listed.status != -ENXIO) return {listed.status, {}};
  std::vector<Entry> entries;
  for (const EntryID id : listed.value) entries.push_back({id, classOf(id)});
  const Lock lock(mutex_);
  lookedAt_ = generation;
  ++looks_;
  return {kSuccess, std::move(entries)};
}

void LinuxBacking::holdGeneration() {
  const Lock lock(mutex_);
  held_ = true;
}

bool LinuxBacking::publish() {
  const std::uint32_t generation = machine_.generation();
  const Lock lock(mutex_);
  if (generation != lookedAt_ && looks_ < kMostLooks) return false;
  published_ = lookedAt_;
  held_ = false;
  looks_ = 0;
  return true;
}

}  // namespace tavrenix::sys
