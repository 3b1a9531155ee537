// Reading below a root folder.
#include "linux/files.hpp"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

using testing::_;
using testing::FieldsAre;
using testing::UnorderedElementsAre;

std::size_t openFiles() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& file : std::filesystem::directory_iterator("/proc/self/fd"))
    ++count;
  return count;
}

TEST(HostFiles, ReadsLinksAndFoldersOfARecordedMachine) {
  const sys::HostFiles files(std::string(RECORDED_MACHINES) + "/states");
  EXPECT_EQ(files.read("/sys/block/dm-0/dm/name"), "mpatha\n");
  EXPECT_THAT(files.link("/sys/dev/block/8:0").value_or(""),
              testing::EndsWith("/0:0:0:0/block/sda"));
  EXPECT_THAT(files.entries("/sys/block/dm-0/slaves"),
              UnorderedElementsAre(FieldsAre("sda", _), FieldsAre("sde", _)));
  // A link stands for itself: the kernel makes a new one for the next bearer of the number.
  ASSERT_TRUE(files.inode("/sys/dev/block/8:0"));
  EXPECT_NE(files.inode("/sys/dev/block/8:0"), files.inode("/sys/dev/block/8:0/"));
  EXPECT_TRUE(files.exists("/sys/block/sda"));
}

TEST(HostFiles, ToldOfWhatIsNotThereAnswersNothing) {
  const sys::HostFiles files(std::string(RECORDED_MACHINES) + "/states");
  EXPECT_FALSE(files.read("/sys/none"));
  EXPECT_FALSE(files.read("/sys/block"));  // a folder
  EXPECT_FALSE(files.link("/sys/block/dm-0/dm/name"));
  EXPECT_FALSE(files.inode("/sys/none"));
  EXPECT_FALSE(files.exists("/sys/none"));
  EXPECT_TRUE(files.entries("/sys/none").empty());
}

TEST(HostFiles, FollowsFoldersButNoFile) {
  const CopiedMachine copy("states");
  std::filesystem::create_symlink("block/sda/size", copy.root / "sys/link");
  const sys::HostFiles files(copy.root.string());
  EXPECT_TRUE(files.read("/sys/dev/block/8:0/size"));  // 8:0 is a link to a folder
  EXPECT_FALSE(files.read("/sys/link"));
}

TEST(HostFiles, LeavesNothingOpenAndBoundsWhatItReads) {
  const CopiedMachine copy("states");
  copy.write("/long", std::string(300000, 'x'));
  const sys::HostFiles files(copy.root.string());
  const std::size_t before = openFiles();
  const auto [stat, none, state] =
      files.readTogether<3>({"/sys/block/sda/stat", "/sys/none", "/sys/block/sda/device/state"});
  EXPECT_TRUE(stat);
  EXPECT_FALSE(none);
  EXPECT_EQ(state, "running\n");
  EXPECT_EQ(files.read("/long")->size(), sys::HostFiles::kMostBytes);
  EXPECT_EQ(openFiles(), before);
}

}  // namespace
}  // namespace tavrenix::test
