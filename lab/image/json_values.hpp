// Reads the values of an image's document: property-list values, objects with known keys, integers.
//
// JSON strings, numbers, booleans, arrays and objects stand for the property-list values of the
// same kind. {"$data": "00FF"} is data, {"$date": "2026-01-02T03:04:05Z"} is a date, and
// {"$dictionary": {...}} is a dictionary whose keys may begin with "$". The keys of any other
// object may not.
//
// Errors: every function that takes a place throws ImageError if the JSON value is of another kind.
#pragma once

#include <initializer_list>
#include <limits>
#include <optional>
#include <utility>

#include "lab/image/json.hpp"
#include "lab/image/place.hpp"
#include "runtime/collections.hpp"
#include "runtime/values.hpp"

namespace tavrenix::lab {

ob::Ref<const ob::Object> valueFromJSON(const Json& json, const Place& place);
ob::Ref<const ob::Dictionary> dictionaryFromJSON(const Json& json, const Place& place);
ob::Ref<const ob::String> stringFromJSON(const Json& json, const Place& place);
ob::Ref<const ob::Number> numberFromJSON(const Json& json, const Place& place);
ob::Ref<const ob::Boolean> booleanFromJSON(const Json& json, const Place& place);

// Returns the object that holds the members of a dictionary: the object itself, or the one inside
// its "$dictionary". REQUIRES: dictionaryFromJSON accepts the object.
Json& membersOf(Json& dictionary);

struct KnownKey {
  std::string_view name;
  bool isRequired;
};

void expectArray(const Json& json, const Place& place);
void expectObject(const Json& json, const Place& place);
// Accepts an object that has every required key, and no key but the known ones.
void expectObject(const Json& json, const Place& place, std::initializer_list<KnownKey> known);

// Returns the member under the key, or null.
const Json* find(const Json& object, std::string_view key);

// Throws the ImageError about a value that is no integer from `least` to `most`.
[[noreturn]] void refuseInteger(const Json& json, const Place& place, const std::string& least,
                                const std::string& most);

// Returns the integer. Refuses anything else, and an integer out of the range of T.
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

// Returns the nanoseconds from 1970-01-01 00:00:00 UTC to a date such as "2026-01-02T03:04:05Z".
// The seconds may have a fraction of up to nine digits. Returns nothing for any other text, and for
// a date that does not fit into 64 bits (all from 1678 to 2261 fit).
std::optional<std::int64_t> nanosecondsFromDate(std::string_view text);

}  // namespace tavrenix::lab
