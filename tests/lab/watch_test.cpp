// tavrenix-lab-watch as a person runs it: what others do to the image shows as lines.
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "lab/image.hpp"
#include "tests/lab/scratch.hpp"

extern char** environ;

namespace tavrenix::lab {
namespace {

// One output of a running program, read line by line.
class Lines {
 public:
  Lines() {
    if (::pipe(ends_) != 0) throw std::runtime_error("no pipe");
  }
  ~Lines() {
    ::close(ends_[0]);
    closeWriter();
  }
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;
  int writer() const { return ends_[1]; }
  void closeWriter() {
    if (ends_[1] >= 0) ::close(std::exchange(ends_[1], -1));
  }

  // The next line, or nothing where none comes for very long.
  std::string next() {
    constexpr int kVeryLong = 30'000;
    std::string line;
    char read = 0;
    pollfd waited{ends_[0], POLLIN, 0};
    while (::poll(&waited, 1, kVeryLong) == 1 && ::read(ends_[0], &read, 1) == 1 && read != '\n') {
      line += read;
    }
    return line;
  }

 private:
  int ends_[2] = {-1, -1};
};

class Watch : public testing::Test {
 protected:
  ~Watch() override {
    if (process_ <= 0) return;
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
  }

  void start() {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output_.writer(), 1);
    posix_spawn_file_actions_adddup2(&actions, errors_.writer(), 2);
    std::string program = TAVRENIX_LAB_WATCH;
    char* arguments[] = {program.data(), image_.data(), nullptr};
    ASSERT_EQ(::posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    output_.closeWriter();
    errors_.closeWriter();
  }
  // What is there at the start is told while the program still registers; it listens to everything
  // once it waits.
  void waitUntilItListens() const {
    const std::string stat = "/proc/" + std::to_string(process_) + "/stat";
    while (contentsOf(stat).find(") R ") != std::string::npos) ::usleep(1000);
  }
  // Kind and identifier of the next lines, in alphabetical order.
  std::vector<std::string> lines(std::size_t count) {
    std::vector<std::string> found;
    while (found.size() < count) {
      const std::string line = output_.next();
      constexpr std::size_t kTime = 25;  // 2026-11-21 10:00:00.000 and two blanks
      found.push_back(line.size() < kTime ? line : line.substr(kTime));
      if (line.empty()) break;
    }
    std::sort(found.begin(), found.end());
    return found;
  }
  // As editors save: a new file takes the old one's name.
  void save(const std::string& text) const {
    scratch_.write("new", text);
    std::filesystem::rename(scratch_.path("new"), image_);
  }
  static std::string path(int id, const std::string& identifier) {
    return R"({"id": )" + std::to_string(id) +
           R"(, "class": "KsSCSIHierarchicalLogicalUnit", "properties": {"Logical Unit Path Identifier": {"$data": ")" +
           identifier +
           R"("}}, "statistics": {"sent": 0, "received": 0, "commands": 0, "state": 0}})";
  }
  static std::string unit(int id, const std::string& identifier, const std::string& parents) {
    return R"({"id": )" + std::to_string(id) +
           R"(, "class": "KsSCSIMultipathedLogicalUnit", "parents": [)" + parents +
           R"(], "properties": {"Peripheral Device Type": 0, "Logical Unit Unique Identifier": {"$data": ")" +
           identifier + R"("}}})";
  }
  static std::string image(const std::string& entries, int generation = 1) {
    return R"({"generation": )" + std::to_string(generation) + R"(, "entries": [)" + entries + "]}";
  }

  Scratch scratch_;
  std::string image_ = scratch_.path("image.json");
  Lines output_;
  Lines errors_;
  pid_t process_ = 0;
};

using Expected = std::vector<std::string>;
const std::string kUnitCame = "Logical Unit Appeared          ";
const std::string kUnitWent = "Logical Unit Disappeared       ";
const std::string kPathCame = "Logical Unit Path Appeared     ";
const std::string kPathWent = "Logical Unit Path Disappeared  ";

TEST_F(Watch, FollowsWhatAnEditorDoesEvenWhereTheGenerationIsForgotten) {
  save(image(path(1, "01") + "," + path(2, "02") + "," + unit(9, "AA", "1, 2")));
  start();
  EXPECT_EQ(lines(3), (Expected{kUnitCame + "AA", kPathCame + "01", kPathCame + "02"}));
  waitUntilItListens();
  // A path more: the unit stays.
  save(image(path(1, "01") + "," + path(2, "02") + "," + path(3, "03") + "," +
             unit(9, "AA", "1, 2, 3")));
  EXPECT_EQ(lines(1), Expected{kPathCame + "03"});
  // One unit with all its paths is exchanged for another.
  save(image(path(4, "04") + "," + unit(8, "BB", "4")));
  EXPECT_EQ(lines(4),
            (Expected{kUnitWent + "AA", kPathWent + "01", kPathWent + "02", kPathWent + "03"}));
  EXPECT_EQ(lines(2), (Expected{kUnitCame + "BB", kPathCame + "04"}));
}

TEST_F(Watch, FollowsAfterAModifyByAnotherProcess) {
  const std::string two =
      path(1, "01") + "," + unit(9, "AA", "1") + "," + path(2, "02") + "," + unit(8, "BB", "2");
  save(image(two));
  start();
  EXPECT_EQ(lines(4).size(), 4U);
  waitUntilItListens();
  const std::string modify =
      "'" TAVRENIX_LAB "' '" + image_ + "' modify lun --id AA --algorithm LeastIO > /dev/null";
  ASSERT_EQ(std::system(modify.c_str()), 0);
  const Image modified = Image::parse(contentsOf(image_));
  EXPECT_EQ(modified.generation(), 2U);
  // The generation of the modify is still to be noticed when the unit goes.
  save(image(path(1, "01") + "," + unit(9, "AA", "1"), 3));
  EXPECT_EQ(lines(2), (Expected{kUnitWent + "BB", kPathWent + "02"}));
}

TEST_F(Watch, ReportsABadFileOnceAndKeepsTheLastGoodState) {
  save(image(path(1, "01") + "," + unit(9, "AA", "1")));
  start();
  EXPECT_EQ(lines(2).size(), 2U);
  save("{");
  const std::string first = errors_.next();
  EXPECT_EQ(first.find("tavrenix-lab-watch: " + image_ + ": line 1"), 0U) << first;
  save("{");
  save("[]");
  const std::string second = errors_.next();
  EXPECT_NE(second, first);
  EXPECT_NE(second.find(image_), std::string::npos) << second;
  std::filesystem::remove(image_);
  EXPECT_NE(errors_.next().find("No such file"), std::string::npos);
  save(image(path(1, "01") + "," + unit(9, "AA", "1") + "," + unit(8, "BB", "")));
  EXPECT_EQ(lines(1), Expected{kUnitCame + "BB"});
}

TEST_F(Watch, RefusesABadFileAtTheStart) {
  save("{");
  start();
  EXPECT_NE(errors_.next().find(image_ + ": line 1"), std::string::npos);
  int status = 0;
  ::waitpid(std::exchange(process_, 0), &status, 0);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 2);
}

}  // namespace
}  // namespace tavrenix::lab
