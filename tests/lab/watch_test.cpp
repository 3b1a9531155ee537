// tavrenix-lab-watch as a person runs it: what others do to the image shows as lines.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "tests/lab/programs.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::lab {
namespace {

class Watch : public testing::Test {
 protected:
  ~Watch() override {
    if (program_ == nullptr) return;
    ::kill(process_, SIGTERM);
    ::pclose(program_);
  }

  void start() {
    const std::string command = "echo $$; exec '" TAVRENIX_LAB_WATCH "' '" + image_ + "' 2>&1";
    program_ = ::popen(command.c_str(), "r");
    process_ = std::stoi(line());
  }
  // The next line, which it waits for.
  std::string line() {
    char text[4096] = "";
    return std::fgets(text, sizeof text, program_) == nullptr ? "" : text;
  }
  // What is there at the start is told while the program still registers; it listens to everything
  // once it waits.
  void waitUntilItListens() const {
    const std::string stat = "/proc/" + std::to_string(process_) + "/stat";
    while (contentsOf(stat).find(") R ") != std::string::npos) ::usleep(1000);
  }
  // Kind and identifier of the next lines, in alphabetical order.
  std::vector<std::string> lines(std::size_t count) {
    constexpr std::size_t kTime = 25;  // 2026-11-21 10:00:00.000 and two blanks
    std::vector<std::string> found;
    while (found.size() < count) found.push_back(line().erase(0, kTime));
    std::sort(found.begin(), found.end());
    return found;
  }
  // As editors save: a new file takes the old one's name.
  void save(const std::string& text) const {
    scratch_.write("new", text);
    std::filesystem::rename(scratch_.path("new"), image_);
  }
  void saveEntries(const std::string& entries, int generation = 1) const {
    save(R"({"generation": )" + std::to_string(generation) + R"(, "entries": [)" + entries + "]}");
  }
  Scratch scratch_;
  std::string image_ = scratch_.path("image.json");
  FILE* program_ = nullptr;
  pid_t process_ = 0;
};

using Expected = std::vector<std::string>;
const std::string kUnitCame = "Logical Unit Appeared          ";
const std::string kUnitWent = "Logical Unit Disappeared       ";
const std::string kPathCame = "Logical Unit Path Appeared     ";
const std::string kPathWent = "Logical Unit Path Disappeared  ";

TEST_F(Watch, FollowsWhatAnEditorDoesEvenWhereTheGenerationIsForgotten) {
  saveEntries(unitWithPaths(90, {11, 12}));
  start();
  EXPECT_EQ(lines(3), (Expected{kUnitCame + "90\n", kPathCame + "11\n", kPathCame + "12\n"}));
  waitUntilItListens();
  saveEntries(unitWithPaths(90, {11, 12, 13}));
  EXPECT_EQ(lines(1), Expected{kPathCame + "13\n"}) << "the unit stays";
  saveEntries(unitWithPaths(80, {14}));
  EXPECT_EQ(lines(4), (Expected{kUnitWent + "90\n", kPathWent + "11\n", kPathWent + "12\n",
                                kPathWent + "13\n"}));
  EXPECT_EQ(lines(2), (Expected{kUnitCame + "80\n", kPathCame + "14\n"}));
}

TEST_F(Watch, FollowsAfterAModifyByAnotherProcess) {
  saveEntries(unitWithPaths(90, {11}) + ", " + unitWithPaths(80, {12}));
  start();
  lines(4);
  waitUntilItListens();
  const std::string modify = "modify lun --id 90 --algorithm LeastIO > /dev/null";
  ASSERT_EQ(run("'" TAVRENIX_LAB "' '" + image_ + "' " + modify).status, 0);
  EXPECT_NE(contentsOf(image_).find("\"generation\": 2"), std::string::npos);
  // The generation of the modify is still to be noticed when the unit goes.
  saveEntries(unitWithPaths(90, {11}), 3);
  EXPECT_EQ(lines(2), (Expected{kUnitWent + "80\n", kPathWent + "12\n"}));
}

TEST_F(Watch, ReportsABadFileOnceAndKeepsTheLastGoodState) {
  saveEntries(unitWithPaths(90, {11}));
  start();
  lines(2);
  save("{");
  const std::string first = line();
  EXPECT_TRUE(first.starts_with("tavrenix-lab-watch: " + image_ + ": line 1")) << first;
  save("{");
  save("[]");
  const std::string second = line();
  EXPECT_NE(second, first);
  EXPECT_NE(second.find(image_), std::string::npos) << second;
  std::filesystem::remove(image_);
  EXPECT_NE(line().find("No such file"), std::string::npos);
  saveEntries(unitWithPaths(90, {11}) + ", " + unitWithPaths(80, {}));
  EXPECT_EQ(lines(1), Expected{kUnitCame + "80\n"});
}

}  // namespace
}  // namespace tavrenix::lab
