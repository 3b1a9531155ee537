// Table and status lines of multipath maps, as kernels print them and as they never should.
#include <gmock/gmock.h>

#include "linux/multipath_status.hpp"
#include "linux/multipath_table.hpp"
#include "linux/reload.hpp"
#include "linux/text.hpp"

namespace tavrenix::sys {
namespace {

constexpr const char* kTables[] = {
    "1 queue_if_no_path 0 1 1 round-robin 0 2 1 8:0 1 8:64 1",
    "1 queue_if_no_path 1 alua 2 2 service-time 0 1 2 8:48 1 1 service-time 0 1 2 8:112 1 3",
    "3 pg_init_retries 50 queue_if_no_path 0 1 1 queue-length 0 1 1 8:16 1",
    "0 0 1 1 historical-service-time 2 1024 10 2 0 8:0 8:16",
    "0 0 1 1 io-affinity 0 1 1 8:0 ff",
    "4 queue_mode bio pg_init_delay_msecs 10 0 0 0",
    "0 0 0 0",
    "0 0 1 1 round-robin 0 0 0",
};

constexpr const char* kStatuses[] = {
    "2 0 0 0 1 1 A 0 2 0 8:0 A 0 8:64 A 0",
    "2 0 0 0 1 1 A 0 2 1 8:16 A 0 0 8:80 F 1 0",
    "2 1 5 0 2 2 E 0 1 2 8:48 A 0 0 1 D 0 1 2 8:112 F 12 0 1",
    "2 0 0 0 1 1 A 2 3 4 1 0 8:0 A 0",
    "2 0 0 0 0 0",
};

// The line without one word, and with one word made into something else, for each word.
std::vector<std::string> damaged(const std::string& line) {
  const auto words = splitWords(line, 100).value();
  const auto joined = [&](std::size_t at, std::string_view instead) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
      const std::string_view word = i == at ? instead : words[i];
      if (!word.empty()) text.append(text.empty() ? "" : " ").append(word);
    }
    return text;
  };
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < words.size(); ++at) {
    lines.push_back(joined(at, ""));
    const bool isCount = parseNumber(words[at]).has_value();
    for (const auto word : {"-1", "99999", "18446744073709551616", "x"}) {
      if (isCount) lines.push_back(joined(at, word));
    }
  }
  return lines;
}

TEST(MultipathTable, IsWrittenAsItWasRead) {
  for (const std::string line : kTables) {
    const auto table = parseMultipathTable(line + ' ');
    ASSERT_TRUE(table) << line;
    EXPECT_EQ(formatMultipathTable(*table), line);
  }
}

TEST(MultipathTable, IsUnderstood) {
  const auto table = parseMultipathTable(kTables[1]);
  ASSERT_TRUE(table);
  EXPECT_THAT(table->features, testing::ElementsAre("queue_if_no_path"));
  EXPECT_THAT(table->handler, testing::ElementsAre("alua"));
  EXPECT_EQ(table->initialGroup, 2u);
  ASSERT_EQ(table->groups.size(), 2u);
  EXPECT_EQ(table->groups[1].paths.at(0).device, (DeviceNumber{8, 112}));
  EXPECT_THAT(table->groups[1].paths[0].arguments, testing::ElementsAre("1", "3"));
  EXPECT_EQ(commonSelector(*table), "service-time");
  EXPECT_EQ(repeatCount(*parseMultipathTable("0 0 1 1 round-robin 0 1 1 8:0 16")), 16u);
  EXPECT_EQ(repeatCount(*parseMultipathTable(kTables[6])), 0u);
  EXPECT_EQ(commonSelector(*parseMultipathTable(kTables[6])), "");
  EXPECT_EQ(commonSelector(
                *parseMultipathTable("0 0 2 1 round-robin 0 1 1 8:0 1 queue-length 0 1 1 8:16 1")),
            "");
}

