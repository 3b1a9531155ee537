#include "lab/classes.hpp"

#include <set>

#include "model/registry_names.hpp"

namespace tavrenix::lab {

namespace {

// A look at what an entry is goes up the whole chain, so that without a bound a file of a megabyte
// would take minutes.
constexpr std::size_t kLongestChain = 64;

void expectRoot(const Classes::Bases& bases, const std::string& name, const Place& place) {
  std::set<std::string_view> chain;
  for (auto found = bases.find(name); found != bases.end(); found = bases.find(found->second)) {
    if (!chain.insert(found->first).second) place.refuse("the class derives from itself");
    if (chain.size() > kLongestChain) place.refuse("the class has more than 64 classes above it");
  }
}

}  // namespace

Classes::Classes(const Json& json, const Place& place) {
  if (!json.is_object()) place.refuse("must be an object, not " + std::string(kindOf(json)));
  for (const auto& [name, base] : json.get_ref<const Json::object_t&>()) {
    if (name == registry::kServiceClass)
      place.at(name).refuse("the root of all classes has no base");
    bases_[name] = stringFromJSON(base, place.at(name))->view();
  }
  for (const auto& member : json.get_ref<const Json::object_t&>()) {
    expectRoot(bases_, member.first, place.at(member.first));
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
