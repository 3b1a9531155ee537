#include "lab/image_entry.hpp"

#include "model/registry_names.hpp"

namespace tavrenix::lab {

namespace {

std::vector<EntryID> parentsFromJSON(const Json& json, const Place& place) {
  expectArray(json, place);
  std::vector<EntryID> parents;
  ob::NumberMap<std::size_t> seen;
  for (const Json& element : json) {
    const Place itsPlace = place.at(parents.size());
    const auto parent = integerFromJSON<EntryID>(element, itsPlace);
    if (seen.contains(parent)) itsPlace.refuse("entry " + std::to_string(parent) + " stands twice");
    seen.set(parent, parents.size());
    parents.push_back(parent);
  }
  return parents;
}

SCSIPathStatistics statisticsFromJSON(const Json& json, const Place& place, bool ofPath) {
  constexpr KnownKey kSent{"sent", true};
  constexpr KnownKey kReceived{"received", true};
  constexpr KnownKey kCommands{"commands", true};
  if (ofPath) {
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
  if (ofPath) record.state = integerFromJSON<std::uint8_t>(*find(json, "state"), place.at("state"));
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

ImageEntry entryFromJSON(const Json& json, const Place& place, const Classes& classes) {
  expectObject(json, place,
               {{"id", true},
                {"class", true},
                {"parents", false},
                {"properties", false},
                {"statistics", false},
                {"disk", false}});
  ImageEntry entry;
  entry.id = integerFromJSON<EntryID>(*find(json, "id"), place.at("id"));
  entry.className = stringFromJSON(*find(json, "class"), place.at("class"))->view();
  if (const Json* parents = find(json, "parents")) {
    entry.parents = parentsFromJSON(*parents, place.at("parents"));
  }
  const Json* properties = find(json, "properties");
  entry.properties = properties == nullptr
                         ? ob::Dictionary::make({})
                         : dictionaryFromJSON(*properties, place.at("properties"));
  entry.isPath = classes.conforms(entry.className, registry::kPathClass);
  if (const Json* statistics = find(json, "statistics")) {
    entry.statistics = statisticsFromJSON(*statistics, place.at("statistics"), entry.isPath);
  }
  if (const Json* disk = find(json, "disk")) entry.disk = diskFromJSON(*disk, place.at("disk"));
  return entry;
}

std::vector<std::size_t> orderParentsFirst(const std::vector<ImageEntry>& entries,
                                           const ob::NumberMap<std::size_t>& positions,
                                           const Place& place) {
  enum class State : std::uint8_t { untouched, open, placed };
  struct Visit {
    std::size_t at;
    std::size_t nextParent;
  };
  std::vector<State> states(entries.size(), State::untouched);
  std::vector<std::size_t> order;
  order.reserve(entries.size());
  // Depth first towards the parents, without recursion, so that a long chain costs no stack.
  std::vector<Visit> pending;
  for (std::size_t start = 0; start < entries.size(); ++start) {
    if (states[start] == State::untouched) pending.push_back({start, 0});
    while (!pending.empty()) {
      Visit& visit = pending.back();
      const auto& parents = entries[visit.at].parents;
      if (visit.nextParent == parents.size()) {
        states[visit.at] = State::placed;
        order.push_back(visit.at);
        pending.pop_back();
        continue;
      }
      states[visit.at] = State::open;
      const std::size_t parent = *positions.find(parents[visit.nextParent]);
      if (states[parent] == State::open) {
        place.at(visit.at)
            .at("parents")
            .at(visit.nextParent)
            .refuse("the entry is its own ancestor");
      }
      ++visit.nextParent;
      if (states[parent] == State::untouched) pending.push_back({parent, 0});
    }
  }
  return order;
}

}  // namespace tavrenix::lab
