#include "tests/soak/hand.hpp"

#include <fstream>

#include "lab/driver.hpp"
#include "lab/image_file.hpp"
#include "model/registry_names.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::soak {

namespace {

constexpr std::size_t kFewestUnits = 2;
constexpr std::size_t kMostUnits = 4;
constexpr std::size_t kMostPaths = 4;
constexpr std::size_t kMostVolumes = 2;

// The entries of that class, or those of them whose first parent is that one.
std::vector<EntryID> idsOf(const Json& image, std::string_view className, EntryID parent = 0) {
  std::vector<EntryID> found;
  for (const Json& entry : image["entries"]) {
    if (entry["class"] != className) continue;
    if (parent == 0 || entry["parents"][0] == parent) found.push_back(entry["id"]);
  }
  return found;
}

std::size_t placeOf(const Json& image, EntryID id) {
  std::size_t place = 0;
  while (image["entries"].at(place)["id"] != id) ++place;
  return place;
}

Json& entryOf(Json& image, EntryID id) {
  return image["entries"][placeOf(image, id)];
}

void remove(Json& image, EntryID id) {
  image["entries"].erase(placeOf(image, id));
}

void removeWithAllOfIt(Json& image, EntryID unit) {
  const Json paths = entryOf(image, unit)["parents"];
  for (const EntryID volume : idsOf(image, registry::kMediaClass, unit)) remove(image, volume);
  remove(image, unit);
  for (const EntryID path : paths) remove(image, path);
}

}  // namespace

Hand::Hand(lab::SimulatedHost& host, std::string path, Random random)
    : host_(host), path_(std::move(path)), random_(random) {
  std::ofstream(path_) << R"({"generation": 1, "entries": []})";
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

void Hand::addUnit(Json& image, bool isStorage) {
  const int unit = next_++;
  std::vector<int> paths;
  for (std::uint64_t left = 1 + random_.below(3); left > 0; --left) paths.push_back(next_++);
  Json entries = lab::readJSON("[" + lab::unitWithPaths(unit, paths) + "]");
  if (!isStorage) entries[0]["properties"]["Peripheral Device Type"] = 3;  // a processor
  for (Json& entry : entries) image["entries"].push_back(std::move(entry));
}

std::vector<EntryID> Hand::addUnit() {
  std::vector<EntryID> came;
  edit([&](Json& image) {
    const int unit = next_;
    addUnit(image, true);
    for (int id = unit; id < next_; ++id) came.push_back(static_cast<EntryID>(id));
  });
  return came;
}

void Hand::removeUnit() {
  edit([](Json& image) {
    removeWithAllOfIt(image, idsOf(image, registry::kLogicalUnitClass).back());
  });
}

void Hand::settle() {
  edit([](Json& image) {
    image["writeStatuses"] = Json::array();
    image["generation"] = image["generation"].get<std::uint32_t>() + 1;
  });
}

// What changes of a unit without anything coming or going.
void Hand::changeSettings(Json& unit) {
  static constexpr std::string_view kAlgorithms[] = {"Modified Round Robin", "Least Queue Depth",
                                                     "Least Bytes", "Some Other"};
  Json& properties = unit["properties"];
  properties["Load Balancing Algorithm"] = random_.oneOf(kAlgorithms);
  properties["Batch Count"] = random_.below(100);
  properties["Logical Unit Alias"] = "Alias " + std::to_string(random_.below(100));
}

void Hand::changePaths(Json& image, EntryID unit) {
  const std::size_t count = entryOf(image, unit)["parents"].size();
  if (count == 0 || (count < kMostPaths && random_.onceIn(3))) {
    const Json withPath = lab::readJSON("[" + lab::unitWithPaths(0, {next_}) + "]");
    image["entries"].push_back(withPath[1]);
    entryOf(image, unit)["parents"].push_back(next_++);
    return;
  }
  Json& paths = entryOf(image, unit)["parents"];
  const std::size_t at = random_.below(count);
  const EntryID path = paths[at];
  if (random_.onceIn(2)) {
    paths.erase(at);
    remove(image, path);
  } else {
    static constexpr int kStates[] = {0, 1, 2, 3, 0xF, 0x80, 0x81};
    entryOf(image, path)["statistics"]["state"] = random_.oneOf(kStates);
  }
}

void Hand::changeVolumes(Json& image, EntryID unit) {
  const auto volumes = idsOf(image, registry::kMediaClass, unit);
  if (volumes.size() == kMostVolumes) return remove(image, random_.oneOf(volumes));
  const std::string name = "disk" + std::to_string(next_);
  image["entries"].push_back(
      {{"id", next_++},
       {"class", registry::kMediaClass},
       {"parents", {unit}},
       {"properties", {{"Leaf", true}, {"Content", "Data"}}},
       {"disk", {{"volumeName", "on " + name}, {"bsdName", name}, {"mediaSize", 1000}}}});
}

void Hand::changeUnit(Json& image, EntryID unit) {
  switch (random_.below(4)) {
    case 0:
      return removeWithAllOfIt(image, unit);
    case 1:
      return changePaths(image, unit);
    case 2:
      return changeVolumes(image, unit);
    default:
      return changeSettings(entryOf(image, unit));
  }
}

void Hand::change() {
  edit([&](Json& image) {
    const auto units = idsOf(image, registry::kLogicalUnitClass);
    if (random_.onceIn(10)) {
      image["writeStatuses"] = Json::array({lab::kBadRequest, 5});
    } else if (units.size() < kFewestUnits || (units.size() < kMostUnits && random_.onceIn(3))) {
      addUnit(image, !random_.onceIn(10));  // a processor is never shown
    } else {
      changeUnit(image, random_.oneOf(units));
    }
  });
}

}  // namespace tavrenix::soak
