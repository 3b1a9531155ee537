#include "lab/image/json_values.hpp"

#include <algorithm>

#include "runtime/byte_text.hpp"

namespace tavrenix::lab {

namespace {

constexpr std::string_view kData = "$data";
constexpr std::string_view kDate = "$date";
constexpr std::string_view kDictionary = "$dictionary";

std::string kindOf(const Json& json) {
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

void expectKind(bool isOfKind, const char* kind, const Json& json, const Place& place) {
  if (!isOfKind) place.refuse("must be " + std::string(kind) + ", not " + kindOf(json));
}

const std::string& textOf(const Json& json, const Place& place) {
  expectKind(json.is_string(), "a string", json, place);
  return json.get_ref<const std::string&>();
}

ob::Ref<const ob::String> makeString(const std::string& text) {
  return ob::String::make(text);  // never null: the parser accepts UTF-8 alone
}

ob::Ref<const ob::Object> dataFromJSON(const Json& json, const Place& place) {
  const auto bytes = ob::bytesFromHexadecimal(textOf(json, place));
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

enum class DollarKeys { kRefused, kAllowed };

ob::Ref<const ob::Object> membersFromJSON(const Json& json, const Place& place,
                                          DollarKeys dollarKeys) {
  expectObject(json, place);
  ob::Dictionary::Pairs pairs(json.size());
  for (const auto& [key, value] : json.get_ref<const Json::object_t&>()) {
    if (dollarKeys == DollarKeys::kRefused && key.starts_with('$')) {
      place.at(key).refuse(
          "a key that begins with \"$\" is allowed only inside {\"$dictionary\": {...}}");
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
    if (key == kDictionary) return membersFromJSON(value, place.at(key), DollarKeys::kAllowed);
  }
  return membersFromJSON(json, place, DollarKeys::kRefused);
}

ob::Ref<const ob::Number> makeNumber(const Json& json) {
  if (json.is_number_float()) return ob::Number::make(json.get<double>());
  const bool isLarge =
      json.is_number_unsigned() && !std::in_range<std::int64_t>(json.get<std::uint64_t>());
  return isLarge ? ob::Number::make(json.get<std::uint64_t>())
                 : ob::Number::make(json.get<std::int64_t>());
}

}  // namespace

ob::Ref<const ob::Object> valueFromJSON(const Json& json, const Place& place) {
  switch (json.type()) {
    case Json::value_t::object:
      return objectFromJSON(json, place);
    case Json::value_t::array:
      return arrayFromJSON(json, place);
    case Json::value_t::string:
      return makeString(json.get_ref<const std::string&>());
    case Json::value_t::boolean:
      return booleanFromJSON(json, place);
    case Json::value_t::null:
      place.refuse("null is not a property-list value");
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
  expectKind(json.is_number(), "a number", json, place);
  return makeNumber(json);
}

ob::Ref<const ob::Boolean> booleanFromJSON(const Json& json, const Place& place) {
  expectKind(json.is_boolean(), "true or false", json, place);
  return ob::Ref<const ob::Boolean>::retain(ob::Boolean::of(json.get<bool>()));
}

Json& membersOf(Json& dictionary) {
  const bool isWrapped = dictionary.size() == 1 && dictionary.contains(kDictionary);
  return isWrapped ? dictionary.front() : dictionary;
}

void expectArray(const Json& json, const Place& place) {
  expectKind(json.is_array(), "an array", json, place);
}

void expectObject(const Json& json, const Place& place) {
  expectKind(json.is_object(), "an object", json, place);
}

void expectObject(const Json& json, const Place& place, std::initializer_list<KnownKey> known) {
  expectObject(json, place);
  for (const auto& member : json.get_ref<const Json::object_t&>()) {
    const bool isKnown = std::any_of(known.begin(), known.end(),
                                     [&](const KnownKey& key) { return key.name == member.first; });
    if (!isKnown) place.at(member.first).refuse("unknown key");
  }
  for (const KnownKey& key : known) {
    if (key.isRequired && find(json, key.name) == nullptr) {
      place.refuse("the key \"" + std::string(key.name) + "\" is missing");
    }
  }
}

const Json* find(const Json& object, std::string_view key) {
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

void refuseInteger(const Json& json, const Place& place, const std::string& least,
                   const std::string& most) {
  const std::string found = json.is_number() ? json.dump() : kindOf(json);
  place.refuse("must be an integer from " + least + " to " + most + ", not " + found);
}

}  // namespace tavrenix::lab
