#include "lab/value_text.hpp"

#include <charconv>
#include <chrono>

namespace tavrenix::lab {

std::optional<std::vector<std::uint8_t>> bytesFromHex(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  std::vector<std::uint8_t> bytes(text.size() / 2);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char* digits = text.data() + 2 * i;
    if (std::from_chars(digits, digits + 2, bytes[i], 16).ptr != digits + 2) return std::nullopt;
  }
  return bytes;
}

std::string hexFromBytes(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes)
    text.append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 0xF]);
  return text;
}

namespace {

// Takes fields of a fixed form off the front of a text.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  // So many digits and then the mark; 0 and not good() for anything else.
  unsigned number(std::size_t digits, std::string_view mark) {
    unsigned value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      good_ = good_ && i < text_.size() && text_[i] >= '0' && text_[i] <= '9';
      if (good_) value = value * 10 + static_cast<unsigned>(text_[i] - '0');
    }
    good_ = good_ && text_.substr(digits).starts_with(mark);
    if (good_) text_.remove_prefix(digits + mark.size());
    return good_ ? value : 0;
  }
  bool good() const { return good_; }
  std::string_view rest() const { return text_; }

 private:
  std::string_view text_;
  bool good_ = true;
};

// "Z", or a fraction of one to nine digits and "Z", in nanoseconds.
std::optional<unsigned> fraction(std::string_view text) {
  if (text == "Z") return 0;
  if (text.size() < 3 || text.size() > 11 || text.front() != '.') return std::nullopt;
  const std::size_t digits = text.size() - 2;
  Scanner scanner(text.substr(1));
  unsigned nanoseconds = scanner.number(digits, "Z");
  for (std::size_t i = digits; i < 9; ++i) nanoseconds *= 10;
  return scanner.good() ? std::optional(nanoseconds) : std::nullopt;
}

}  // namespace

std::optional<std::int64_t> nanosecondsFromDate(std::string_view text) {
  using namespace std::chrono;
  Scanner scanner(text);
  const year itsYear(static_cast<int>(scanner.number(4, "-")));
  const month itsMonth(scanner.number(2, "-"));
  const day itsDay(scanner.number(2, "T"));
  const unsigned hour = scanner.number(2, ":");
  const unsigned minute = scanner.number(2, ":");
  const unsigned second = scanner.number(2, "");
  const auto nanoseconds = fraction(scanner.rest());
  const year_month_day date(itsYear, itsMonth, itsDay);
  if (!scanner.good() || !nanoseconds || !date.ok() || hour > 23 || minute > 59 || second > 59) {
    return std::nullopt;
  }
  const std::int64_t seconds =
      sys_days(date).time_since_epoch().count() * 86400LL + hour * 3600LL + minute * 60LL + second;
  std::int64_t result = 0;
  if (__builtin_mul_overflow(seconds, std::int64_t{1'000'000'000}, &result) ||
      __builtin_add_overflow(result, std::int64_t{*nanoseconds}, &result)) {
    return std::nullopt;
  }
  return result;
}

}  // namespace tavrenix::lab
