// Requests written into a unit's entry, over a recorded machine.
#include <gmock/gmock.h>

#include "model/registry_names.hpp"
#include "runtime/values.hpp"
#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

using sys::DaemonReply;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kFirst = "000F00F0000F0000";
constexpr const char* kSecond = "001F00F0000F0000";
constexpr sys::DeviceNumber kFirstDevice{8, 0};
constexpr sys::DeviceNumber kSecondDevice{8, 64};

class RequestsTest : public testing::Test {
 protected:
  RecordedMachine machine{"states"};
  FakeDeviceMapper::Map& map = machine.map(0);  // both paths, round-robin

  KernelStatus write(EntryID id, const ob::Object& value,
                     const ob::String& name = registry::kProperties) {
    const ScopedHandle entry(machine.registry(), machine.registry().findServiceByEntryID(id));
    return machine.registry().setProperty(entry.get(), name, value);
  }
  KernelStatus writeAlgorithm(const char* algorithm, std::int64_t count) {
    ob::DictionaryBuilder request(2);
    request.add(registry::kAlgorithm, ob::String::make(algorithm));
    request.add(registry::kBatchCount, ob::Number::make(count));
    return write(machine.unit(0), *request.build());
  }
  KernelStatus writeStates(const std::vector<std::pair<const char*, std::int64_t>>& states) {
    ob::DictionaryBuilder members(states.size());
    for (const auto& [identifier, state] : states) {
      members.add(*ob::String::make(identifier), ob::Number::make(state));
    }
    ob::DictionaryBuilder request(1);
    request.add(registry::kPathState, members.build());
    return write(machine.unit(0), *request.build());
  }
  // From now on a daemon answers so.
  void runDaemon(sys::Answer<DaemonReply> answer) {
    machine.daemon.answer = [answer](const std::string&) { return answer; };
  }
};

TEST_F(RequestsTest, AlgorithmsAreReloads) {
  EXPECT_EQ(writeAlgorithm("Least Bytes", 1), 0);
  EXPECT_THAT(map.table.line, HasSubstr("service-time 0 2 2 8:0 1 1 8:64 1 1"));
  EXPECT_EQ(writeAlgorithm("Modified Round Robin", 0), 0);  // a count that was never known
  EXPECT_THAT(map.table.line, HasSubstr("round-robin 0 2 1 8:0 1 8:64 1"));
  EXPECT_EQ(writeAlgorithm("Modified Round Robin", 16), -EOPNOTSUPP);
}

TEST_F(RequestsTest, WithoutADaemonTheDriverIsAsked) {
  EXPECT_EQ(writeStates({{kSecond, 3}}), 0);
  EXPECT_THAT(map.failed, ElementsAre(kSecondDevice));
  EXPECT_EQ(writeStates({{kFirst, 3}, {kSecond, 0}}), 0);
  EXPECT_THAT(map.failed, ElementsAre(kFirstDevice));
  machine.port.faults["message"] = -EINVAL;
  EXPECT_EQ(writeStates({{kFirst, 0}, {kSecond, 3}}), -EINVAL);
  EXPECT_THAT(map.failed, ElementsAre(kFirstDevice, kSecondDevice)) << "the other was tried";
  map.suspended = true;
  EXPECT_EQ(writeStates({{kFirst, 0}}), -EBUSY);
}

TEST_F(RequestsTest, ADaemonIsAskedInstead) {
  machine.daemon.answer = [&](const std::string& command) {
    if (command == "fail path sda") map.failed.insert(kFirstDevice);
    if (command == "reinstate path sda") map.failed.erase(kFirstDevice);
    return sys::Answer<DaemonReply>{0, DaemonReply::kDone};
  };
  EXPECT_EQ(writeStates({{kFirst, 3}}), 0);
  EXPECT_THAT(map.failed, ElementsAre(kFirstDevice));
  EXPECT_EQ(writeStates({{kFirst, 0}}), 0);
  EXPECT_THAT(map.failed, IsEmpty());
  EXPECT_THAT(machine.port.calls, IsEmpty());
}

TEST_F(RequestsTest, WhatADaemonAnswersIsNotTakenOnTrust) {
  runDaemon({0, DaemonReply::kDone});  // and does nothing
  EXPECT_EQ(writeStates({{kFirst, 3}}), -EIO);
  runDaemon({-ETIMEDOUT, {}});
  EXPECT_EQ(writeStates({{kFirst, 3}}), -ETIMEDOUT);
  runDaemon({0, DaemonReply::kTooLate});
  EXPECT_EQ(writeStates({{kFirst, 3}}), -ETIMEDOUT);
  EXPECT_THAT(machine.port.calls, IsEmpty());
  runDaemon({0, DaemonReply::kRefused});  // a map that it does not look after
  EXPECT_EQ(writeStates({{kFirst, 3}}), 0);
  EXPECT_THAT(machine.port.calls, ElementsAre("fail_path 8:0"));
}

TEST_F(RequestsTest, WhatIsNoRequestChangesNothing) {
  const auto nothing = ob::DictionaryBuilder(0).build();
  EXPECT_EQ(writeStates({{kFirst, 3}, {"FFFF", 3}}), -ENOENT);
  EXPECT_EQ(writeStates({{kFirst, 1}}), -EINVAL);
  EXPECT_EQ(writeAlgorithm("Most Bytes", 1), -EINVAL);
  EXPECT_EQ(writeAlgorithm("Least Bytes", -1), -EINVAL);
  EXPECT_EQ(writeAlgorithm("Least Bytes", std::int64_t{1} << 32), -EINVAL);
  EXPECT_EQ(write(machine.unit(0), *nothing), -EINVAL);
  EXPECT_EQ(write(machine.unit(0), registry::kAlias), -EINVAL);
  EXPECT_EQ(write(machine.unit(0), *nothing, registry::kAlias), -EOPNOTSUPP);
  EXPECT_EQ(write(machine.path(0), *nothing), -EOPNOTSUPP);
  EXPECT_THAT(machine.port.calls, IsEmpty());
  EXPECT_THAT(machine.daemon.commands, IsEmpty());
  const ScopedHandle gone(machine.registry(),
                          machine.registry().findServiceByEntryID(machine.unit(0)));
  machine.port.maps.erase({254, 0});
  EXPECT_EQ(machine.registry().setProperty(gone.get(), registry::kProperties, *nothing), -ENXIO);
}

}  // namespace
}  // namespace tavrenix::test
