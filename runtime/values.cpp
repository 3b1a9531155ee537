#include "runtime/values.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace ob {

namespace {

// Returns the number without its fraction. Returns nothing for NaN, and if the whole number is not
// in [low, 2^bits).
template <class T>
std::optional<T> truncated(double real, double low, int bits) {
  const double whole = std::trunc(real);
  if (!(whole >= low && whole < std::ldexp(1.0, bits))) return std::nullopt;
  return static_cast<T>(whole);
}

}  // namespace

std::optional<std::int64_t> Number::asInt64() const noexcept {
  if (const auto* value = std::get_if<std::int64_t>(&value_)) return *value;
  if (const auto* value = std::get_if<std::uint64_t>(&value_)) {
    if (*value > static_cast<std::uint64_t>(INT64_MAX)) return std::nullopt;
    return static_cast<std::int64_t>(*value);
  }
  return truncated<std::int64_t>(*std::get_if<double>(&value_), -std::ldexp(1.0, 63), 63);
}

std::optional<std::uint64_t> Number::asUInt64() const noexcept {
  if (const auto* value = std::get_if<std::uint64_t>(&value_)) return *value;
  if (const auto* value = std::get_if<std::int64_t>(&value_)) {
    if (*value < 0) return std::nullopt;
    return static_cast<std::uint64_t>(*value);
  }
  return truncated<std::uint64_t>(*std::get_if<double>(&value_), 0, 64);
}

double Number::asDouble() const noexcept {
  if (const auto* value = std::get_if<std::int64_t>(&value_)) return static_cast<double>(*value);
  if (const auto* value = std::get_if<std::uint64_t>(&value_)) return static_cast<double>(*value);
  return *std::get_if<double>(&value_);
}

std::uint64_t Number::bits() const noexcept {
  if (const auto value = asUInt64()) return *value;
  return static_cast<std::uint64_t>(asInt64().value_or(0));
}

bool Number::isWhole() const noexcept {
  const auto* real = std::get_if<double>(&value_);
  return real == nullptr || *real == std::trunc(*real);
}

bool Number::equals(const Object& other) const noexcept {
  if (other.typeID() != kNumberType) return false;
  const auto& number = static_cast<const Number&>(other);
  if (isWhole() != number.isWhole()) return false;
  if (!isWhole()) return asDouble() == number.asDouble();
  if (const auto mine = asInt64()) return mine == number.asInt64();
  if (const auto mine = asUInt64()) return mine == number.asUInt64();
  return !number.asInt64() && !number.asUInt64() && asDouble() == number.asDouble();
}

constinit Constant<Boolean> kTrue(true);
constinit Constant<Boolean> kFalse(false);

const Boolean* Boolean::of(bool value) noexcept {
  return value ? &kTrue.object : &kFalse.object;
}

bool Data::equals(const Object& other) const noexcept {
  return other.typeID() == kDataType && bytes_ == static_cast<const Data&>(other).bytes_;
}

Ref<Date> Date::now() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return make(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count());
}

bool Date::equals(const Object& other) const noexcept {
  return other.typeID() == kDateType &&
         unixNanoseconds_ == static_cast<const Date&>(other).unixNanoseconds_;
}

}  // namespace ob
