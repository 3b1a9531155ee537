// Property-list values as JSON.
//
// Strings, numbers, booleans, arrays and objects stand for themselves. {"$data": "hex digits"} is
// data, {"$date": "2026-01-02T03:04:05Z"} a date, and {"$dictionary": {...}} a dictionary whose
// keys may begin with "$", which no key of any other object may.
#pragma once

#include "lab/fault.hpp"
#include "lab/json.hpp"
#include "runtime/collections.hpp"
#include "runtime/values.hpp"

namespace tavrenix::lab {

// Each throws ImageError where the JSON is no such value.
ob::Ref<const ob::Object> valueFromJSON(const Json& json, const Place& place);
ob::Ref<const ob::Dictionary> dictionaryFromJSON(const Json& json, const Place& place);
ob::Ref<const ob::String> stringFromJSON(const Json& json, const Place& place);
ob::Ref<const ob::Number> numberFromJSON(const Json& json, const Place& place);

// "a string", "an array" and so on, for messages.
std::string_view kindOf(const Json& json);

// The object that holds the members of a valid dictionary: itself or what its "$dictionary" holds.
Json& membersOf(Json& dictionary);

}  // namespace tavrenix::lab
