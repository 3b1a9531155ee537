// Property-list values, bytes as text, and the map under dictionaries.
#include <gtest/gtest.h>
#include <tavrenix/ob.h>

#include <cmath>
#include <map>
#include <random>

#include "runtime/byte_text.hpp"
#include "runtime/c/c_bridge.hpp"
#include "runtime/values.hpp"

namespace {

TEST(ByteText, ShowsWholeCharactersAndNoControlCharacters) {
  const std::string_view rows[][3] = {
      // bytes, printable in at most 8 bytes, escaped in about 8 bytes
      {"gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F"},
      {"a\x1B[1m\x7F", "a?[1m?", "a\\x1B[1m..."},
      {{"\0\n", 2}, "??", "\\x00\\x0A"},
      {"\xC2\x9B\xC2\xA0", "?\xC2\xA0", "\\xC2\\x9B..."},
      {"\x80\xE2\x82", "???", "\\x80\\xE2..."},
      {"\xED\xA0\x80\xF4\x90\x80\x80", "???????", "\\xED\\xA0..."},
      {"12345678", "12345678", "12345678"},
      {"1234567\xC3\xBC", "1234567", "1234567\xC3\xBC"},
      {"123456789", "12345678", "12345678..."},
  };
  for (const auto& [bytes, printable, escaped] : rows) {
    EXPECT_EQ(ob::printable(bytes, 8), printable);
    EXPECT_EQ(ob::escaped(bytes, 8), escaped);
  }
}

TEST(Strings, TakeUTF8AndNothingElse) {
  for (const char* bad : {"\xC3", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xF5\x80"})
    EXPECT_EQ(ObStringCreateWithUTF8(bad), nullptr) << bad;
}

TEST(Numbers, ConvertToIntegersWithoutTheirFraction) {
  const std::tuple<ob::Ref<ob::Number>, std::optional<std::int64_t>, std::optional<std::uint64_t>,
                   std::uint64_t>
      rows[] = {
          {ob::Number::make(std::int64_t{-1}), -1, std::nullopt, UINT64_MAX},
          {ob::Number::make(UINT64_MAX), std::nullopt, UINT64_MAX, UINT64_MAX},
          {ob::Number::make(1500000000.5), 1500000000, 1500000000, 1500000000},
          {ob::Number::make(-1.5), -1, std::nullopt, UINT64_MAX},
          {ob::Number::make(0x1p63), std::nullopt, 1ULL << 63, 1ULL << 63},
          {ob::Number::make(0x1p64), std::nullopt, std::nullopt, 0},
          {ob::Number::make(std::nan("")), std::nullopt, std::nullopt, 0},
      };
  for (const auto& [number, asSigned, asUnsigned, bits] : rows) {
    EXPECT_EQ(number->asInt64(), asSigned) << number->asDouble();
    EXPECT_EQ(number->asUInt64(), asUnsigned) << number->asDouble();
    EXPECT_EQ(number->bits(), bits) << number->asDouble();
  }
}

TEST(Values, AreEqualByValueWithinTheirKind) {
  const std::uint8_t bytes[] = {1, 2};
  const auto one = ob::Number::make(std::int64_t{1}), alsoOne = ob::Number::make(1.0);
  const auto under = [](const char* key, const ob::Ref<ob::Number>& value) {
    ob::DictionaryBuilder builder(1);
    builder.add(*ob::String::make(key), value);
    return builder.build();
  };
  const std::vector<std::vector<ob::Ref<const ob::Object>>> groups = {
      {nullptr},
      {one, alsoOne, ob::Number::make(std::uint64_t{1})},
      {ob::Number::make(UINT64_MAX), ob::Number::make(UINT64_MAX)},
      {ob::String::make("\x01\x02"), ob::String::make("\x01\x02")},
      {ob::Data::make(bytes), ob::Data::make(bytes)},
      {ob::Date::make(5), ob::Date::make(5)},
      {ob::Array::make({one}), ob::Array::make({alsoOne})},
      {ob::Array::make({})},
      {under("k", one), under("k", alsoOne)},
      {under("l", one)},
      {under("k", ob::Number::make(2.0))},
  };
  for (const auto& mine : groups)
    for (const auto& others : groups)
      for (const auto& other : others)
        EXPECT_EQ(ObEqual(mine.front().get(), other.get()), &mine == &others)
            << (&mine - groups.data()) << " and " << (&others - groups.data());
}

TEST(OrderedMap, AgreesWithAModelThroughRandomChanges) {
  for (const std::uint64_t keys : {8u, 40u, 1000u}) {  // on both sides of the size with an index
    std::mt19937_64 random(keys);
    ob::NumberMap<std::uint64_t> map;
    std::map<std::uint64_t, std::uint64_t> model;
    for (std::uint64_t step = 0; step < 20'000; ++step) {
      const std::uint64_t key = random() % keys;
      if (random() % 5 < 2) {
        map.erase(key);
        model.erase(key);
      } else {
        map.set(key, step);
        model[key] = step;
      }
      ASSERT_EQ(map.size(), model.size());
    }
    for (const auto& [key, value] : model)
      ASSERT_TRUE(map.contains(key) && *map.find(key) == value);
  }
}

}  // namespace