TEST(MultipathTable, IsRefusedWhereAWordIsMissingOrWrong) {
  // A line that loses or bends one word may still be a line, of another map; it must never be read
  // past its end, and what is read must be all of it.
  for (const std::string line : kTables) {
    EXPECT_FALSE(parseMultipathTable(line + " 1"));
    for (const auto& bent : damaged(line)) {
      const auto table = parseMultipathTable(bent);
      if (!table) continue;
      const std::string again = formatMultipathTable(*table);
      EXPECT_EQ(splitWords(again, 100), splitWords(bent, 100));
    }
  }
  for (const auto line : {"", " ", "1", "0 0", "0 0 1 1", "0 0 1 1 round-robin 0 2 1 8:0 1",
                          "0 0 1 2 round-robin 0 1 1 8:0 1", "0 0 1 1 round-robin 0 1 1 sda 1",
                          "0 0 4294967295 1", "9999999999999999999999 0 0 0", "0 16384"}) {
    EXPECT_FALSE(parseMultipathTable(line)) << line;
  }
}

TEST(MultipathTable, OnlyKnownSelectorsTellARepeatCount) {
  EXPECT_EQ(repeatCount(parseMultipathTable("0 0 1 1 queue-length 0 1 1 8:0 7").value()), 7u);
  EXPECT_EQ(repeatCount(parseMultipathTable("0 0 1 1 io-affinity 0 1 1 8:0 3").value()), 0u);
}

TEST(MultipathTable, LinesWithoutEndAreRefused) {
  std::string endless = "0 0 1 1 round-robin 0 70000 0";
  for (int i = 0; i < 70000; ++i) endless += " 8:0";
  EXPECT_FALSE(parseMultipathTable(endless));
}

TEST(MultipathStatus, IsUnderstood) {
  for (const auto line : kStatuses) EXPECT_TRUE(parseMultipathStatus(line)) << line;
  const auto status = parseMultipathStatus(kStatuses[2]);
  ASSERT_TRUE(status);
  EXPECT_EQ(status->uses({8, 48}), true);
  EXPECT_EQ(status->uses({8, 112}), false);
  EXPECT_EQ(status->uses({8, 0}), std::nullopt);
  EXPECT_EQ(status->groups.at(0).state, 'E');
  EXPECT_EQ(status->groups.at(1).state, 'D');
}

TEST(MultipathStatus, IsRefusedWhereAWordIsMissingOrWrong) {
  for (const std::string line : kStatuses) {
    EXPECT_FALSE(parseMultipathStatus(line + " 1"));
    for (const auto& bent : damaged(line)) {
      const auto status = parseMultipathStatus(bent);
      if (!status) continue;
      for (const auto& group : status->groups) EXPECT_LE(group.paths.size(), 2u) << bent;
    }
  }
  for (const auto line : {"", "2 0 0 0 1 1", "2 0 0 0 1 1 X 0 0 0", "2 0 0 0 1 1 A 0 1 0 8:0 B 0",
                          "2 0 0 0 1 1 A 0 1 0 8:0 A x", "2 0 0 0 1 1 A 0 5 0 8:0 A 0"}) {
    EXPECT_FALSE(parseMultipathStatus(line)) << line;
  }
}

TEST(WithSelector, ChangesTheSelectorAlone) {
  const auto changed = [](const char* line, const char* algorithm, std::uint64_t repeat) {
    return formatMultipathTable(
        withSelector(*parseMultipathTable(line), *selectorForAlgorithm(algorithm), repeat));
  };
  EXPECT_EQ(changed(kTables[1], "Modified Round Robin", 4),
            "1 queue_if_no_path 1 alua 2 2 round-robin 0 1 1 8:48 4 round-robin 0 1 1 8:112 4");
  EXPECT_EQ(changed(kTables[1], "Least Bytes", 1), kTables[1]);  // throughputs stay
  EXPECT_EQ(changed(kTables[3], "Least Bytes", 1), "0 0 1 1 service-time 0 2 2 8:0 1 1 8:16 1 1");
  EXPECT_EQ(changed(kTables[6], "Least Queue Depth", 1), kTables[6]);
}

}  // namespace
}  // namespace tavrenix::sys
