#include "lab/value_text.hpp"

#include <gtest/gtest.h>

namespace tavrenix::lab {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Hex, TakesPairsOfDigitsOfEitherCase) {
  EXPECT_EQ(bytesFromHex(""), Bytes());
  EXPECT_EQ(bytesFromHex("00fFA9"), (Bytes{0x00, 0xFF, 0xA9}));
  for (const char* bad : {"0", "000", "0g", "g0", " 0", "0 ", "-1", "+1", "0x", "0x00"}) {
    EXPECT_EQ(bytesFromHex(bad), std::nullopt) << bad;
  }
  EXPECT_EQ(hexFromBytes(Bytes{0x00, 0xFF, 0xA9}), "00FFA9");
}

TEST(Date, CountsNanosecondsSince1970) {
  const std::pair<const char*, std::int64_t> kDates[] = {
      {"1970-01-01T00:00:00Z", 0},
      {"1969-12-31T23:59:59.5Z", -500'000'000},
      {"2026-01-02T03:04:05Z", 1'767'323'045'000'000'000},
      {"2026-01-02T03:04:05.000000006Z", 1'767'323'045'000'000'006},
      {"2024-02-29T00:00:00.25Z", 1'709'164'800'250'000'000},
      {"2262-04-11T23:47:16.854775807Z", std::numeric_limits<std::int64_t>::max()},
  };
  for (const auto& [text, nanoseconds] : kDates)
    EXPECT_EQ(nanosecondsFromDate(text), nanoseconds) << text;
}

TEST(Date, RefusesEveryOtherForm) {
  for (const char* bad :
       {"", "2026-01-02", "2026-01-02T03:04:05", "2026-01-02T03:04:05z", "2026-01-02 03:04:05Z",
        "2026-1-02T03:04:05Z", "2026-01-02T03:04:05+00:00", "2026-01-02T03:04:05ZZ",
        "2026-01-02T03:04:05.Z", "2026-01-02T03:04:05.0000000001Z", "2026-01-02T03:04:05.-1Z",
        "2025-02-29T00:00:00Z", "2026-13-01T00:00:00Z", "2026-00-01T00:00:00Z",
        "2026-01-02T24:00:00Z", "2026-01-02T00:60:00Z", "2026-01-02T00:00:60Z",
        "2262-04-11T23:47:16.854775808Z", "0001-01-01T00:00:00Z"}) {
    EXPECT_EQ(nanosecondsFromDate(bad), std::nullopt) << bad;
  }
}

}  // namespace
}  // namespace tavrenix::lab
