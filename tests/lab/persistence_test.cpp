// Writes through the registry seam, and what stands in the file afterwards.
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "lab/host.hpp"
#include "model/registry_names.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::lab {
namespace {

constexpr int kPaths = 8;

// Unit 100 with the paths 00 to 07, whose entry IDs are 200 to 207.
std::string imageText(const std::string& writeStatuses) {
  std::string parents;
  std::string paths;
  for (int i = 0; i < kPaths; ++i) {
    const std::string digit = std::to_string(i);
    parents += (i == 0 ? "20" : ", 20") + digit;
    paths += R"(, {"id": 20)" + digit + R"(, "class": "KsSCSIHierarchicalLogicalUnit",
      "properties": {"Logical Unit Path Identifier": {"$data": "0)" +
             digit + R"("}},
      "statistics": {"sent": 0, "received": 0, "commands": 0, "state": 0}})";
  }
  return R"({"generation": 1, "writeStatuses": [)" + writeStatuses +
         R"(], "entries": [{"id": 100, "class": "KsSCSIMultipathedLogicalUnit", "parents": [)" +
         parents + "]}" + paths + "]}";
}

std::string disabledPaths(const Image& image) {
  std::string disabled;
  for (int i = 0; i < kPaths; ++i) {
    const std::uint8_t state = image.find(static_cast<EntryID>(200 + i))->statistics->state;
    if ((state & kPathStateDisabledBit) != 0) disabled += std::to_string(i);
  }
  return disabled;
}

KernelStatus writeTo(SimulatedHost& host, const ob::Object& request) {
  auto& registry = host.memory().registry();
  const ScopedHandle unit(registry, registry.findServiceByEntryID(100));
  return registry.setProperty(unit.get(), registry::kProperties, request);
}

// What test answers in a process of its own, which may give up what it cannot take back.
template <class Test>
bool inAnotherProcess(const Test& test) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(test() ? 0 : 1);
  int status = -1;
  return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

// From then on the modes of files bind the superuser as well.
bool giveUpCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
  return ::syscall(SYS_capset, &header, none) == 0;
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

TEST_F(PersistenceTest, ASuccessStandsInTheFileAndInTheLiveHost) {
  load();
  EXPECT_EQ(writeTo(host_, *pathRequest("03", 3)), kSuccess);
  EXPECT_EQ(disabledPaths(stored()), "3");
  EXPECT_EQ(stored().generation(), 2U);
  EXPECT_EQ(host_.memory().tunable().generation(), 2U);
  EXPECT_EQ(host_.memory().tunable().pathStatistics(203)->state, kPathStateDisabledBit);
  EXPECT_EQ(scratch_.files(), 1U);
}

TEST_F(PersistenceTest, ARefusalLeavesTheFileAlone) {
  load();
  EXPECT_EQ(writeTo(host_, *pathRequest("99", 3)), -536870206);
  EXPECT_EQ(contentsOf(path_), imageText(""));
}

TEST_F(PersistenceTest, WaitingStatusesAreAnsweredOneByOne) {
  load("-5, 0, 7, 0");
  EXPECT_EQ(writeTo(host_, *pathRequest("01", 3)), -5);
  EXPECT_EQ(disabledPaths(stored()), "");
  EXPECT_EQ(stored().generation(), 1U);
  EXPECT_EQ(writeTo(host_, *pathRequest("02", 3)), kSuccess);
  EXPECT_EQ(writeTo(host_, *pathRequest("03", 3)), 7);
  EXPECT_EQ(writeTo(host_, *pathRequest("bad", 3)), -536870206);
  EXPECT_EQ(writeTo(host_, *pathRequest("05", 3)), kSuccess);
  EXPECT_EQ(disabledPaths(stored()), "25");
  EXPECT_EQ(stored().generation(), 3U);
  EXPECT_NE(contentsOf(path_).find("\"writeStatuses\": []"), std::string::npos);
}

TEST_F(PersistenceTest, AChangeByHandMeanwhileIsKept) {
  load();
  SimulatedHost other([](std::string_view) {});
  other.load(path_);
  EXPECT_EQ(writeTo(other, *pathRequest("06", 3)), kSuccess);
  EXPECT_EQ(writeTo(host_, *pathRequest("07", 3)), kSuccess);
  EXPECT_EQ(disabledPaths(stored()), "67");
  EXPECT_EQ(host_.memory().tunable().pathStatistics(206)->state, kPathStateDisabledBit);
}

