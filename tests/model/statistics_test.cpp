// The bytes that go to the driver's tunable and come back, and what is made of them.
#include <gmock/gmock.h>

#include <cstring>

#include "model/keys.hpp"
#include "model/logical_unit.hpp"
#include "runtime/pool.hpp"
#include "tests/support/storage.hpp"
#include "tests/support/watched.hpp"

namespace tavrenix::test {
namespace {

class Statistics : public testing::Test {
 protected:
  Statistics() {
    addStorage(host.memory, {.units = 1, .paths = 1});
    unit = MPIOLogicalUnit::initWithKsKitServiceEntry(host, unitID(0));
    path = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, pathID(0, 0), unit.get());
  }
  // Notes requests and fills the room, also where result tells of a failure.
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
  ob::Ref<MPIOLogicalUnit> unit;
  ob::Ref<MPIOLogicalUnitPath> path;
  std::vector<std::uint8_t> lastRequest;
  std::size_t lastRoom = 0;
};

TEST_F(Statistics, AreAskedForByTwentyFourBytesWithoutPadding) {
  answerWithPattern(0);
  unit->grabStatsBuffer(0x0102030405060708);
  EXPECT_EQ(lastRoom, 24u);
  EXPECT_THAT(lastRequest, testing::ElementsAre(0x53, 0x4D, 0x41, 0x53, 0, 0, 0, 0, 8, 7, 6, 5, 4,
                                                3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0));
  unit = nullptr;  // its ID stays with the path
  SCSIPathStatistics record;
  EXPECT_TRUE(path->grabPathStatsBuffer(0x2233, &record, nullptr));
  EXPECT_EQ(lastRoom, 25u);
  EXPECT_EQ(record.state, 0x11);
  EXPECT_THAT(lastRequest, testing::ElementsAre(0x53, 0x4D, 0x41, 0x53, 1, 0, 0, 0, 0, 0, 0, 0, 1,
                                                0, 0, 0, 0x33, 0x22, 0, 0, 0, 0, 0, 0));
}

TEST_F(Statistics, ThatFailAfterWritingLeaveThatToAUnitAndNothingToAPath) {
  answerWithPattern(-7);
  testing::internal::CaptureStderr();
  EXPECT_EQ(unit->grabStatsBuffer(5).commandsProcessed, 0x1111111111111111u);
  SCSIPathStatistics record{.bytesSent = 42};
  const ob::Error* error = nullptr;
  EXPECT_FALSE(path->grabPathStatsBuffer(6, &record, &error));
  EXPECT_FALSE(path->grabPathStatsBuffer(6, nullptr, nullptr));  // asks nothing
  const std::string line = "sysctlbyname failed to get stats block: -7\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line);
  EXPECT_EQ(+record.bytesSent, 42u);
  EXPECT_EQ(error->domain().view(), "sysctlbyname failed");
  EXPECT_EQ(error->code(), 0x08000005);
  EXPECT_TRUE(error->userInfo()->equals(*dictionary({{"Error Result Code", number(-7)}})));
}

TEST_F(Statistics, AddUpAndCarryTheirDate) {
  const Value most = ob::Number::make(UINT64_MAX);
  host.memory.tunable().setLogicalUnitStatistics(unitID(0), {UINT64_MAX, 3, 7});
  const auto ofUnit = unit->getCurrentStatistics();
  const auto date =
      Value::retain(ofUnit->valueAs<ob::Date>(keys::kMPIOLogicalUnitStatisticsSamplingDateKey));
  ASSERT_TRUE(date);
  EXPECT_TRUE(ofUnit->equals(
      *dictionary({{"Logical Unit Statistics Sampling Date", date},
                   {"Logical Unit Statistics Cumulative Bytes Sent", most},
                   {"Logical Unit Statistics Cumulative Bytes Received", number(3)},
                   {"Logical Unit Statistics Cumulative Total Bytes Transferred", number(2)},
                   {"Logical Unit Statistics Cumulative Total Commands Processed", number(7)}})));

  host.memory.tunable().setPathStatistics(pathID(0, 0), {UINT64_MAX, 3, 7, 0x82});
  const auto ofPath = path->getCurrentStatistics();
  const auto pathDate =
      Value::retain(ofPath->valueAs<ob::Date>(keys::kMPIOLogicalUnitPathStatisticsSamplingDateKey));
  ASSERT_TRUE(pathDate);
  EXPECT_TRUE(ofPath->equals(*dictionary(
      {{"Logical Unit Path Statistics Sampling Date", pathDate},
       {"Logical Unit Path Statistics Path State", number(0x82)},
       {"Logical Unit Path Statistics Cumulative Bytes Sent", most},
       {"Logical Unit Path Statistics Cumulative Bytes Received", number(3)},
       {"Logical Unit Path Statistics Total Bytes Transferred", number(2)},
       {"Logical Unit Path Statistics Cumulative Total Commands Processed", number(7)}})));
}

TEST_F(Statistics, OfAUnitWhoseDriverIsSilentAreZeros) {
  host.watch.failAll(Operation::kTunable);
  testing::internal::CaptureStderr();
  const auto statistics = unit->getCurrentStatistics();
  testing::internal::GetCapturedStderr();
  for (const ob::String* key : {&keys::kMPIOLogicalUnitStatisticsBytesSentKey,
                                &keys::kMPIOLogicalUnitStatisticsBytesReceivedKey,
                                &keys::kMPIOLogicalUnitStatisticsTotalCommandsKey}) {
    EXPECT_EQ(numberUnder(statistics.get(), *key), 0) << key->view();
  }
}

TEST(MemoryTunable, AnswersAsTheSystemCallDoes) {
  memory::MemoryTunable tunable;
  tunable.setLogicalUnitStatistics(1, {1, 2, 3});
  tunable.setPathStatistics(2, {4, 5, 6, 0x81});
  std::array<std::uint8_t, 64> room{};
  std::size_t length = 0;
  const auto ask = [&](const SCSIMPIOStatisticsRequest& request, std::size_t itsRoom = 64,
                       std::size_t size = sizeof(SCSIMPIOStatisticsRequest),
                       const char* name = "debug.SCSIMPIOStatistics") {
    length = itsRoom;
    return tunable.sysctlbyname(name, room.data(), &length, &request, size);
  };
  const SCSIMPIOStatisticsRequest ofUnit{.logicalUnitEntryID = 1};
  EXPECT_EQ(ask(ofUnit), 0);
  EXPECT_EQ(length, 24u);
  EXPECT_EQ(ask({.requestType = kPathStatistics, .pathEntryID = 2}), 0);
  EXPECT_EQ(length, 25u);

  EXPECT_EQ(ask(ofUnit, 24), 0);
  EXPECT_EQ(ask(ofUnit, 23), -1);
  EXPECT_EQ(ask(ofUnit, 64, 23), -1);
  EXPECT_EQ(ask(ofUnit, 64, 24, "kern.other"), -1);
  EXPECT_EQ(ask({.signature = 0, .logicalUnitEntryID = 1}), -1);
  EXPECT_EQ(ask({.requestType = 3, .logicalUnitEntryID = 1}), -1);

  EXPECT_EQ(tunable.pathStatistics(2)->commandsProcessed, 6u);
  EXPECT_FALSE(tunable.pathStatistics(1));
  tunable.forget(1);
  tunable.forget(2);
  EXPECT_EQ(ask(ofUnit), -1);
  EXPECT_FALSE(tunable.pathStatistics(2));
  EXPECT_EQ(memory::MemoryHost().effectiveUser(), 0u);
}

}  // namespace
}  // namespace tavrenix::test
