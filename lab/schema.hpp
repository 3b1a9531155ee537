// Reading the fixed parts of an image: objects with known keys, and bounded integers.
#pragma once

#include <initializer_list>
#include <limits>

#include "lab/plist.hpp"

namespace tavrenix::lab {

struct KnownKey {
  std::string_view name;
  bool required;
};

// Throws ImageError unless json is an object that has every required key and none but the known
// ones.
void expectObject(const Json& json, const Place& place, std::initializer_list<KnownKey> known);

// The member under key, or null.
const Json* find(const Json& object, std::string_view key);

// Throws ImageError.
void expectArray(const Json& json, const Place& place);
[[noreturn]] void refuseInteger(const Json& json, const Place& place, const std::string& least,
                                const std::string& most);

// The integer that T holds. Throws ImageError.
template <class T>
T integerFromJSON(const Json& json, const Place& place) {
  using Limits = std::numeric_limits<T>;
  if (json.is_number_unsigned() && std::in_range<T>(json.get<std::uint64_t>()))
    return json.get<T>();
  if (json.is_number_integer() && !json.is_number_unsigned() &&
      std::in_range<T>(json.get<std::int64_t>())) {
    return json.get<T>();
  }
  refuseInteger(json, place, std::to_string(Limits::min()), std::to_string(Limits::max()));
}

}  // namespace tavrenix::lab
