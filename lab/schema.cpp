#include "lab/schema.hpp"

#include <algorithm>

namespace tavrenix::lab {

void expectObject(const Json& json, const Place& place, std::initializer_list<KnownKey> known) {
  if (!json.is_object()) place.refuse("must be an object, not " + std::string(kindOf(json)));
  for (const auto& member : json.get_ref<const Json::object_t&>()) {
    const bool isKnown = std::any_of(known.begin(), known.end(),
                                     [&](const KnownKey& key) { return key.name == member.first; });
    if (!isKnown) place.at(member.first).refuse("unknown key");
  }
  for (const KnownKey& key : known) {
    if (key.required && find(json, key.name) == nullptr) {
      place.refuse("the key \"" + std::string(key.name) + "\" is missing");
    }
  }
}

const Json* find(const Json& object, std::string_view key) {
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

void expectArray(const Json& json, const Place& place) {
  if (!json.is_array()) place.refuse("must be an array, not " + std::string(kindOf(json)));
}

void refuseInteger(const Json& json, const Place& place, const std::string& least,
                   const std::string& most) {
  const std::string found = json.is_number() ? json.dump() : std::string(kindOf(json));
  place.refuse("must be an integer from " + least + " to " + most + ", not " + found);
}

}  // namespace tavrenix::lab
