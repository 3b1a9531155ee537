#include "lab/image/image.hpp"

namespace tavrenix::lab {

Image Image::parse(std::string_view text) {
  Image image;
  image.document_ = readJSON(text);
  const Json& top = image.document_;
  const Place place(text);
  expectObject(top, place,
               {{"generation", true},
                {"effectiveUser", false},
                {"kernelRelease", false},
                {"classes", false},
                {"writeStatuses", false},
                {"entries", true}});
  image.generation_ =
      integerFromJSON<std::uint32_t>(*lab::find(top, "generation"), place.at("generation"));
  if (const Json* user = lab::find(top, "effectiveUser")) {
    image.effectiveUser_ = integerFromJSON<std::uint32_t>(*user, place.at("effectiveUser"));
  }
  if (const Json* release = lab::find(top, "kernelRelease")) {
    image.kernelRelease_ = stringFromJSON(*release, place.at("kernelRelease"));
  }
  if (const Json* classes = lab::find(top, "classes"))
    image.classes_ = Classes(*classes, place.at("classes"));
  if (const Json* statuses = lab::find(top, "writeStatuses")) {
    const Place itsPlace = place.at("writeStatuses");
    expectArray(*statuses, itsPlace);
    for (const Json& status : *statuses) {
      image.writeStatuses_.push_back(
          integerFromJSON<KernelStatus>(status, itsPlace.at(image.writeStatuses_.size())));
    }
  }
  image.readEntries(*lab::find(top, "entries"), place.at("entries"));
  return image;
}

void Image::readEntries(const Json& json, const Place& place) {
  expectArray(json, place);
  entries_.reserve(json.size());
  for (const Json& element : json) {
    const Place itsPlace = place.at(entries_.size());
    ImageEntry entry = entryFromJSON(element, itsPlace, classes_);
    if (const std::size_t* earlier = positions_.find(entry.id)) {
      itsPlace.at("id").refuse("entries[" + std::to_string(*earlier) + "] has this entry ID, too");
    }
    positions_.set(entry.id, entries_.size());
    entries_.push_back(std::move(entry));
  }
  orderParentsFirst(place);
}

// Fills parentsFirst_: walks depth first towards the parents. Does not recurse, so a long chain
// costs no stack. Refuses a missing parent and an entry that is its own ancestor.
void Image::orderParentsFirst(const Place& place) {
  enum class State : std::uint8_t { kUntouched, kOpen, kPlaced };
  struct Visit {
    std::size_t at;
    std::size_t nextParent;
  };
  std::vector<State> states(entries_.size(), State::kUntouched);
  std::vector<Visit> pending;
  parentsFirst_.reserve(entries_.size());
  for (std::size_t start = 0; start < entries_.size(); ++start) {
    if (states[start] == State::kUntouched) pending.push_back({start, 0});
    while (!pending.empty()) {
      Visit& visit = pending.back();
      const auto& parents = entries_[visit.at].parents;
      if (visit.nextParent == parents.size()) {
        states[visit.at] = State::kPlaced;
        parentsFirst_.push_back(visit.at);
        pending.pop_back();
        continue;
      }
      states[visit.at] = State::kOpen;
      const EntryID id = parents[visit.nextParent];
      const std::size_t* parent = positions_.find(id);
      const bool isOwnAncestor = parent != nullptr && states[*parent] == State::kOpen;
      if (parent == nullptr || isOwnAncestor) {
        const Place entry = place.at(visit.at);
        const Place list = entry.at("parents");
        list.at(visit.nextParent)
            .refuse(isOwnAncestor ? "the entry is its own ancestor"
                                  : "there is no entry " + std::to_string(id));
      }
      ++visit.nextParent;
      if (states[*parent] == State::kUntouched) pending.push_back({*parent, 0});
    }
  }
}

const ImageEntry* Image::find(EntryID id) const noexcept {
  const std::size_t* position = positions_.find(id);
  return position == nullptr ? nullptr : &entries_[*position];
}

void Image::setGeneration(std::uint32_t generation) {
  document_["generation"] = generation;
  generation_ = generation;
}

std::optional<KernelStatus> Image::takeWriteStatus() {
  if (writeStatuses_.empty()) return std::nullopt;
  const KernelStatus status = writeStatuses_.front();
  writeStatuses_.erase(writeStatuses_.begin());
  document_["writeStatuses"].erase(0);
  return status;
}

void Image::setProperty(const ImageEntry& entry, const std::string& name, const Json& value) {
  const std::size_t at = position(entry);
  Json& element = document_["entries"][at];
  if (!element.contains("properties")) element["properties"] = Json::object();
  Json& properties = element["properties"];
  membersOf(properties)[name] = value;
  entries_[at].properties = dictionaryFromJSON(properties, Place());
}

void Image::setPathState(const ImageEntry& entry, std::uint8_t state) {
  const std::size_t at = position(entry);
  document_["entries"][at]["statistics"]["state"] = state;
  entries_[at].statistics->state = state;
}

}  // namespace tavrenix::lab
