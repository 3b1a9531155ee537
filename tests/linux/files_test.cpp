// Reading below a root folder: what the tests of recorded machines do not notice.
#include "linux/files.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/linux/scratch.hpp"

namespace tavrenix::test {
namespace {

namespace fs = std::filesystem;

std::size_t openFiles() {
  const fs::directory_iterator folder("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(folder), end(folder)));
}

TEST(HostFiles, FollowFoldersAloneAreBoundedAndLeaveNothingOpen) {
  const Scratch scratch;
  fs::create_directory(scratch.folder() / "disk");
  fs::create_directory_symlink("disk", scratch.folder() / "link");
  fs::create_symlink("disk/long", scratch.folder() / "file");
  std::ofstream(scratch.folder() / "disk/long") << std::string(300000, 'x');
  const sys::HostFiles files(scratch.folder());
  const std::size_t before = openFiles();
  const auto [folder, none, long_] = files.readTogether<3>({"/disk", "/none", "/link/long"});
  EXPECT_FALSE(folder);
  EXPECT_FALSE(none);
  EXPECT_EQ(long_->size(), sys::HostFiles::kMostBytes);
  EXPECT_FALSE(files.read("/file"));
  EXPECT_FALSE(files.link("/disk/long"));
  EXPECT_TRUE(files.entries("/none").empty());
  EXPECT_EQ(files.entries("/link").size(), 1u);
  // A link stands for itself: the kernel makes a new one for the next bearer of the number.
  EXPECT_NE(files.inode("/link"), files.inode("/link/"));
  EXPECT_FALSE(files.inode("/none"));
  EXPECT_FALSE(files.exists("/none"));
  EXPECT_EQ(openFiles(), before);
}

}  // namespace
}  // namespace tavrenix::test
