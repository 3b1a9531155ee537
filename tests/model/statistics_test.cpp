// The bytes that go to the driver's tunable and come back.
#include "model/statistics.hpp"

#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <vector>

#include "model/keys.hpp"
#include "model/logical_unit.hpp"
#include "runtime/pool.hpp"
#include "tests/support/storage.hpp"

namespace tavrenix::test {
namespace {

using testing::ElementsAreArray;

// Records requests and answers with a pattern.
class RecordingTunable final : public MPIOKernelTunable {
 public:
  int sysctlbyname(const char* name, void* oldValue, std::size_t* oldLength, const void* newValue,
                   std::size_t newLength) override {
    lastName = name;
    lastRoom = *oldLength;
    const auto* bytes = static_cast<const std::uint8_t*>(newValue);
    lastRequest.assign(bytes, bytes + newLength);
    std::memset(oldValue, 0x11, *oldLength);
    return result;
  }
  int result = 0;  // a failure writes the pattern all the same
  std::string lastName;
  std::size_t lastRoom = 0;
  std::vector<std::uint8_t> lastRequest;
};

class RecordingHost final : public MPIOHost {
 public:
  MPIODeviceRegistry& registry() override { return memory.registry(); }
  MPIOKernelTunable& tunable() override { return recorder; }
  MPIODiskDescriptions& disks() override { return memory.disks(); }
  std::uint32_t effectiveUser() override { return 0; }
  memory::MemoryHost memory;
  RecordingTunable recorder;
};

TEST(StatisticsRequests, AreTwentyFourBytesWithoutPadding) {
  RecordingHost host;
  const auto unit = MPIOLogicalUnit::initWithKsKitServiceEntry(host, 0x0102030405060708);
  unit->grabStatsBuffer(0x0102030405060708);
  EXPECT_EQ(host.recorder.lastName, "debug.SCSIMPIOStatistics");
  EXPECT_EQ(host.recorder.lastRoom, 24u);
  const std::uint8_t unitRequest[] = {0x53, 0x4D, 0x41, 0x53, 0, 0, 0, 0, 8, 7, 6, 5,
                                      4,    3,    2,    1,    0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_THAT(host.recorder.lastRequest, ElementsAreArray(unitRequest));

  const auto path = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, 0x11, unit.get());
  SCSIPathStatistics record;
  EXPECT_TRUE(path->grabPathStatsBuffer(0x2233, &record, nullptr));
  EXPECT_EQ(host.recorder.lastRoom, 25u);
  EXPECT_EQ(record.state, 0x11);
  const std::uint8_t pathRequest[] = {0x53, 0x4D, 0x41, 0x53, 1,    0,    0, 0, 8, 7, 6, 5,
                                      4,    3,    2,    1,    0x33, 0x22, 0, 0, 0, 0, 0, 0};
  EXPECT_THAT(host.recorder.lastRequest, ElementsAreArray(pathRequest));
}

TEST(StatisticsRequests, ThatFailAfterWritingLeaveThatToAUnitAndNothingToAPath) {
  RecordingHost host;
  const auto unit = MPIOLogicalUnit::initWithKsKitServiceEntry(host, 5);
  const auto path = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, 6, unit.get());
  const ob::Pool pool;
  host.recorder.result = -7;
  testing::internal::CaptureStderr();
  EXPECT_EQ(unit->grabStatsBuffer(5).commandsProcessed, 0x1111111111111111u);
  SCSIPathStatistics record{.bytesSent = 42};
  const ob::Error* error = nullptr;
  EXPECT_FALSE(path->grabPathStatsBuffer(6, &record, &error));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "sysctlbyname failed to get stats block: -7\n"
            "sysctlbyname failed to get stats block: -7\n");
  EXPECT_EQ(+record.bytesSent, 42u);
  EXPECT_EQ(numberUnder(error->userInfo(), keys::kMPIOErrorResultCodeKey), -7);
}

TEST(StatisticsRequests, OfAPathNameTheUnitItWasMadeFor) {
  RecordingHost host;
  auto unit = MPIOLogicalUnit::initWithKsKitServiceEntry(host, 5);
  const auto path = MPIOLogicalUnitPath::initWithKsKitServiceEntry(host, 6, unit.get());
  unit->addPath(path.get(), 6);
  unit->removePath(path.get());
  unit = nullptr;
  EXPECT_TRUE(path->isEnabled(nullptr));
  EXPECT_EQ(host.recorder.lastRequest[8], 5);
}

TEST(MemoryTunable, AnswersAsTheSystemCallDoes) {
  memory::MemoryTunable tunable;
  tunable.setLogicalUnitStatistics(1, {1, 2, 3});
  tunable.setPathStatistics(2, {4, 5, 6, 0x81});
  std::array<std::uint8_t, 64> room{};
  std::size_t length = 0;
  const auto ask = [&](const SCSIMPIOStatisticsRequest& request, std::size_t itsRoom = 64,
                       std::size_t size = sizeof(SCSIMPIOStatisticsRequest),
                       const char* name = kStatisticsTunable) {
    length = itsRoom;
    return tunable.sysctlbyname(name, room.data(), &length, &request, size);
  };
  const SCSIMPIOStatisticsRequest ofUnit{.requestType = kLogicalUnitStatistics,
                                         .logicalUnitEntryID = 1};
  EXPECT_EQ(ask(ofUnit), 0);
  EXPECT_EQ(length, sizeof(SCSILogicalUnitStatistics));
  EXPECT_EQ(ask({.requestType = kPathStatistics, .pathEntryID = 2}), 0);
  EXPECT_EQ(length, sizeof(SCSIPathStatistics));

  EXPECT_EQ(ask(ofUnit, sizeof(SCSILogicalUnitStatistics)), 0);
  EXPECT_EQ(ask(ofUnit, sizeof(SCSILogicalUnitStatistics) - 1), -1);
  EXPECT_EQ(ask(ofUnit, 64, sizeof ofUnit - 1), -1);
  EXPECT_EQ(ask(ofUnit, 64, sizeof ofUnit, "kern.other"), -1);
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
