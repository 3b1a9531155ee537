// Property-list values and errors, and the C face of both.
#include <gtest/gtest.h>
#include <tavrenix/ob.h>

#include <cmath>
#include <set>

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
  EXPECT_EQ(ob::Number::make(UINT64_MAX)->asDouble(), 18446744073709551616.0);  // the nearest
}

ob::Ref<ob::Dictionary> dictionary(const char* key, ob::Ref<const ob::Object> value) {
  ob::DictionaryBuilder builder(1);
  builder.add(*ob::String::make(key), std::move(value));
  return builder.build();
}

TEST(Values, AreEqualByValueWithinTheirKind) {
  const std::uint8_t bytes[] = {1, 2};
  const auto one = ob::Number::make(std::int64_t{1});
  const auto alsoOne = ob::Number::make(1.0);
  const std::vector<std::vector<ob::Ref<const ob::Object>>> groups = {
      {nullptr},
      {one, alsoOne, ob::Number::make(std::uint64_t{1})},
      {ob::Number::make(1.5), ob::Number::make(1.5)},
      {ob::Number::make(UINT64_MAX), ob::Number::make(UINT64_MAX)},
      {ob::Ref<const ob::Object>::retain(ob::Boolean::of(true))},
      {ob::String::make("\x01\x02"), ob::String::make("\x01\x02")},
      {ob::Data::make(bytes), ob::Data::make(bytes)},
      {ob::Date::make(5), ob::Date::make(5)},
      {ob::Array::make({one}), ob::Array::make({alsoOne})},
      {ob::Array::make({})},
      {dictionary("k", one), dictionary("k", alsoOne)},
      {dictionary("l", one)},
      {dictionary("k", ob::Number::make(2.0))},
  };
  for (const auto& mine : groups) {
    for (const auto& others : groups) {
      for (const auto& other : others) {
        EXPECT_EQ(ObEqual(mine.front().get(), other.get()), &mine == &others)
            << (&mine - groups.data()) << " and " << (&others - groups.data());
      }
    }
  }
}

