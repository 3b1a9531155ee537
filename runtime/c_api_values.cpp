// The C face of numbers, booleans, data and dates.
#include <tavrenix/ob.h>

#include "runtime/c_bridge.hpp"
#include "runtime/values.hpp"

using ob::fromC;

namespace {

template <class T>
bool store(const std::optional<T>& value, T* out) {
  if (value && out != nullptr) *out = *value;
  return value.has_value();
}

}  // namespace

extern "C" {

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

// Address constants, so that they hold before any code runs.
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
