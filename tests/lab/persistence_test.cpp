// Writes through the registry seam, and what stands in the file afterwards.
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include <csignal>

#include "lab/host.hpp"
#include "lab/plist.hpp"
#include "model/registry_names.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::lab {
namespace {

const std::vector<int> kPaths = {20, 21, 22, 23, 24, 25, 26, 27};

std::string imageText(const std::string& writeStatuses) {
  return R"({"generation": 1, "writeStatuses": [)" + writeStatuses + R"(], "entries": [)" +
         unitWithPaths(10, kPaths) + "]}";
}

// Their last digits.
std::string disabledPaths(const Image& image) {
  std::string disabled;
  for (const int path : kPaths) {
    const std::uint8_t state = image.find(static_cast<EntryID>(path))->statistics->state;
    if ((state & kPathStateDisabledBit) != 0) disabled += std::to_string(path - 20);
  }
  return disabled;
}

// Asks for the path of that identifier to be disabled, by code 3, or enabled, by code 0.
KernelStatus writeTo(SimulatedHost& host, const std::string& path, int code = 3) {
  auto& registry = host.memory().registry();
  const ScopedHandle unit(registry, registry.findServiceByEntryID(10));
  const Json request = {{"PathState", {{path, code}}}};
  return registry.setProperty(unit.get(), registry::kProperties, *valueFromJSON(request, Place()));
}

// From then on the modes of files bind the superuser as well.
void giveUpCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
  ::syscall(SYS_capset, &header, none);
}

void limitFileSize() {
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{100, 100};
  ::setrlimit(RLIMIT_FSIZE, &limit);
}

