// The classes and entries of an image, read from its document.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/host.hpp"
#include "host/tunable.hpp"
#include "lab/image/json_values.hpp"

namespace tavrenix::lab {

// The classes of an image: which class derives from which.
class Classes {
 public:
  Classes() = default;
  // Reads the image's "classes". Errors: throws ImageError, also if a class derives from itself.
  Classes(const Json& json, const Place& place);

  // Returns true if className is base or derives from it. Every class derives from "KsService".
  bool conforms(std::string_view className, std::string_view base) const;

  // From each derived class to its base class.
  using Bases = std::map<std::string, std::string, std::less<>>;
  const Bases& bases() const noexcept { return bases_; }

 private:
  Bases bases_;
};

struct ImageEntry {
  EntryID id = 0;
  std::string className;
  bool isPath = false;                           // its class is kPathClass or derives from it
  std::vector<EntryID> parents;                  // each an entry of the image, none twice
  ob::Ref<const ob::Dictionary> properties;      // never null
  std::optional<SCSIPathStatistics> statistics;  // only a path has a state byte
  std::optional<DiskDescription> disk;
  ob::Ref<const ob::Dictionary> details;  // null if the image has none
};

// Reads the "details" of an entry. Paths and logical units have different keys. Returns the
// dictionary that the functions of details.h return. Errors: throws ImageError.
ob::Ref<const ob::Dictionary> detailsFromJSON(const Json& json, const Place& place, bool isPath);

// Reads one element of "entries". Does not check that the parents exist. Errors: throws ImageError.
ImageEntry entryFromJSON(const Json& json, const Place& place, const Classes& classes);

}  // namespace tavrenix::lab
