// Table and status lines of multipath maps, as kernels print them and as they never should.
#include <gmock/gmock.h>

#include "linux/multipath_status.hpp"
#include "linux/multipath_table.hpp"

namespace tavrenix::sys {
namespace {

using testing::ElementsAre;

constexpr const char* kTables[] = {
    "1 queue_if_no_path 1 alua 2 2 service-time 0 1 2 8:48 1 1 service-time 0 1 2 8:112 1 3",
    "1 queue_if_no_path 0 1 1 round-robin 0 2 1 8:0 1 8:64 1",
    "3 pg_init_retries 50 queue_if_no_path 0 1 1 queue-length 0 1 1 8:16 1",
    "0 0 1 1 historical-service-time 2 1024 10 2 0 8:0 8:16",
    "0 0 1 1 io-affinity 0 1 1 8:0 ff",
    "4 queue_mode bio pg_init_delay_msecs 10 0 0 0",
    "0 0 0 0",
    "0 0 1 1 round-robin 0 0 0",
};

constexpr const char* kStatuses[] = {
    "2 1 5 0 2 2 E 0 1 2 8:48 A 0 0 1 D 0 1 2 8:112 F 12 0 1",
    "2 0 0 0 1 1 A 0 2 0 8:0 A 0 8:64 A 0",
    "2 0 0 0 1 1 A 0 2 1 8:16 A 0 0 8:80 F 1 0",
    "2 0 0 0 1 1 A 2 3 4 1 0 8:0 A 0",
    "2 0 0 0 0 0",
};

// The line with a word too many, and cut off behind each of its words.
std::vector<std::string> miscounted(std::string line) {
  std::vector<std::string> lines{line + " 1"};
  while (line.find(' ') != std::string::npos) lines.push_back(line.erase(line.rfind(' ')));
  return lines;
}

TEST(MultipathTable, IsUnderstoodAndWrittenAsItWasRead) {
  for (const std::string line : kTables) {
    const auto table = parseMultipathTable(line + ' ');
    ASSERT_TRUE(table) << line;
    EXPECT_EQ(formatMultipathTable(*table), line);
  }
  const auto table = parseMultipathTable(kTables[0]);
  EXPECT_THAT(table->features, ElementsAre("queue_if_no_path"));
  EXPECT_THAT(table->handler, ElementsAre("alua"));
  EXPECT_EQ(table->initialGroup, 2u);
  ASSERT_EQ(table->groups.size(), 2u);
  EXPECT_EQ(table->groups[1].paths.at(0).device, (DeviceNumber{8, 112}));
  EXPECT_THAT(table->groups[1].paths[0].arguments, ElementsAre("1", "3"));
}

TEST(MultipathTable, TellsTheSelectorAndTheCountOfAll) {
  struct Row {
    const char *line, *selector;
    std::uint64_t repeat;
  };
  const Row rows[] = {
      {kTables[0], "service-time", 1},
      {"0 0 1 1 round-robin 0 1 1 8:0 16", "round-robin", 16},
      {"0 0 1 1 queue-length 0 1 1 8:0 7", "queue-length", 7},
      {"0 0 1 1 io-affinity 0 1 1 8:0 3", "io-affinity",
       0},  // what it is told means something else
      {"0 0 2 1 round-robin 0 1 1 8:0 1 queue-length 0 1 1 8:16 1", "", 1},
      {"0 0 0 0", "", 0},
  };
  for (const auto& row : rows) {
    const auto table = parseMultipathTable(row.line);
    ASSERT_TRUE(table) << row.line;
    EXPECT_EQ(commonSelector(*table), row.selector) << row.line;
    EXPECT_EQ(repeatCount(*table), row.repeat) << row.line;
  }
}

TEST(MultipathTable, IsRefusedWhereAWordIsMissingOrWrong) {
  for (const auto line :
       {"", " ", "0 0 1 1 round-robin 0 2 1 8:0 1", "0 0 1 2 round-robin 0 1 1 8:0 1",
        "0 0 1 1 round-robin 0 1 1 sda 1", "0 0 1 1 round-robin 0 1 -1 8:0 1", "x 0 0 0",
        "0 0 4294967295 1", "9999999999999999999999 0 0 0", "0 16384"}) {
    EXPECT_FALSE(parseMultipathTable(line)) << line;
  }
  for (const auto line : kTables) {
    for (const auto& other : miscounted(line)) EXPECT_FALSE(parseMultipathTable(other)) << other;
  }
  std::string endless = "0 0 1 1 round-robin 0 70000 0";
  for (int i = 0; i < 70000; ++i) endless += " 8:0";
  EXPECT_FALSE(parseMultipathTable(endless));
}

TEST(MultipathStatus, IsUnderstood) {
  for (const auto line : kStatuses) EXPECT_TRUE(parseMultipathStatus(line)) << line;
  const auto status = parseMultipathStatus(kStatuses[0]);
  EXPECT_EQ(status->uses({8, 48}), true);
  EXPECT_EQ(status->uses({8, 112}), false);
  EXPECT_EQ(status->uses({8, 0}), std::nullopt);
  EXPECT_EQ(status->groups.at(0).state, 'E');
  EXPECT_EQ(status->groups.at(1).state, 'D');
}

TEST(MultipathStatus, IsRefusedWhereAWordIsMissingOrWrong) {
  for (const auto line : {"", "2 0 0 0 1 1 X 0 0 0", "2 0 0 0 1 1 A 0 1 0 8:0 B 0",
                          "2 0 0 0 1 1 A 0 1 0 8:0 A x", "2 0 0 0 1 1 A 0 5 0 8:0 A 0"}) {
    EXPECT_FALSE(parseMultipathStatus(line)) << line;
  }
  for (const auto line : kStatuses) {
    for (const auto& other : miscounted(line)) EXPECT_FALSE(parseMultipathStatus(other)) << other;
  }
}

}  // namespace
}  // namespace tavrenix::sys