// Whether test holds in a process of its own, which may give up what it cannot take back.
template <class Test>
pid_t inAnotherProcess(const Test& test) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(test() ? 0 : 1);
  return child;
}
bool held(pid_t child) {
  int status = -1;
  return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

class PersistenceTest : public testing::Test {
 protected:
  void load(const std::string& writeStatuses = "") {
    path_ = scratch_.write("image.json", imageText(writeStatuses));
    host_.load(path_);
  }
  Image stored() const { return Image::parse(contentsOf(path_)); }

  Scratch scratch_;
  std::string path_;
  std::string reported_;
  SimulatedHost host_{[this](std::string_view line) { reported_.append(line).append("\n"); }};
};

TEST_F(PersistenceTest, ASuccessStandsInTheFileAndInTheLiveHostBesideWhatOthersDid) {
  load();
  SimulatedHost other([](std::string_view) {});
  other.load(path_);
  EXPECT_EQ(writeTo(other, "26"), kSuccess);
  EXPECT_EQ(writeTo(host_, "27"), kSuccess);
  EXPECT_EQ(disabledPaths(stored()), "67");
  EXPECT_EQ(stored().generation(), 3U);
  EXPECT_EQ(host_.memory().tunable().generation(), 3U);
  for (const EntryID path : {EntryID{26}, EntryID{27}})
    EXPECT_EQ(host_.memory().tunable().pathStatistics(path)->state, kPathStateDisabledBit);
}

TEST_F(PersistenceTest, WaitingStatusesAreAnsweredOneByOneAndRefusalsChangeNothing) {
  load("-5, 0, 7, 0");
  EXPECT_EQ(writeTo(host_, "21"), -5);
  EXPECT_EQ(disabledPaths(stored()), "");
  EXPECT_EQ(stored().generation(), 1U);
  EXPECT_EQ(writeTo(host_, "22"), kSuccess);
  EXPECT_EQ(writeTo(host_, "23"), 7);
  EXPECT_EQ(writeTo(host_, "bad"), -536870206);
  EXPECT_EQ(writeTo(host_, "25"), kSuccess);
  EXPECT_EQ(disabledPaths(stored()), "25");
  EXPECT_EQ(stored().generation(), 3U);
  const std::string before = contentsOf(path_);
  EXPECT_NE(before.find("\"writeStatuses\": []"), std::string::npos);
  EXPECT_EQ(writeTo(host_, "99"), -536870206);
  EXPECT_EQ(contentsOf(path_), before);
}

TEST_F(PersistenceTest, ConcurrentProcessesLoseNoChange) {
  constexpr int kRounds = 15;  // odd, so that every path ends disabled
  load();
  std::vector<pid_t> children;
  for (const int path : kPaths) {
    children.push_back(inAnotherProcess([&] {
      SimulatedHost own([](std::string_view) {});
      own.load(path_);
      const std::string digits = std::to_string(path);
      bool good = true;
      for (int round = 0; round < kRounds; ++round)
        good = writeTo(own, digits, round % 2 == 0 ? 3 : 0) == kSuccess && good;
      return good;
    }));
  }
  for (const pid_t child : children) EXPECT_TRUE(held(child));
  EXPECT_EQ(disabledPaths(stored()), "01234567");
  EXPECT_EQ(stored().generation(), 1U + kPaths.size() * kRounds);
  EXPECT_EQ(scratch_.files(), 1U);
}

TEST_F(PersistenceTest, ASymbolicLinkAndTheModeStay) {
  load();
  const std::string link = scratch_.path("link.json");
  std::filesystem::create_symlink("image.json", link);
  ASSERT_EQ(::chmod(path_.c_str(), 0640), 0);
  SimulatedHost other([](std::string_view) {});
  other.load(link);
  EXPECT_EQ(writeTo(other, "21"), kSuccess);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(disabledPaths(stored()), "1");
  struct stat status {};
  ASSERT_EQ(::stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
}

TEST_F(PersistenceTest, LeftoversOfAKilledProcessDoNoHarm) {
  load();
  const std::string precious = scratch_.write("precious", "text");
  std::filesystem::create_symlink("precious", scratch_.path(".image.json.tavrenix-lab"));
  EXPECT_EQ(writeTo(host_, "21"), kSuccess);
  EXPECT_EQ(disabledPaths(stored()), "1");
  EXPECT_EQ(contentsOf(precious), "text");
  EXPECT_EQ(scratch_.files(), 2U);
}

TEST_F(PersistenceTest, WhatCannotBeWrittenStaysWhole) {
  struct Case {
    ::mode_t folder;
    void (*giveUp)();
    KernelStatus status;
    std::string reported;
  };
  const Case cases[] = {
      {0700, limitFileSize, -EFBIG, ": cannot be written: File too large\n"},
      {0500, giveUpCapabilities, -EACCES,
       ": cannot be replaced by a new file beside it: Permission denied\n"},
      {0300, giveUpCapabilities, kSuccess, ""},  // need not be read
  };
  for (const auto& each : cases) {
    path_ = scratch_.write("image.json", imageText(""));
    ASSERT_EQ(::chmod(scratch_.path("").c_str(), each.folder), 0);
    const bool done = each.status == kSuccess;
    EXPECT_TRUE(held(inAnotherProcess([&] {
      host_.load(path_);
      each.giveUp();
      return writeTo(host_, "21") == each.status &&
             host_.memory().tunable().generation() == (done ? 2 : 1) &&
             reported_ == (done ? "" : path_ + each.reported);
    }))) << each.reported;
    ASSERT_EQ(::chmod(scratch_.path("").c_str(), 0700), 0);
    EXPECT_EQ(disabledPaths(stored()), done ? "1" : "");
    EXPECT_TRUE(done || contentsOf(path_) == imageText(""));
    EXPECT_EQ(scratch_.files(), 1U);
  }
}

TEST_F(PersistenceTest, AFileThatWentBadOrAwayIsReportedAndLeft) {
  load();
  scratch_.write("image.json", "{\"generation\": }");
  EXPECT_EQ(writeTo(host_, "21"), -EINVAL);
  EXPECT_TRUE(reported_.starts_with(path_ + ": line 1, column 16: ")) << reported_;
  EXPECT_EQ(contentsOf(path_), "{\"generation\": }");
  std::filesystem::remove(path_);
  reported_.clear();
  EXPECT_EQ(writeTo(host_, "21"), -ENOENT);
  EXPECT_EQ(reported_, path_ + ": cannot be opened: No such file or directory\n");
  EXPECT_EQ(host_.memory().tunable().generation(), 1U);
}

TEST(ImageFile, WhatCannotBeAnImageIsNamed) {
  const Scratch scratch;
  ASSERT_EQ(::mkfifo(scratch.path("pipe").c_str(), 0600), 0);
  std::filesystem::resize_file(scratch.write("huge", "{"), (1ULL << 30) + 1);  // a hole: no room
  scratch.write("a\nb", "[]");
  const std::pair<const char*, const char*> refusals[] = {
      {"none", "none: cannot be opened: No such file or directory"},
      {".", ".: is a directory"},
      {"pipe", "pipe: is not a regular file"},
      {"huge", "huge: is larger than 1 GiB"},
      {"a\nb", "a\\x0Ab: top level: must be an object, not an array"},
  };
  for (const auto& [name, refusal] : refusals) {
    SimulatedHost host([](std::string_view) {});
    const auto load = [&, path = scratch.path(name)] { host.load(path); };
    EXPECT_THAT(load, testing::ThrowsMessage<ImageError>(scratch.path(refusal)));
  }
}

}  // namespace
}  // namespace tavrenix::lab
