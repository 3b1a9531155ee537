#include "runtime/collections.hpp"

#include <algorithm>
#include <cstdio>
#include <string>

#include "runtime/values.hpp"

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

Ref<String> Error::description() const {
  char numbers[64];
  std::snprintf(numbers, sizeof numbers, " (error 0x%08llX",
                static_cast<unsigned long long>(code_));
  std::string text = std::string(domain_->view()) + numbers;
  if (userInfo_) {
    for (const auto& [key, value] : userInfo_->pairs()) {
      const auto* number = as<Number>(value.get());
      if (number == nullptr) continue;
      text += ", result " + std::to_string(number->asInt64().value_or(0));
      break;
    }
  }
  return String::make(text + ")");
}

}  // namespace ob
