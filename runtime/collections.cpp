#include "runtime/collections.hpp"

#include <algorithm>

namespace ob {

bool Array::equals(const Object& other) const noexcept {
  if (other.typeID() != kArrayType) return false;
  const Values& theirs = static_cast<const Array&>(other).values_;
  return std::equal(values_.begin(), values_.end(), theirs.begin(), theirs.end(),
                    [](const auto& a, const auto& b) { return a->equals(*b); });
}

bool Dictionary::equals(const Object& other) const noexcept {
  if (other.typeID() != kDictionaryType) return false;
  const auto& theirs = static_cast<const Dictionary&>(other);
  if (pairs_.size() != theirs.pairs_.size()) return false;
  return std::all_of(pairs_.begin(), pairs_.end(), [&](const auto& pair) {
    const Object* value = theirs.value(*pair.first);
    return value != nullptr && pair.second->equals(*value);
  });
}

}  // namespace ob
