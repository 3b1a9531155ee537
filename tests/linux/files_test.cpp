// Reading below a root folder: what the tests of recorded machines do not notice.
#include "linux/kernel/files.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>

#include "tests/linux/scratch.hpp"

namespace tavrenix::test {
namespace {

int lowestFreeDescriptor() {
  const int lowest = ::dup(STDIN_FILENO);
  ::close(lowest);
  return lowest;
}

TEST(HostFiles, AreReadWithFewDescriptorsOfWhichNoneStaysOpen) {
  const Scratch scratch;
  std::ofstream(scratch.folder() / "long") << std::string(300000, 'x');
  const sys::HostFiles files(scratch.folder());
  rlimit old{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &old), 0);
  const int free = lowestFreeDescriptor();
  for (const int more : {20, 2, 0}) {
    const rlimit few{static_cast<rlim_t>(free + more), old.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    const auto texts = files.readTogether(std::vector<std::string>(9, "/long"));
    ::setrlimit(RLIMIT_NOFILE, &old);
    for (const auto& each : texts) {
      EXPECT_EQ(each.error, more != 0 ? 0 : EMFILE) << "which is not absent";
      EXPECT_EQ(each.text.size(), more != 0 ? sys::HostFiles::kMostBytes : 0);
    }
    EXPECT_EQ(lowestFreeDescriptor(), free);
  }
}

}  // namespace
}  // namespace tavrenix::test