TEST_F(PersistenceTest, ConcurrentProcessesLoseNoChange) {
  constexpr int kRounds = 15;  // odd, so that every path ends disabled
  load();
  std::vector<pid_t> children;
  for (int i = 0; i < kPaths; ++i) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      SimulatedHost own([](std::string_view) {});
      own.load(path_);
      bool good = true;
      for (int round = 0; round < kRounds; ++round) {
        good = writeTo(own, *pathRequest("0" + std::to_string(i), round % 2 == 0 ? 3 : 0)) ==
                   kSuccess &&
               good;
      }
      ::_exit(good ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(disabledPaths(stored()), "01234567");
  EXPECT_EQ(stored().generation(), 1U + kPaths * kRounds);
  EXPECT_EQ(scratch_.files(), 1U);
}

TEST_F(PersistenceTest, ASymbolicLinkAndTheModeStay) {
  load();
  const std::string link = scratch_.path("link.json");
  std::filesystem::create_symlink("image.json", link);
  ASSERT_EQ(::chmod(path_.c_str(), 0640), 0);
  SimulatedHost other([](std::string_view) {});
  other.load(link);
  EXPECT_EQ(writeTo(other, *pathRequest("01", 3)), kSuccess);
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
  EXPECT_EQ(writeTo(host_, *pathRequest("01", 3)), kSuccess);
  EXPECT_EQ(disabledPaths(stored()), "1");
  EXPECT_EQ(contentsOf(precious), "text");
  EXPECT_EQ(scratch_.files(), 2U);
}

TEST_F(PersistenceTest, AFileThatCannotBeWrittenStaysWhole) {
  load();
  EXPECT_TRUE(inAnotherProcess([this] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{100, 100};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return writeTo(host_, *pathRequest("01", 3)) == -EFBIG &&
           host_.memory().tunable().generation() == 1 &&
           reported_ == path_ + ": cannot be written: File too large\n";
  }));
  EXPECT_EQ(contentsOf(path_), imageText(""));
  EXPECT_EQ(scratch_.files(), 1U);
}

TEST_F(PersistenceTest, AFolderThatTakesNoFileIsTheReasonGiven) {
  load();
  ASSERT_EQ(::chmod(scratch_.path("").c_str(), 0500), 0);
  EXPECT_TRUE(inAnotherProcess([this] {
    return giveUpCapabilities() && writeTo(host_, *pathRequest("01", 3)) == -EACCES &&
           reported_ == path_ + ": cannot be replaced by a new file beside it: Permission denied\n";
  }));
  ASSERT_EQ(::chmod(scratch_.path("").c_str(), 0700), 0);
  EXPECT_EQ(contentsOf(path_), imageText(""));
}

TEST_F(PersistenceTest, AFolderThatCannotBeReadIsNoFailure) {
  load();
  ASSERT_EQ(::chmod(scratch_.path("").c_str(), 0300), 0);
  EXPECT_TRUE(inAnotherProcess([this] {
    return giveUpCapabilities() && writeTo(host_, *pathRequest("01", 3)) == kSuccess &&
           host_.memory().tunable().generation() == 2 && reported_.empty();
  }));
  ASSERT_EQ(::chmod(scratch_.path("").c_str(), 0700), 0);
  EXPECT_EQ(disabledPaths(stored()), "1");
}

TEST_F(PersistenceTest, AFileThatWentBadOrAwayIsReportedAndLeft) {
  load();
  scratch_.write("image.json", "{\"generation\": }");
  EXPECT_EQ(writeTo(host_, *pathRequest("01", 3)), -EINVAL);
  EXPECT_TRUE(reported_.starts_with(path_ + ": line 1, column 16: ")) << reported_;
  EXPECT_EQ(contentsOf(path_), "{\"generation\": }");
  std::filesystem::remove(path_);
  reported_.clear();
  EXPECT_EQ(writeTo(host_, *pathRequest("01", 3)), -ENOENT);
  EXPECT_EQ(reported_, path_ + ": cannot be opened: No such file or directory\n");
  EXPECT_EQ(host_.memory().tunable().generation(), 1U);
}

TEST(ImageFile, WhatCannotBeAnImageIsNamed) {
  const Scratch scratch;
  const auto refusal = [](const std::string& path) -> std::string {
    SimulatedHost host([](std::string_view) {});
    try {
      host.load(path);
    } catch (const ImageError& error) {
      return error.what();
    }
    return "no refusal";
  };
  EXPECT_EQ(refusal(scratch.path("none")),
            scratch.path("none") + ": cannot be opened: No such file or directory");
  EXPECT_EQ(refusal(scratch.path(".")), scratch.path(".") + ": is a directory");
  ASSERT_EQ(::mkfifo(scratch.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(refusal(scratch.path("pipe")), scratch.path("pipe") + ": is not a regular file");
  const std::string huge = scratch.write("huge", "{");
  std::filesystem::resize_file(huge, (1ULL << 30) + 1);  // a hole: it takes no room on the disk
  EXPECT_EQ(refusal(huge), huge + ": is larger than 1 GiB");
  EXPECT_EQ(refusal(scratch.write("a\nb", "[]")),
            scratch.path("a\\x0Ab") + ": top level: must be an object, not an array");
}

}  // namespace
}  // namespace tavrenix::lab