// One object of each kind and none at all: every question is answered for its own kind alone.
TEST(CFace, TellsEveryKindApartAndReportsAbsenceForTheOthers) {
  const std::uint8_t bytes[] = {0x0A, 0xFF};
  const auto text = ob::String::make("text");
  const auto number = ob::Number::make(std::int64_t{4});
  const auto data = ob::Data::make(bytes);
  const auto date = ob::Date::make(5);
  const auto array = ob::Array::make({number});
  const auto members = dictionary("text", number);
  const auto error = ob::make<ob::Error>(text, 1, nullptr);
  const ObRunLoopSourceContext nothing{};
  const ObRunLoopSourceRef source = ObRunLoopSourceCreate(&nothing);
  const ObDispatchQueueRef queue = ObDispatchQueueCreate(nullptr);
  const std::pair<ObTypeRef, ObTypeID> kinds[] = {
      {nullptr, 0},
      {text.get(), ObStringGetTypeID()},
      {number.get(), ObNumberGetTypeID()},
      {kObBooleanTrue, ObBooleanGetTypeID()},
      {data.get(), ObDataGetTypeID()},
      {date.get(), ObDateGetTypeID()},
      {array.get(), ObArrayGetTypeID()},
      {members.get(), ObDictionaryGetTypeID()},
      {error.get(), ObErrorGetTypeID()},
      {ObRunLoopGetCurrent(), ObRunLoopGetTypeID()},
      {source, ObRunLoopSourceGetTypeID()},
      {queue, ObDispatchQueueGetTypeID()},
  };
  const auto key = ob::toC<ObStringRef>(text.get());
  std::set<ObTypeID> seen;
  for (const auto& each : kinds) {
    const ObTypeRef object = each.first;
    const ObTypeID kind = each.second;
    SCOPED_TRACE(kind);
    EXPECT_EQ(ObGetTypeID(object), kind);
    EXPECT_TRUE(seen.insert(kind).second);
    const auto is = [&](const auto& one) { return object == one.get(); };
    EXPECT_STREQ(ObStringGetUTF8(static_cast<ObStringRef>(object)), is(text) ? "text" : nullptr);
    EXPECT_EQ(ObStringGetLength(static_cast<ObStringRef>(object)), is(text) ? 4u : 0u);
    EXPECT_EQ(ObNumberGetInt64(static_cast<ObNumberRef>(object), nullptr), is(number));
    double value = -1;
    EXPECT_EQ(ObNumberGetDouble(static_cast<ObNumberRef>(object), &value), is(number));
    EXPECT_EQ(value, is(number) ? 4 : -1);
    EXPECT_EQ(ObBooleanGetValue(static_cast<ObBooleanRef>(object)), object == kObBooleanTrue);
    EXPECT_EQ(ObDataGetLength(static_cast<ObDataRef>(object)), is(data) ? 2u : 0u);
    const std::uint8_t* first = ObDataGetBytes(static_cast<ObDataRef>(object));
    EXPECT_EQ(first == nullptr ? 0 : first[1], is(data) ? 0xFF : 0);
    EXPECT_EQ(ObDateGetUnixNanoseconds(static_cast<ObDateRef>(object)), is(date) ? 5 : 0);
    EXPECT_EQ(ObArrayGetCount(static_cast<ObArrayRef>(object)), is(array) ? 1u : 0u);
    EXPECT_EQ(ObArrayGetValueAtIndex(static_cast<ObArrayRef>(object), 1), nullptr);
    EXPECT_EQ(ObArrayGetValueAtIndex(static_cast<ObArrayRef>(object), 0),
              is(array) ? number.get() : nullptr);
    EXPECT_EQ(ObDictionaryGetValue(static_cast<ObDictionaryRef>(object), nullptr), nullptr);
    EXPECT_EQ(ObDictionaryGetValue(static_cast<ObDictionaryRef>(object), key),
              is(members) ? number.get() : nullptr);
    EXPECT_EQ(ObErrorGetCode(static_cast<ObErrorRef>(object)), is(error) ? 1 : 0);
    const ObStringRef described = ObErrorCopyDescription(static_cast<ObErrorRef>(object));
    EXPECT_EQ(described != nullptr, is(error));
    ObRelease(described);
  }
  ObRelease(source);
  ObRelease(queue);
}

TEST(CFace, WalksADictionaryInTheOrderOfItsFilling) {
  ob::DictionaryBuilder builder(2);
  builder.add(*ob::String::make("second"), ob::String::make("2"));
  builder.add(*ob::String::make("first"), ob::String::make("1"));
  const auto filled = builder.build();
  std::string walked;
  const ObDictionaryApplier apply = [](ObStringRef key, ObTypeRef value, void* context) {
    *static_cast<std::string*>(context) += std::string(ObStringGetUTF8(key)) + "=" +
                                           ObStringGetUTF8(static_cast<ObStringRef>(value)) + " ";
  };
  ObDictionaryApplyFunction(nullptr, apply, &walked);
  ObDictionaryApplyFunction(ob::toC<ObDictionaryRef>(filled.get()), apply, &walked);
  EXPECT_EQ(walked, "second=2 first=1 ");
}

TEST(Errors, DescribeThemselvesByMessageAndNumbers) {
  const auto plain = ob::make<ob::Error>(ob::String::make("Bad thing"), 0x08000001, nullptr);
  EXPECT_EQ(plain->description()->view(), "Bad thing (error 0x08000001)");
  const auto info = dictionary("Result", ob::Number::make(std::int64_t{-16}));
  const auto detailed = ob::make<ob::Error>(ob::String::make("Refused"), 0x08000003, info);
  EXPECT_EQ(detailed->description()->view(), "Refused (error 0x08000003, result -16)");
}

}  // namespace
