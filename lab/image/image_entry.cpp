#include "lab/image/image_entry.hpp"

#include <set>

#include "host/registry_names.hpp"

namespace tavrenix::lab {

namespace {

// A look-up of an entry's class walks up its whole chain of base classes. Without this limit, a
// file of one megabyte could take minutes to load.
constexpr std::size_t kLongestChain = 64;

void expectRoot(const Classes::Bases& bases, const std::string& name, const Place& place) {
  std::set<std::string_view> chain;
  for (auto found = bases.find(name); found != bases.end(); found = bases.find(found->second)) {
    if (!chain.insert(found->first).second) place.refuse("the class derives from itself");
    if (chain.size() > kLongestChain) place.refuse("the class has more than 64 classes above it");
  }
}

std::vector<EntryID> parentsFromJSON(const Json& json, const Place& place) {
  expectArray(json, place);
  std::vector<EntryID> parents;
  std::set<EntryID> seen;
  for (const Json& element : json) {
    const Place itsPlace = place.at(parents.size());
    const auto parent = integerFromJSON<EntryID>(element, itsPlace);
    if (!seen.insert(parent).second) {
      itsPlace.refuse("entry " + std::to_string(parent) + " is a parent twice");
    }
    parents.push_back(parent);
  }
  return parents;
}

SCSIPathStatistics statisticsFromJSON(const Json& json, const Place& place, bool isPath) {
  constexpr KnownKey kSent{"sent", true};
  constexpr KnownKey kReceived{"received", true};
  constexpr KnownKey kCommands{"commands", true};
  if (isPath) {
    expectObject(json, place, {kSent, kReceived, kCommands, {"state", true}});
  } else {
    expectObject(json, place, {kSent, kReceived, kCommands});
  }
  const auto counter = [&](std::string_view key) {
    return integerFromJSON<std::uint64_t>(*find(json, key), place.at(key));
  };
  SCSIPathStatistics record;
  record.bytesSent = counter(kSent.name);
  record.bytesReceived = counter(kReceived.name);
  record.commandsProcessed = counter(kCommands.name);
  if (isPath) record.state = integerFromJSON<std::uint8_t>(*find(json, "state"), place.at("state"));
  return record;
}

DiskDescription diskFromJSON(const Json& json, const Place& place) {
  expectObject(json, place, {{"volumeName", false}, {"bsdName", false}, {"mediaSize", false}});
  DiskDescription disk;
  if (const Json* name = find(json, "volumeName"))
    disk.volumeName = stringFromJSON(*name, place.at("volumeName"));
  if (const Json* name = find(json, "bsdName"))
    disk.bsdName = stringFromJSON(*name, place.at("bsdName"));
  if (const Json* size = find(json, "mediaSize"))
    disk.mediaSize = numberFromJSON(*size, place.at("mediaSize"));
  return disk;
}

}  // namespace

Classes::Classes(const Json& json, const Place& place) {
  expectObject(json, place);
  for (const auto& [name, base] : json.get_ref<const Json::object_t&>()) {
    if (name == registry::kServiceClass)
      place.at(name).refuse("the root of all classes has no base");
    bases_[name] = stringFromJSON(base, place.at(name))->view();
  }
  for (const auto& member : json.get_ref<const Json::object_t&>()) {
    expectRoot(bases_, member.first, place.at(member.first));
  }
}

bool Classes::conforms(std::string_view className, std::string_view base) const {
  while (className != base) {
    const auto found = bases_.find(className);
    if (found == bases_.end()) return base == registry::kServiceClass;
    className = found->second;
  }
  return true;
}

ImageEntry entryFromJSON(const Json& json, const Place& place, const Classes& classes) {
  expectObject(json, place,
               {{"id", true},
                {"class", true},
                {"parents", false},
                {"properties", false},
                {"statistics", false},
                {"disk", false},
                {"details", false}});
  ImageEntry entry;
  entry.id = integerFromJSON<EntryID>(*find(json, "id"), place.at("id"));
  entry.className = stringFromJSON(*find(json, "class"), place.at("class"))->view();
  entry.isPath = classes.conforms(entry.className, registry::kPathClass);
  if (const Json* parents = find(json, "parents")) {
    entry.parents = parentsFromJSON(*parents, place.at("parents"));
  }
  const Json* properties = find(json, "properties");
  entry.properties = properties == nullptr
                         ? ob::Dictionary::make({})
                         : dictionaryFromJSON(*properties, place.at("properties"));
  if (const Json* statistics = find(json, "statistics")) {
    entry.statistics = statisticsFromJSON(*statistics, place.at("statistics"), entry.isPath);
  }
  if (const Json* disk = find(json, "disk")) entry.disk = diskFromJSON(*disk, place.at("disk"));
  if (const Json* details = find(json, "details")) {
    entry.details = detailsFromJSON(*details, place.at("details"), entry.isPath);
  }
  return entry;
}

}  // namespace tavrenix::lab
