// The hand that changes the host: units, paths and volumes come and go in the image file.
#pragma once

#include "lab/host.hpp"
#include "lab/json.hpp"
#include "tests/soak/random.hpp"

namespace tavrenix::soak {

using lab::Json;

class Hand {
 public:
  // Writes an image without units to path, has the host load it, and changes it from then on.
  Hand(lab::SimulatedHost& host, std::string path, Random random);
  // How long clients get to take up what they are told of departures, at each change.
  void setPatience(std::chrono::milliseconds patience) { patience_ = patience; }

  // One change, as drawn; it may also be that the driver will refuse writes.
  void change();
  // Adds a unit that is storage. Returns what came: it and its paths, in ascending order.
  std::vector<EntryID> addUnit();
  // Takes out the unit that came last, with all that belongs to it.
  void removeUnit();
  // Lets writes through again, and moves the generation.
  void settle();

  const std::string& path() const noexcept { return path_; }

 private:
  void addUnit(Json& image, bool isStorage);
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
  int next_ = 100'000;  // all IDs have as many digits
};

}  // namespace tavrenix::soak
