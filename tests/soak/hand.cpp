#include "tests/soak/hand.hpp"

#include <cstdio>
#include <fstream>

#include "lab/driver.hpp"
#include "lab/image_file.hpp"
#include "model/registry_names.hpp"

namespace tavrenix::soak {

namespace {

constexpr std::size_t kMostUnits = 4;
constexpr std::size_t kMostPaths = 4;
constexpr std::size_t kMostVolumes = 2;
constexpr EntryID kPorts = 2;  // entries 1 and 2
constexpr std::string_view kPortClass = "SimulatedPort";

std::string hex(std::uint64_t number, int digits) {
  char text[17];
  std::snprintf(text, sizeof text, "%0*llX", digits, static_cast<unsigned long long>(number));
  return text;
}

std::string_view classOf(const Json& entry) {
  return entry["class"].get_ref<const std::string&>();
}

bool isChildOf(const Json& entry, EntryID parent) {
  const auto parents = entry.find("parents");
  return parents != entry.end() &&
         std::find(parents->begin(), parents->end(), parent) != parents->end();
}

void removeEntry(Json& image, EntryID id) {
  Json& entries = image["entries"];
  const auto at = std::find_if(entries.begin(), entries.end(),
                               [&](const Json& entry) { return entry["id"] == id; });
  entries.erase(at);
}

std::vector<EntryID> volumesOf(const Json& image, EntryID unit) {
  std::vector<EntryID> volumes;
  for (const Json* medium : entriesOf(image, registry::kMediaClass)) {
    if (isChildOf(*medium, unit)) volumes.push_back((*medium)["id"].get<EntryID>());
  }
  return volumes;
}

void takeUnitOut(Json& image, EntryID unit) {
  const Json paths = entryOf(image, unit)["parents"];
  for (const EntryID volume : volumesOf(image, unit)) removeEntry(image, volume);
  removeEntry(image, unit);
  for (const Json& path : paths) removeEntry(image, path.get<EntryID>());
}

}  // namespace

std::vector<const Json*> entriesOf(const Json& image, std::string_view className) {
  std::vector<const Json*> found;
  for (const Json& entry : image["entries"]) {
    if (classOf(entry) == className) found.push_back(&entry);
  }
  return found;
}

Hand::Hand(lab::SimulatedHost& host, std::string path, std::uint32_t generation, Random random)
    : host_(host), path_(std::move(path)), random_(random) {
  Json image;
  image["generation"] = generation;
  image["writeStatuses"] = Json::array();
  image["entries"] = Json::array();
  for (EntryID port = 0; port < kPorts; ++port) {
    newEntry(image, kPortClass, Json::array(),
             {{"properties",
               {{"Controller Characteristics",
                 {{"Unique SCSI Port Identifier", {{"$data", "5001" + hex(port, 4)}}}}}}}});
  }
  for (std::size_t unit = 0; unit < kMostUnits; ++unit) newUnit(image);
  std::ofstream(path_) << lab::printJSON(image);
  host_.load(path_);
}

template <class Change>
void Hand::edit(Change change) {
  {
    const lab::LockedImageFile file(path_);
    Json image = lab::readJSON(file.read());
    change(image);
    file.replace(lab::printJSON(image));
  }
  host_.reload(patience_);
}

Json Hand::image() const {
  return lab::readJSON(lab::readImageFile(path_));
}

EntryID Hand::newEntry(Json& image, std::string_view className, Json parents, Json more) {
  Json entry = {{"id", next_}, {"class", className}, {"parents", std::move(parents)}};
  entry.update(more);
  image["entries"].push_back(std::move(entry));
  return next_++;
}

EntryID Hand::newPath(Json& image) {
  const std::uint64_t sent = random_.below(1000);
  return newEntry(
      image, registry::kPathClass, Json::array({1 + random_.below(kPorts)}),
      {{"properties",
        {{"Logical Unit Path Identifier", {{"$data", hex(next_, 6)}}},
         {"Protocol Characteristics", {{"Physical Interconnect", "Fibre Channel Interface"}}}}},
       {"statistics", {{"sent", sent}, {"received", 2 * sent}, {"commands", 7}, {"state", 0}}}});
}

void Hand::newVolume(Json& image, EntryID unit) {
  newEntry(image, registry::kMediaClass, Json::array({unit}),
           {{"properties", {{"Leaf", true}, {"Content", "Data"}}},
            {"disk",
             {{"volumeName", "Volume " + std::to_string(next_)},
              {"bsdName", "disk" + std::to_string(next_)},
              {"mediaSize", next_ * 1000}}}});
}

void Hand::newUnit(Json& image) {
  Json paths = Json::array();
  for (std::uint64_t left = 1 + random_.below(3); left > 0; --left) paths.push_back(newPath(image));
  // Now and then a processor, which is no storage and is never shown.
  const int type = random_.onceIn(10) ? 3 : 0;
  const std::uint64_t sent = random_.below(100'000);
  const EntryID unit =
      newEntry(image, registry::kLogicalUnitClass, std::move(paths),
               {{"properties",
                 {{"Logical Unit Unique Identifier", {{"$data", "600A0B80" + hex(next_, 8)}}},
                  {"Logical Unit Alias", "Unit " + std::to_string(next_)},
                  {"Vendor Identification", "EXAMPLE"},
                  {"Product Identification", "Simulated LUN"},
                  {"Load Balancing Algorithm", "Modified Round Robin"},
                  {"Batch Count", 8},
                  {"Peripheral Device Type", type}}},
                {"statistics", {{"sent", sent}, {"received", 3 * sent}, {"commands", sent / 7}}}});
  for (std::uint64_t left = random_.below(3); left > 0; --left) newVolume(image, unit);
}

EntryID Hand::addUnit() {
  edit([&](Json& image) { newUnit(image); });
  return entriesOf(image(), registry::kLogicalUnitClass).back()->at("id").get<EntryID>();
}

void Hand::removeUnit(EntryID unit) {
  edit([&](Json& image) { takeUnitOut(image, unit); });
}

void Hand::settle() {
  edit([](Json& image) {
    image["writeStatuses"] = Json::array();
    image["generation"] = image["generation"].get<std::uint32_t>() + 1;
  });
}

// Algorithm, count and alias: what changes of a unit without anything coming or going.
void Hand::changeSettings(Json& unit) {
  static constexpr std::string_view kAlgorithms[] = {"Modified Round Robin", "Least Queue Depth",
                                                     "Least Bytes", "Some Other"};
  Json& properties = unit["properties"];
  properties["Load Balancing Algorithm"] = kAlgorithms[random_.below(std::size(kAlgorithms))];
  properties["Batch Count"] = random_.below(100);
  properties["Logical Unit Alias"] = "Alias " + std::to_string(random_.below(100));
}

void Hand::changePaths(Json& image, EntryID unit) {
  const std::size_t count = entryOf(image, unit)["parents"].size();
  if (count == 0 || (count < kMostPaths && random_.onceIn(3))) {
    const EntryID path = newPath(image);
    entryOf(image, unit)["parents"].push_back(path);
    return;
  }
  Json& paths = entryOf(image, unit)["parents"];
  const std::size_t at = random_.below(count);
  const auto path = paths[at].get<EntryID>();
  if (random_.onceIn(2)) {
    paths.erase(at);
    removeEntry(image, path);
  } else {
    static constexpr int kStates[] = {0, 1, 2, 3, 0xF, 0x80, 0x81};
    entryOf(image, path)["statistics"]["state"] = kStates[random_.below(std::size(kStates))];
  }
}

void Hand::changeVolumes(Json& image, EntryID unit) {
  const auto volumes = volumesOf(image, unit);
  if (volumes.size() < kMostVolumes) {
    newVolume(image, unit);
  } else {
    removeEntry(image, volumes[random_.below(volumes.size())]);
  }
}

void Hand::changeUnit(Json& image, EntryID unit) {
  switch (random_.below(4)) {
    case 0:
      return takeUnitOut(image, unit);
    case 1:
      return changePaths(image, unit);
    case 2:
      return changeVolumes(image, unit);
    default:
      return changeSettings(entryOf(image, unit));
  }
}

void Hand::change(bool refusals) {
  edit([&](Json& image) {
    const auto units = entriesOf(image, registry::kLogicalUnitClass);
    if (refusals && random_.onceIn(10)) {
      image["writeStatuses"] = Json::array({lab::kBadRequest, 5});
    } else if (units.empty() || (units.size() < kMostUnits && random_.onceIn(3))) {
      newUnit(image);
    } else {
      changeUnit(image, (*units[random_.below(units.size())])["id"].get<EntryID>());
    }
  });
}

}  // namespace tavrenix::soak
