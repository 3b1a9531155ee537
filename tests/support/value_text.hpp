// The text of a property-list value, for comparison with an expected text.
#pragma once

#include <map>

#include "runtime/byte_text.hpp"
#include "runtime/values.hpp"

namespace tavrenix::test {

// Shows data in hexadecimal digits, dictionaries by the order of their keys, and no date's time.
inline std::string textOf(const ob::Object* value) {
  std::map<std::string, std::string> pairs;
  if (const auto* string = ob::as<ob::String>(value)) return std::string(string->view());
  if (const auto* number = ob::as<ob::Number>(value)) return std::to_string(*number->asInt64());
  if (const auto* boolean = ob::as<ob::Boolean>(value)) return boolean->value() ? "yes" : "no";
  if (const auto* data = ob::as<ob::Data>(value)) return ob::hexadecimal(data->bytes());
  if (ob::as<ob::Date>(value) != nullptr) return "date";
  if (const auto* array = ob::as<ob::Array>(value)) {
    for (const auto& each : array->values())
      pairs[std::to_string(pairs.size())] = textOf(each.get());
  } else if (const auto* dictionary = ob::as<ob::Dictionary>(value)) {
    for (const auto& [name, each] : dictionary->pairs())
      pairs[textOf(name.get())] = textOf(each.get());
  } else {
    return "nothing";
  }
  std::string shown;
  for (const auto& [name, each] : pairs) {
    shown.append(shown.empty() ? "" : ", ").append(name).append(": ").append(each);
  }
  return '{' + shown + '}';
}

}  // namespace tavrenix::test
