// Reloads of a map's table: what is kept, what is put back, and that the old table is in force
// after every failure.
#include "linux/reload.hpp"

#include <gmock/gmock.h>

#include <cerrno>

#include "tests/linux/fake_device_mapper.hpp"

namespace tavrenix::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

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
  map.readOnly = true;  // the fake refuses another flag, another length
  EXPECT_EQ(to("Modified Round Robin"), 0);
  EXPECT_EQ(
      map.table.line,
      "1 queue_if_no_path 1 alua 2 2 round-robin 0 2 1 8:0 1 8:16 1 round-robin 0 1 1 8:32 1 ");
  EXPECT_THAT(map.failed, ElementsAre(sys::DeviceNumber{8, 16}));
  EXPECT_THAT(map.disabledGroups, ElementsAre(2u));
  const std::vector<std::string> calls = port.calls;
  EXPECT_THAT(calls,
              ElementsAre(StartsWith("load "), "resume", "fail_path 8:16", "disable_group 2"));
  EXPECT_EQ(to("Modified Round Robin"), 0);
  EXPECT_EQ(port.calls, calls) << "what is set already is not set again";
}

TEST_F(ReloadTest, KeepsThroughputsAndTellsThemWhereTheyWereNotTold) {
  map.table.line = "0 0 2 1 service-time 0 1 2 8:48 1 1 service-time 0 1 2 8:112 1 3 ";
  EXPECT_EQ(to("Least Bytes"), 0);
  EXPECT_THAT(port.calls, IsEmpty());
  map.table.line = "0 0 1 1 historical-service-time 2 1024 10 2 0 8:0 8:16 ";
  EXPECT_EQ(to("Least Bytes"), 0);
  EXPECT_EQ(map.table.line, "0 0 1 1 service-time 0 2 2 8:0 1 1 8:16 1 1 ");
}

TEST_F(ReloadTest, RefusesARepeatCountThatTheKernelDoesNotTake) {
  EXPECT_EQ(to("Modified Round Robin", 16), -EOPNOTSUPP);
  EXPECT_THAT(port.calls, ElementsAre(StartsWith("load "), "clear"));
  expectOldTable();
  port.clampsRepeats = false;  // as kernels before 4.6
  EXPECT_EQ(to("Modified Round Robin", 16), 0);
  EXPECT_THAT(map.table.line, HasSubstr("round-robin 0 2 1 8:0 16 8:16 16"));
}

TEST_F(ReloadTest, TouchesNoSuspendedMapAndNoOtherTarget) {
  map.suspended = true;
  EXPECT_EQ(to("Modified Round Robin"), -EBUSY);
  map.suspended = false;
  map.table.line = "1 queue_if_no_path";
  EXPECT_EQ(to("Modified Round Robin"), -EINVAL);
  map.table.line = "0 0 0 0";
  EXPECT_EQ(to("Modified Round Robin"), -ENODEV);
  map.table = {0, 16384, "linear", kOld};
  EXPECT_EQ(to("Modified Round Robin"), -EINVAL);
  port.maps.clear();
  EXPECT_EQ(to("Modified Round Robin"), -ENXIO);
  EXPECT_THAT(port.calls, IsEmpty());
}

TEST_F(ReloadTest, LeavesTheOldTableInForceWhateverFails) {
  struct Row {
    const char* fault;
    int status;
    std::set<sys::DeviceNumber> failed;
  };
  const Row rows[] = {
      {"load", -ENOMEM, {{8, 32}}},
      {"resume", -EINVAL, {{8, 32}}},
      {"interrupt", -EINTR, {{8, 32}}},
      {"message", -EBUSY, {{8, 32}}},
      {"swap", -EIO, {}},  // what is in force then is not what was asked for
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.fault);
    map.failed = row.failed;
    port.faults[row.fault] = row.status;
    EXPECT_EQ(to("Modified Round Robin"), row.status);
    expectOldTable();
    EXPECT_EQ(map.failed, row.failed);
    EXPECT_THAT(port.faults, IsEmpty());
  }
}

}  // namespace
}  // namespace tavrenix::test
