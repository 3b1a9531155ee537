// The hand that changes the host: units, paths and volumes come and go in the image file.
#pragma once

#include <algorithm>

#include "lab/host.hpp"
#include "lab/json.hpp"
#include "tests/soak/random.hpp"

namespace tavrenix::soak {

using lab::Json;

// Entries of an image whose class is that one, in the order of the file.
std::vector<const Json*> entriesOf(const Json& image, std::string_view className);
// The entry of that ID, which is there.
template <class Image>
auto& entryOf(Image& image, EntryID id) {
  auto& entries = image["entries"];
  return *std::find_if(entries.begin(), entries.end(),
                       [&](const Json& entry) { return entry["id"] == id; });
}

class Hand {
 public:
  // Writes an image of some units to path, has the host load it, and changes it from then on.
  Hand(lab::SimulatedHost& host, std::string path, std::uint32_t generation, Random random);
  // How long clients get to take up what they are told of departures, at each change.
  void setPatience(std::chrono::milliseconds patience) { patience_ = patience; }

  // One change, as drawn. With refusals it may also be that the driver will refuse writes.
  void change(bool refusals);
  EntryID addUnit();
  void removeUnit(EntryID unit);
  // Lets writes through again, and moves the generation.
  void settle();

  // What the host has: its file.
  Json image() const;

 private:
  EntryID newEntry(Json& image, std::string_view className, Json parents, Json more);
  EntryID newPath(Json& image);
  void newVolume(Json& image, EntryID unit);
  void newUnit(Json& image);
  void changeUnit(Json& image, EntryID unit);
  void changePaths(Json& image, EntryID unit);
  void changeVolumes(Json& image, EntryID unit);
  void changeSettings(Json& unit);
  // Carries change out on the file, as its only writer, and shows the host what came of it.
  template <class Change>
  void edit(Change change);

  lab::SimulatedHost& host_;
  const std::string path_;
  Random random_;
  std::chrono::milliseconds patience_{0};
  EntryID next_ = 1;
};

}  // namespace tavrenix::soak
