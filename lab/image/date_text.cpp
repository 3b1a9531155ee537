// nanosecondsFromDate: reads a date.
#include <chrono>

#include "lab/image/json_values.hpp"

namespace tavrenix::lab {

namespace {

// The fields of a date, taken off the front of its text one after the other.
class Fields {
 public:
  explicit Fields(std::string_view text) : text_(text) {}

  // Takes a number of that many digits and the mark after it, and returns the number. Returns 0 if
  // the text is anything else; isGood() is then false and every later call fails, too.
  unsigned number(std::size_t digits, std::string_view mark) {
    unsigned value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      isGood_ = isGood_ && i < text_.size() && text_[i] >= '0' && text_[i] <= '9';
      if (isGood_) value = value * 10 + static_cast<unsigned>(text_[i] - '0');
    }
    isGood_ = isGood_ && text_.substr(digits).starts_with(mark);
    if (isGood_) text_.remove_prefix(digits + mark.size());
    return isGood_ ? value : 0;
  }
  // Takes the end of the text, which is "Z" or a fraction of one to nine digits and "Z". Returns
  // the fraction in nanoseconds.
  unsigned nanoseconds() {
    if (text_ == "Z") return 0;
    isGood_ = isGood_ && text_.size() >= 3 && text_.size() <= 11 && text_.front() == '.';
    if (!isGood_) return 0;
    const std::size_t digits = text_.size() - 2;
    text_.remove_prefix(1);
    unsigned value = number(digits, "Z");
    for (std::size_t i = digits; i < 9; ++i) value *= 10;
    return value;
  }
  bool isGood() const { return isGood_; }

 private:
  std::string_view text_;
  bool isGood_ = true;
};

}  // namespace

std::optional<std::int64_t> nanosecondsFromDate(std::string_view text) {
  using namespace std::chrono;
  Fields fields(text);
  const year itsYear(static_cast<int>(fields.number(4, "-")));
  const month itsMonth(fields.number(2, "-"));
  const day itsDay(fields.number(2, "T"));
  const unsigned hour = fields.number(2, ":");
  const unsigned minute = fields.number(2, ":");
  const unsigned second = fields.number(2, "");
  const unsigned nanoseconds = fields.nanoseconds();
  const year_month_day date(itsYear, itsMonth, itsDay);
  if (!fields.isGood() || !date.ok() || hour > 23 || minute > 59 || second > 59)
    return std::nullopt;
  const std::int64_t seconds =
      sys_days(date).time_since_epoch().count() * 86400LL + hour * 3600LL + minute * 60LL + second;
  std::int64_t result = 0;
  if (__builtin_mul_overflow(seconds, std::int64_t{1'000'000'000}, &result) ||
      __builtin_add_overflow(result, std::int64_t{nanoseconds}, &result)) {
    return std::nullopt;
  }
  return result;
}

}  // namespace tavrenix::lab
