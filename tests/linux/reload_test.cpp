// Reloads of a map's table: what is kept, what is put back, and that the old table is in force
// after every failure.
#include "linux/reload.hpp"

#include <gmock/gmock.h>

#include <cerrno>

#include "tests/linux/fake_device_mapper.hpp"

namespace tavrenix::test {
namespace {

constexpr sys::DeviceNumber kMap{254, 0};
const std::string kOld =
    "1 queue_if_no_path 1 alua 2 2 service-time 0 2 2 8:0 1 1 8:16 1 3 service-time 0 1 2 8:32 1 "
    "1 ";

class ReloadTest : public testing::Test {
 protected:
  FakeDeviceMapper port;
  FakeDeviceMapper::Map& map = port.add(kMap, "mpatha", "mpath-36", kOld);

  int to(const char* algorithm, std::uint64_t repeat = 1) {
    return sys::reload(port, kMap, *sys::selectorForAlgorithm(algorithm), repeat);
  }
  void expectOldTable() {
    EXPECT_EQ(sys::parseMultipathTable(map.table.line), sys::parseMultipathTable(kOld));
    EXPECT_FALSE(map.suspended);
    EXPECT_FALSE(map.hasLoaded);
  }
};

TEST_F(ReloadTest, KeepsAllButTheSelectorAndFailsFailedPathsAgain) {
  map.failed = {{8, 16}};
  map.disabledGroups = {2};
  EXPECT_EQ(to("Modified Round Robin"), 0);
  EXPECT_EQ(
      map.table.line,
      "1 queue_if_no_path 1 alua 2 2 round-robin 0 2 1 8:0 1 8:16 1 round-robin 0 1 1 8:32 1 ");
  EXPECT_THAT(map.failed, testing::ElementsAre(sys::DeviceNumber{8, 16}));
  EXPECT_THAT(map.disabledGroups, testing::ElementsAre(2u));
  EXPECT_THAT(port.calls, testing::ElementsAre(testing::StartsWith("load "), "resume",
                                               "fail_path 8:16", "disable_group 2"));
}

TEST_F(ReloadTest, ReadsAsSetWhatIsSetAlready) {
  EXPECT_EQ(to("Least Bytes"), 0);
  EXPECT_TRUE(port.calls.empty());
}

TEST_F(ReloadTest, RefusesARepeatCountThatTheKernelDoesNotTake) {
  EXPECT_EQ(to("Modified Round Robin", 16), -EOPNOTSUPP);
  EXPECT_THAT(port.calls, testing::ElementsAre(testing::StartsWith("load "), "clear"));
  expectOldTable();
  port.clampsRepeats = false;  // as kernels before 4.6
  EXPECT_EQ(to("Modified Round Robin", 16), 0);
  EXPECT_THAT(map.table.line, testing::HasSubstr("round-robin 0 2 1 8:0 16 8:16 16"));
}

TEST_F(ReloadTest, TouchesNoSuspendedMapAndNoOtherTarget) {
  map.suspended = true;
  EXPECT_EQ(to("Modified Round Robin"), -EBUSY);
  map.suspended = false;
  map.table.type = "linear";
  EXPECT_EQ(to("Modified Round Robin"), -EINVAL);
  map.table.type = "multipath";
  map.table.line = "1 queue_if_no_path";
  EXPECT_EQ(to("Modified Round Robin"), -EINVAL);
  map.table.line = "0 0 0 0";
  EXPECT_EQ(to("Modified Round Robin"), -ENODEV);
  EXPECT_EQ(sys::reload(port, {254, 9}, *sys::selectorNamed("round-robin"), 1), -ENXIO);
  EXPECT_TRUE(port.calls.empty());
}

TEST_F(ReloadTest, LeavesTheOldTableWhereTheNewOneIsNotTaken) {
  port.faults["load"] = -ENOMEM;
  EXPECT_EQ(to("Modified Round Robin"), -ENOMEM);
  expectOldTable();
}

TEST_F(ReloadTest, ResumesAgainWhereTheSwapFails) {
  port.faults["resume"] = -EINVAL;
  EXPECT_EQ(to("Modified Round Robin"), -EINVAL);
  expectOldTable();
}

TEST_F(ReloadTest, LeavesNoTableWaitingWhereTheSwapIsInterrupted) {
  map.failed = {{8, 32}};
  port.faults["interrupt"] = -EINTR;
  EXPECT_EQ(to("Modified Round Robin"), -EINTR);
  expectOldTable();
  EXPECT_THAT(map.failed, testing::ElementsAre(sys::DeviceNumber{8, 32}));
}

TEST_F(ReloadTest, PutsTheOldTableBackWhereTheNewOneReadsOtherwise) {
  port.faults["swap"] = 1;
  EXPECT_EQ(to("Modified Round Robin"), -EIO);
  expectOldTable();
}

TEST_F(ReloadTest, PutsTheOldTableBackWhereAPathCannotBeFailedAgain) {
  map.failed = {{8, 32}};
  port.faults["message"] = -EBUSY;
  EXPECT_EQ(to("Modified Round Robin"), -EBUSY);
  expectOldTable();
  EXPECT_THAT(map.failed, testing::ElementsAre(sys::DeviceNumber{8, 32}));
}

TEST_F(ReloadTest, KeepsAReadOnlyMapReadOnly) {
  map.readOnly = true;
  EXPECT_EQ(to("Least Queue Depth"), 0);  // the fake refuses another flag, another length
  EXPECT_TRUE(map.readOnly);
}

}  // namespace
}  // namespace tavrenix::test
