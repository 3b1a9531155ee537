#include "lab/plist.hpp"

#include <limits>

#include "lab/value_text.hpp"

namespace tavrenix::lab {

namespace {

constexpr std::string_view kData = "$data";
constexpr std::string_view kDate = "$date";
constexpr std::string_view kDictionary = "$dictionary";

[[noreturn]] void refuseKind(const Json& json, const Place& place, std::string_view wanted) {
  place.refuse("must be " + std::string(wanted) + ", not " + std::string(kindOf(json)));
}

const std::string& textOf(const Json& json, const Place& place) {
  if (!json.is_string()) refuseKind(json, place, "a string");
  return json.get_ref<const std::string&>();
}

ob::Ref<const ob::String> makeString(const std::string& text) {
  return ob::String::make(text);  // the reader has let only UTF-8 through
}

ob::Ref<const ob::Object> dataFromJSON(const Json& json, const Place& place) {
  const auto bytes = bytesFromHex(textOf(json, place));
  if (!bytes) place.refuse("must be pairs of hexadecimal digits");
  return ob::Data::make(*bytes);
}

ob::Ref<const ob::Object> dateFromJSON(const Json& json, const Place& place) {
  const auto nanoseconds = nanosecondsFromDate(textOf(json, place));
  if (!nanoseconds) place.refuse("must be a date such as 2026-01-02T03:04:05Z, from 1678 to 2261");
  return ob::Date::make(*nanoseconds);
}

ob::Ref<const ob::Object> arrayFromJSON(const Json& json, const Place& place) {
  ob::Array::Values values;
  values.reserve(json.size());
  for (const Json& element : json)
    values.push_back(valueFromJSON(element, place.at(values.size())));
  return ob::Array::make(std::move(values));
}

enum class DollarKeys { refused, allowed };

ob::Ref<const ob::Object> membersFromJSON(const Json& json, const Place& place,
                                          DollarKeys dollarKeys) {
  if (!json.is_object()) refuseKind(json, place, "an object");
  ob::Dictionary::Pairs pairs(json.size());
  for (const auto& [key, value] : json.get_ref<const Json::object_t&>()) {
    if (dollarKeys == DollarKeys::refused && key.starts_with('$')) {
      place.at(key).refuse(
          "a key that begins with \"$\" stands only inside {\"$dictionary\": {...}}");
    }
    pairs.set(makeString(key), valueFromJSON(value, place.at(key)));
  }
  return ob::Dictionary::make(std::move(pairs));
}

ob::Ref<const ob::Object> objectFromJSON(const Json& json, const Place& place) {
  if (json.size() == 1) {
    const auto& [key, value] = json.get_ref<const Json::object_t&>().front();
    if (key == kData) return dataFromJSON(value, place.at(key));
    if (key == kDate) return dateFromJSON(value, place.at(key));
    if (key == kDictionary) return membersFromJSON(value, place.at(key), DollarKeys::allowed);
  }
  return membersFromJSON(json, place, DollarKeys::refused);
}

ob::Ref<const ob::Number> makeNumber(const Json& json) {
  if (json.is_number_float()) return ob::Number::make(json.get<double>());
  const bool large =
      json.is_number_unsigned() &&
      json.get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
  return large ? ob::Number::make(json.get<std::uint64_t>())
               : ob::Number::make(json.get<std::int64_t>());
}

}  // namespace

std::string_view kindOf(const Json& json) {
  switch (json.type()) {
    case Json::value_t::null:
      return "null";
    case Json::value_t::object:
      return "an object";
    case Json::value_t::array:
      return "an array";
    case Json::value_t::string:
      return "a string";
    case Json::value_t::boolean:
      return "a boolean";
    default:
      return "a number";
  }
}

ob::Ref<const ob::Object> valueFromJSON(const Json& json, const Place& place) {
  switch (json.type()) {
    case Json::value_t::object:
      return objectFromJSON(json, place);
    case Json::value_t::array:
      return arrayFromJSON(json, place);
    case Json::value_t::string:
      return makeString(json.get_ref<const std::string&>());
    case Json::value_t::boolean:
      return ob::Ref<const ob::Object>::retain(ob::Boolean::of(json.get<bool>()));
    case Json::value_t::null:
      place.refuse("null is no property-list value");
    default:
      return makeNumber(json);
  }
}

ob::Ref<const ob::Dictionary> dictionaryFromJSON(const Json& json, const Place& place) {
  const auto value = valueFromJSON(json, place);
  const auto* dictionary = ob::as<ob::Dictionary>(value.get());
  if (dictionary == nullptr) place.refuse("must be a dictionary");
  return ob::Ref<const ob::Dictionary>::retain(dictionary);
}

ob::Ref<const ob::String> stringFromJSON(const Json& json, const Place& place) {
  return makeString(textOf(json, place));
}

ob::Ref<const ob::Number> numberFromJSON(const Json& json, const Place& place) {
  if (!json.is_number()) refuseKind(json, place, "a number");
  return makeNumber(json);
}

Json& membersOf(Json& dictionary) {
  const bool wrapped = dictionary.size() == 1 && dictionary.contains(kDictionary);
  return wrapped ? dictionary.front() : dictionary;
}

}  // namespace tavrenix::lab
