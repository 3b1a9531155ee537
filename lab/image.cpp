#include "lab/image.hpp"

#include "lab/image_entry.hpp"

namespace tavrenix::lab {

Image::Image() = default;

Image Image::parse(std::string_view text) {
  Image image;
  image.document_ = readJSON(text);
  const Json& top = image.document_;
  const Place place;
  expectObject(top, place,
               {{"generation", true},
                {"effectiveUser", false},
                {"classes", false},
                {"writeStatuses", false},
                {"entries", true}});
  image.generation_ =
      integerFromJSON<std::uint32_t>(*lab::find(top, "generation"), place.at("generation"));
  if (const Json* user = lab::find(top, "effectiveUser")) {
    image.effectiveUser_ = integerFromJSON<std::uint32_t>(*user, place.at("effectiveUser"));
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
      itsPlace.at("id").refuse("the entry ID " + std::to_string(entry.id) + " is that of entries[" +
                               std::to_string(*earlier) + "] already");
    }
    positions_.set(entry.id, entries_.size());
    entries_.push_back(std::move(entry));
  }
  expectParents(place);
  parentsFirst_ = orderParentsFirst(entries_, positions_, place);
}

void Image::expectParents(const Place& place) const {
  for (const ImageEntry& entry : entries_) {
    for (std::size_t i = 0; i < entry.parents.size(); ++i) {
      if (positions_.contains(entry.parents[i])) continue;
      place.at(position(entry))
          .at("parents")
          .at(i)
          .refuse("there is no entry " + std::to_string(entry.parents[i]));
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
  const Place top;
  const Place list = top.at("entries");
  const Place itsPlace = list.at(at);
  entries_[at].properties = dictionaryFromJSON(properties, itsPlace.at("properties"));
}

void Image::setPathState(const ImageEntry& entry, std::uint8_t state) {
  const std::size_t at = position(entry);
  document_["entries"][at]["statistics"]["state"] = state;
  entries_[at].statistics->state = state;
}

}  // namespace tavrenix::lab
