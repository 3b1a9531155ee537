#include "lab/classes.hpp"

#include <set>

#include "model/registry_names.hpp"

namespace tavrenix::lab {

namespace {

// Marks in sound all that lead to a root from name. Each class is followed once in all, so a long
// chain stays cheap.
void expectNoCycle(const Classes::Bases& bases, const std::string& name, const Place& place,
                   std::set<std::string_view>& sound) {
  std::set<std::string_view> chain;
  std::string_view at = name;
  for (auto found = bases.find(at); found != bases.end() && !sound.contains(at);
       found = bases.find(at)) {
    if (!chain.insert(found->first).second) place.at(name).refuse("the class derives from itself");
    at = found->second;
  }
  sound.merge(chain);
}

}  // namespace

Classes::Classes(const Json& json, const Place& place) {
  if (!json.is_object()) place.refuse("must be an object, not " + std::string(kindOf(json)));
  for (const auto& [name, base] : json.get_ref<const Json::object_t&>()) {
    if (name == registry::kServiceClass)
      place.at(name).refuse("the root of all classes has no base");
    bases_[name] = stringFromJSON(base, place.at(name))->view();
  }
  std::set<std::string_view> sound;
  for (const auto& member : json.get_ref<const Json::object_t&>()) {
    expectNoCycle(bases_, member.first, place, sound);
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

}  // namespace tavrenix::lab
