// The small property-list values: number, boolean, data and date. All are immutable.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <variant>
#include <vector>

#include "runtime/object.hpp"

namespace ob {

class Number final : public Object {
 public:
  static constexpr TypeID kType = kNumberType;
  static Ref<Number> make(std::int64_t value) { return ob::make<Number>(value); }
  static Ref<Number> make(std::uint64_t value) { return ob::make<Number>(value); }
  static Ref<Number> make(double value) { return ob::make<Number>(value); }
  template <class T>
  explicit Number(T value) noexcept : value_(value) {}

  // Return the value without its fraction, or nothing for NaN and for a value that is out of range.
  std::optional<std::int64_t> asInt64() const noexcept;
  std::optional<std::uint64_t> asUInt64() const noexcept;
  // Returns the nearest double.
  double asDouble() const noexcept;
  // Returns the value as 64 bits: negative numbers in two's complement, 0 if neither of the two
  // conversions above has a result.
  std::uint64_t bits() const noexcept;

  using Value = std::variant<std::int64_t, std::uint64_t, double>;
  const Value& value() const noexcept { return value_; }

  TypeID typeID() const noexcept override { return kType; }
  bool equals(const Object& other) const noexcept override;

 private:
  bool isWhole() const noexcept;
  Value value_;
};

// One of two shared constants, so booleans can be compared by identity.
class Boolean final : public Object {
 public:
  static constexpr TypeID kType = kBooleanType;
  constexpr explicit Boolean(bool value) noexcept : Object(Immortal{}), value_(value) {}
  static const Boolean* of(bool value) noexcept;
  bool value() const noexcept { return value_; }
  TypeID typeID() const noexcept override { return kType; }

 private:
  bool value_;
};

extern Constant<Boolean> kTrue;
extern Constant<Boolean> kFalse;

class Data final : public Object {
 public:
  static constexpr TypeID kType = kDataType;
  using Bytes = std::span<const std::uint8_t>;
  static Ref<Data> make(Bytes bytes) { return ob::make<Data>(bytes); }
  explicit Data(Bytes bytes) : bytes_(bytes.begin(), bytes.end()) {}
  Bytes bytes() const noexcept { return bytes_; }
  TypeID typeID() const noexcept override { return kType; }
  bool equals(const Object& other) const noexcept override;

 private:
  std::vector<std::uint8_t> bytes_;
};

class Date final : public Object {
 public:
  static constexpr TypeID kType = kDateType;
  // Nanoseconds since 1970-01-01 00:00:00 UTC.
  static Ref<Date> make(std::int64_t unixNanoseconds) { return ob::make<Date>(unixNanoseconds); }
  // Returns the date of the system clock.
  static Ref<Date> now();
  explicit Date(std::int64_t unixNanoseconds) noexcept : unixNanoseconds_(unixNanoseconds) {}
  std::int64_t unixNanoseconds() const noexcept { return unixNanoseconds_; }
  TypeID typeID() const noexcept override { return kType; }
  bool equals(const Object& other) const noexcept override;

 private:
  std::int64_t unixNanoseconds_;
};

}  // namespace ob
