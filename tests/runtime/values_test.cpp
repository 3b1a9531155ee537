// Property-list values and errors, and the C face of both.
#include <gtest/gtest.h>
#include <tavrenix/ob.h>

#include <cmath>

#include "runtime/c_bridge.hpp"
#include "runtime/error.hpp"
#include "runtime/values.hpp"

namespace {

TEST(Strings, TakeUTF8AndNothingElse) {
  for (const char* good : {"", "plain", "gr\xC3\xBC\xC3\x9F", "\xE2\x82\xAC", "\xF0\x9F\x92\xBE",
                           "\xEF\xBF\xBF", "\xED\x9F\xBF", "\xF4\x8F\xBF\xBF"}) {
    const auto string = ob::String::make(good);
    ASSERT_TRUE(string) << good;
    EXPECT_EQ(string->view(), good);
  }
  for (const char* bad :
       {"\x80", "\xC3", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "ab\xE2\x82"}) {
    EXPECT_FALSE(ob::String::make(bad)) << bad;
    EXPECT_EQ(ObStringCreateWithUTF8(bad), nullptr) << bad;
  }
}

TEST(Strings, KeepZeroBytesAndCompareLiterally) {
  const auto zero = ob::String::make(std::string_view("a\0b", 3));
  EXPECT_EQ(ObStringGetLength(ob::toC<ObStringRef>(zero.get())), 3u);
  ObStringRef a = ObStringCreateWithUTF8("a");
  ObStringRef capital = ObStringCreateWithUTF8("A");
  EXPECT_GT(ObStringCompare(a, capital), 0);
  EXPECT_LT(ObStringCompare(a, ob::toC<ObStringRef>(zero.get())), 0);
  EXPECT_GT(ObStringCompare(a, nullptr), 0);
  EXPECT_EQ(ObStringCompare(a, a), 0);
  ObRelease(a);
  ObRelease(capital);
}

TEST(Numbers, ConvertOnlyWhatTheyRepresentExactly) {
  struct Case {
    ob::Ref<ob::Number> number;
    std::optional<std::int64_t> asSigned;
    std::optional<std::uint64_t> asUnsigned;
    std::uint64_t bits;
  };
  const Case cases[] = {
      {ob::Number::make(std::int64_t{-1}), -1, std::nullopt, UINT64_MAX},
      {ob::Number::make(UINT64_MAX), std::nullopt, UINT64_MAX, UINT64_MAX},
      {ob::Number::make(INT64_MIN), INT64_MIN, std::nullopt, std::uint64_t{1} << 63},
      {ob::Number::make(3.0), 3, 3, 3},
      {ob::Number::make(3.5), std::nullopt, std::nullopt, 0},
      {ob::Number::make(std::ldexp(1.0, 63)), std::nullopt, std::uint64_t{1} << 63,
       std::uint64_t{1} << 63},
      {ob::Number::make(std::ldexp(1.0, 64)), std::nullopt, std::nullopt, 0},
      {ob::Number::make(std::nan("")), std::nullopt, std::nullopt, 0},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.number->asDouble());
    EXPECT_EQ(each.number->asInt64(), each.asSigned);
    EXPECT_EQ(each.number->asUInt64(), each.asUnsigned);
    EXPECT_EQ(each.number->bits(), each.bits);
    std::int64_t untouched = 77;
    EXPECT_EQ(ObNumberGetInt64(ob::toC<ObNumberRef>(each.number.get()), &untouched),
              each.asSigned.has_value());
    EXPECT_EQ(untouched, each.asSigned.value_or(77));
  }
}

TEST(Values, AreEqualByValueWithinTheirKind) {
  const std::uint8_t bytes[] = {1, 2};
  const auto one = ob::Number::make(std::int64_t{1});
  EXPECT_TRUE(one->equals(*ob::Number::make(std::uint64_t{1})));
  EXPECT_TRUE(one->equals(*ob::Number::make(1.0)));
  EXPECT_FALSE(one->equals(*ob::Boolean::of(true)));
  EXPECT_TRUE(ob::Data::make(bytes)->equals(*ob::Data::make(bytes)));
  EXPECT_FALSE(ob::Data::make(bytes)->equals(*ob::String::make("\x01\x02")));
  EXPECT_TRUE(ob::Date::make(5)->equals(*ob::Date::make(5)));
  EXPECT_TRUE(ob::Array::make({one})->equals(*ob::Array::make({ob::Number::make(1.0)})));
  EXPECT_FALSE(ob::Array::make({one})->equals(*ob::Array::make({})));
  ob::DictionaryBuilder left(1), right(1), other(1);
  left.add(*ob::String::make("k"), one);
  right.add(*ob::String::make("k"), ob::Number::make(1.0));
  other.add(*ob::String::make("l"), one);
  const auto dictionary = left.build();
  EXPECT_TRUE(dictionary->equals(*right.build()));
  EXPECT_FALSE(dictionary->equals(*other.build()));
  EXPECT_TRUE(ObEqual(nullptr, nullptr));
  EXPECT_FALSE(ObEqual(nullptr, one.get()));
}

TEST(CFace, ReportsAbsenceForOtherKinds) {
  const auto number = ob::Number::make(std::int64_t{4});
  const void* wrong = number.get();
  EXPECT_EQ(ObStringGetUTF8(static_cast<ObStringRef>(wrong)), nullptr);
  EXPECT_EQ(ObStringGetLength(static_cast<ObStringRef>(wrong)), 0u);
  EXPECT_EQ(ObArrayGetCount(static_cast<ObArrayRef>(wrong)), 0u);
  EXPECT_EQ(ObArrayGetValueAtIndex(static_cast<ObArrayRef>(wrong), 0), nullptr);
  EXPECT_EQ(ObDictionaryGetValue(static_cast<ObDictionaryRef>(wrong), nullptr), nullptr);
  EXPECT_EQ(ObErrorGetCode(static_cast<ObErrorRef>(wrong)), 0);
  EXPECT_EQ(ObErrorCopyDescription(static_cast<ObErrorRef>(wrong)), nullptr);
  EXPECT_EQ(ObDataGetLength(static_cast<ObDataRef>(wrong)), 0u);
  EXPECT_FALSE(ObBooleanGetValue(static_cast<ObBooleanRef>(wrong)));
  EXPECT_TRUE(ObNumberGetInt64(static_cast<ObNumberRef>(wrong), nullptr));
  EXPECT_EQ(ObGetTypeID(nullptr), 0u);
  EXPECT_EQ(ObGetTypeID(wrong), ObNumberGetTypeID());
  const auto array = ob::Array::make({number});
  EXPECT_EQ(ObArrayGetValueAtIndex(ob::toC<ObArrayRef>(array.get()), 0), wrong);
  EXPECT_EQ(ObArrayGetValueAtIndex(ob::toC<ObArrayRef>(array.get()), 1), nullptr);
}

TEST(Errors, DescribeThemselvesByMessageAndNumbers) {
  const auto plain = ob::make<ob::Error>(ob::String::make("Bad thing"), 0x08000001, nullptr);
  EXPECT_EQ(plain->description()->view(), "Bad thing (error 0x08000001)");
  ob::DictionaryBuilder info(1);
  info.add(*ob::String::make("Result"), ob::Number::make(std::int64_t{-16}));
  const auto detailed = ob::make<ob::Error>(ob::String::make("Refused"), 0x08000003, info.build());
  EXPECT_EQ(detailed->description()->view(), "Refused (error 0x08000003, result -16)");
}

}  // namespace
