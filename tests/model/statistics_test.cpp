// The bytes that go to the driver's tunable and come back, and what follows from a failure.
#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>

#include "model/logical_unit.hpp"
#include "runtime/pool.hpp"
#include "tests/support/sample_storage.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {
namespace {

class Statistics : public testing::Test {
 protected:
  // Notes requests and fills the room, also if the result says that the request failed.
  void answerWithPattern(int result) {
    host.watch.answerTunable = [this, result](void* room, std::size_t* size, const void* asked,
                                              std::size_t length) {
      const auto* bytes = static_cast<const std::uint8_t*>(asked);
      lastRequest.assign(bytes, bytes + length);
      lastRoom = *size;
      std::memset(room, 0x11, *size);
      return result;
    };
  }

  const ob::Pool pool;
  WatchedHost host;
  ob::Ref<MPIOLogicalUnit> unit =
      MPIOLogicalUnit::initWithKsKitServiceEntry(host, 0x0102030405060708);
  const ob::Ref<MPIOLogicalUnitPath> path =
      MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, 0x2233, unit.get());
  std::vector<std::uint8_t> lastRequest;
  std::size_t lastRoom = 0;
};

TEST_F(Statistics, AreAskedForByTwentyFourBytesWithoutPadding) {
  answerWithPattern(0);
  unit->getCurrentStatistics();
  EXPECT_EQ(lastRoom, 24u);
  EXPECT_THAT(lastRequest, testing::ElementsAre(0x53, 0x4D, 0x41, 0x53, 0, 0, 0, 0, 8, 7, 6, 5, 4,
                                                3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0));
  unit = nullptr;  // its ID stays with the path
  path->getCurrentStatistics();
  EXPECT_EQ(lastRoom, 25u);
  EXPECT_THAT(lastRequest, testing::ElementsAre(0x53, 0x4D, 0x41, 0x53, 1, 0, 0, 0, 8, 7, 6, 5, 4,
                                                3, 2, 1, 0x33, 0x22, 0, 0, 0, 0, 0, 0));
}

TEST_F(Statistics, KeepPartialCountersOfAUnitButNotOfAPathAfterAFailure) {
  answerWithPattern(-7);
  testing::internal::CaptureStderr();
  EXPECT_EQ(unit->grabStatsBuffer(5).commandsProcessed, 0x1111111111111111u);
  SCSIPathStatistics record{.bytesSent = 42};
  const ob::Error* error = nullptr;
  EXPECT_FALSE(path->grabPathStatsBuffer(6, &record, &error));
  const std::string line = "sysctlbyname failed to get stats block: -7\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line);
  EXPECT_EQ(+record.bytesSent, 42u);
  EXPECT_EQ(error->description()->view(), "sysctlbyname failed (error 0x08000005, result -7)");
}

TEST(MemoryTunable, AnswersAsTheSystemCallDoes) {
  memory::MemoryTunable tunable;
  tunable.setLogicalUnitStatistics(1, {1, 2, 3});
  const struct {
    int error;
    SCSIMPIOStatisticsRequest request;
    std::size_t room = 24;
    std::size_t size = sizeof(SCSIMPIOStatisticsRequest);
    const char* name = kStatisticsTunable;
  } rows[] = {{0, {.logicalUnitEntryID = 1}, 64},
              {ENOMEM, {.logicalUnitEntryID = 1}, 23},
              {EINVAL, {.logicalUnitEntryID = 1}, 24, 23},
              {ENOENT, {.logicalUnitEntryID = 1}, 24, 24, "kern.other"},
              {EINVAL, {.signature = 0, .logicalUnitEntryID = 1}},
              {EINVAL, {.requestType = 3, .logicalUnitEntryID = 1}},
              {ENXIO, {.logicalUnitEntryID = 2}}};
  for (const auto& row : rows) {
    std::array<std::uint8_t, 64> room{};
    std::size_t length = row.room;
    errno = 0;
    const int result = tunable.sysctlbyname(row.name, room.data(), &length, &row.request, row.size);
    EXPECT_EQ(result, row.error == 0 ? 0 : -1);
    EXPECT_EQ(errno, row.error);
    EXPECT_EQ(length, row.error == 0 ? 24 : row.room);
  }
}

}  // namespace
}  // namespace tavrenix::test
