// Requests written into a unit's entry, over a recorded machine.
#include <gmock/gmock.h>

#include "model/registry_names.hpp"
#include "runtime/values.hpp"
#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

using sys::DaemonReply;
using sys::Kind;

class RequestsTest : public testing::Test {
 protected:
  RecordedMachine machine{"states"};
  FakeDeviceMapper::Map& map = machine.port.maps[{254, 0}];  // paths 8:0 and 8:64, round-robin

  KernelStatus write(const ob::Object& value, EntryID id = 0,
                     const ob::String& name = registry::kProperties) {
    if (id == 0) id = machine.id(Kind::kUnit, {254, 0});
    const ScopedHandle entry(machine.registry(), machine.registry().findServiceByEntryID(id));
    return machine.registry().setProperty(entry.get(), name, value);
  }
  KernelStatus writeAlgorithm(const char* algorithm, std::int64_t count) {
    ob::DictionaryBuilder request(2);
    request.add(registry::kAlgorithm, ob::String::make(algorithm));
    request.add(registry::kBatchCount, ob::Number::make(count));
    return write(*request.build());
  }
  KernelStatus writeStates(const std::vector<std::pair<const char*, std::int64_t>>& states) {
    ob::DictionaryBuilder members(states.size());
    for (const auto& [identifier, state] : states) {
      members.add(*ob::String::make(identifier), ob::Number::make(state));
    }
    ob::DictionaryBuilder request(1);
    request.add(registry::kPathState, members.build());
    return write(*request.build());
  }
  // A daemon that does as it is told, to the paths of that map.
  void runDaemon() {
    machine.daemon.answer = [this](const std::string& command) {
      const sys::DeviceNumber device =
          command.ends_with("sda") ? sys::DeviceNumber{8, 0} : sys::DeviceNumber{8, 64};
      if (command.starts_with("fail")) map.failed.insert(device);
      if (command.starts_with("reinstate")) map.failed.erase(device);
      return sys::Answer<DaemonReply>{0, DaemonReply::kDone};
    };
  }
};

constexpr const char* kFirst = "000F00F0000F0000";
constexpr const char* kSecond = "001F00F0000F0000";

TEST_F(RequestsTest, AlgorithmsAreReloads) {
  EXPECT_EQ(writeAlgorithm("Least Bytes", 1), 0);
  EXPECT_THAT(map.table.line, testing::HasSubstr("service-time 0 2 2 8:0 1 1 8:64 1 1"));
  EXPECT_EQ(writeAlgorithm("Modified Round Robin", 0), 0);  // a count that was never known
  EXPECT_THAT(map.table.line, testing::HasSubstr("round-robin 0 2 1 8:0 1 8:64 1"));
  EXPECT_EQ(writeAlgorithm("Modified Round Robin", 16), -EOPNOTSUPP);
  machine.port.maps[{254, 0}].suspended = true;
  EXPECT_EQ(writeAlgorithm("Least Bytes", 1), -EBUSY);
}

TEST_F(RequestsTest, WithoutADaemonTheDriverIsAsked) {
  EXPECT_EQ(writeStates({{kSecond, 3}}), 0);
  EXPECT_THAT(map.failed, testing::ElementsAre(sys::DeviceNumber{8, 64}));
  EXPECT_EQ(writeStates({{kFirst, 3}, {kSecond, 0}}), 0);
  EXPECT_THAT(map.failed, testing::ElementsAre(sys::DeviceNumber{8, 0}));
}

TEST_F(RequestsTest, ADaemonIsAskedInstead) {
  runDaemon();
  EXPECT_EQ(writeStates({{kFirst, 3}}), 0);
  EXPECT_THAT(machine.daemon.commands, testing::ElementsAre("fail path sda"));
  EXPECT_TRUE(machine.port.calls.empty());
  EXPECT_EQ(writeStates({{kFirst, 0}}), 0);
  EXPECT_THAT(machine.daemon.commands, testing::Contains("reinstate path sda"));
  EXPECT_TRUE(map.failed.empty());
}

TEST_F(RequestsTest, WhatADaemonAnswersIsNotTakenOnTrust) {
  machine.daemon.answer = [](const std::string&) {
    return sys::Answer<DaemonReply>{0, DaemonReply::kDone};  // and does nothing
  };
  EXPECT_EQ(writeStates({{kFirst, 3}}), -EIO);
  machine.daemon.answer = [](const std::string&) {
    return sys::Answer<DaemonReply>{0, DaemonReply::kRefused};  // a map that it does not look after
  };
  EXPECT_EQ(writeStates({{kFirst, 3}}), 0);
  EXPECT_THAT(machine.port.calls, testing::ElementsAre("fail_path 8:0"));
  for (const auto& answer : {sys::Answer<DaemonReply>{-ETIMEDOUT, {}},
                             sys::Answer<DaemonReply>{0, DaemonReply::kTooLate}}) {
    machine.daemon.answer = [&](const std::string&) { return answer; };
    EXPECT_EQ(writeStates({{kFirst, 0}}), -ETIMEDOUT);
  }
}

TEST_F(RequestsTest, ADriversRefusalIsPassedOn) {
  machine.port.faults["message"] = -EINVAL;
  EXPECT_EQ(writeStates({{kFirst, 3}, {kSecond, 3}}), -EINVAL);
  EXPECT_THAT(map.failed, testing::ElementsAre(sys::DeviceNumber{8, 64}));  // the other was tried
  machine.port.maps[{254, 0}].suspended = true;
  EXPECT_EQ(writeStates({{kFirst, 0}}), -EBUSY);
}

TEST_F(RequestsTest, WhatIsNoRequestChangesNothing) {
  EXPECT_EQ(writeStates({{kFirst, 3}, {"FFFF", 3}}), -ENOENT);
  EXPECT_EQ(writeStates({{kFirst, 1}}), -EINVAL);
  EXPECT_EQ(writeAlgorithm("Most Bytes", 1), -EINVAL);
  EXPECT_EQ(writeAlgorithm("Least Bytes", -1), -EINVAL);
  EXPECT_EQ(writeAlgorithm("Least Bytes", std::int64_t{1} << 32), -EINVAL);
  EXPECT_EQ(write(*ob::DictionaryBuilder(0).build()), -EINVAL);
  EXPECT_EQ(write(registry::kAlias), -EINVAL);
  EXPECT_EQ(write(*ob::DictionaryBuilder(0).build(), 0, registry::kAlias), -EOPNOTSUPP);
  EXPECT_EQ(write(registry::kAlias, machine.id(Kind::kPath, {8, 0})), -EOPNOTSUPP);
  EXPECT_TRUE(machine.port.calls.empty());
  EXPECT_TRUE(machine.daemon.commands.empty());
}

TEST_F(RequestsTest, AUnitThatWentAwayInBetweenIsTold) {
  const ScopedHandle entry(machine.registry(), machine.registry().findServiceByEntryID(
                                                   machine.id(Kind::kUnit, {254, 0})));
  machine.port.maps.erase({254, 0});
  EXPECT_EQ(machine.registry().setProperty(entry.get(), registry::kProperties,
                                           *ob::DictionaryBuilder(0).build()),
            -ENXIO);
}

}  // namespace
}  // namespace tavrenix::test
