// The C face of strings, numbers, booleans, data and dates.
#include <tavrenix/ob.h>

#include "runtime/c/c_bridge.hpp"
#include "runtime/exhaustion.hpp"
#include "runtime/values.hpp"

using ob::catchExhaustion;
using ob::fromC;
using ob::toC;

namespace {

// Stores the value in *out, unless `out` is null. Returns false, and stores nothing, if there is no
// value.
template <class T>
bool store(const std::optional<T>& value, T* out) {
  if (value && out != nullptr) *out = *value;
  return value.has_value();
}

}  // namespace

extern "C" {

ObTypeID ObStringGetTypeID(void) {
  return ob::kStringType;
}

ObStringRef ObStringCreateWithUTF8(const char* text) {
  if (text == nullptr) return nullptr;
  return catchExhaustion<ObStringRef>(
      nullptr, [&] { return toC<ObStringRef>(ob::String::make(text).detach()); });
}

const char* ObStringGetUTF8(ObStringRef string) {
  const auto* text = fromC<ob::String>(string);
  return text == nullptr ? nullptr : text->utf8();
}

size_t ObStringGetLength(ObStringRef string) {
  const auto* text = fromC<ob::String>(string);
  return text == nullptr ? 0 : text->view().size();
}

int ObStringCompare(ObStringRef a, ObStringRef b) {
  const auto* first = fromC<ob::String>(a);
  const auto* second = fromC<ob::String>(b);
  if (first == nullptr || second == nullptr) return (first != nullptr) - (second != nullptr);
  return first->view().compare(second->view());
}

ObTypeID ObNumberGetTypeID(void) {
  return ob::kNumberType;
}

bool ObNumberGetInt64(ObNumberRef number, int64_t* value) {
  const auto* known = fromC<ob::Number>(number);
  return known != nullptr && store(known->asInt64(), value);
}

bool ObNumberGetUInt64(ObNumberRef number, uint64_t* value) {
  const auto* known = fromC<ob::Number>(number);
  return known != nullptr && store(known->asUInt64(), value);
}

bool ObNumberGetDouble(ObNumberRef number, double* value) {
  const auto* known = fromC<ob::Number>(number);
  return known != nullptr && store(std::optional(known->asDouble()), value);
}

// The linker fills these in, so they are valid before any code runs.
const ObBooleanRef kObBooleanTrue = reinterpret_cast<ObBooleanRef>(&ob::kTrue);
const ObBooleanRef kObBooleanFalse = reinterpret_cast<ObBooleanRef>(&ob::kFalse);

ObTypeID ObBooleanGetTypeID(void) {
  return ob::kBooleanType;
}

bool ObBooleanGetValue(ObBooleanRef boolean) {
  const auto* known = fromC<ob::Boolean>(boolean);
  return known != nullptr && known->value();
}

ObTypeID ObDataGetTypeID(void) {
  return ob::kDataType;
}

const uint8_t* ObDataGetBytes(ObDataRef data) {
  const auto* known = fromC<ob::Data>(data);
  return known == nullptr ? nullptr : known->bytes().data();
}

size_t ObDataGetLength(ObDataRef data) {
  const auto* known = fromC<ob::Data>(data);
  return known == nullptr ? 0 : known->bytes().size();
}

ObTypeID ObDateGetTypeID(void) {
  return ob::kDateType;
}

int64_t ObDateGetUnixNanoseconds(ObDateRef date) {
  const auto* known = fromC<ob::Date>(date);
  return known == nullptr ? 0 : known->unixNanoseconds();
}

}  // extern "C"
