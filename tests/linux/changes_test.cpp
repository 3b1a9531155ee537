// Changes of a unit, written into its entry: the state of the map afterwards, also if a step fails
// or another program interferes.
#include <gmock/gmock.h>

#include "host/registry_names.hpp"
#include "runtime/values.hpp"
#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

using sys::DaemonReply;
using testing::ElementsAre;
using Map = FakeDeviceMapper::Map;

constexpr const char *kFirst = "000F00F0001F0000", *kSecond = "001F00F0001F0000";
constexpr sys::DeviceNumber kFirstDevice{8, 0}, kSecondDevice{8, 64};
const std::string kShape = "1 queue_if_no_path 1 alua 2 2 ";
const std::string kOld =
    kShape + "service-time 0 2 2 8:0 1 1 8:64 1 3 service-time 0 1 2 8:32 1 1 ";
const std::string kMixed = kShape + "queue-length 0 2 1 8:0 1 8:64 1 service-time 0 1 2 8:32 1 1 ";
const std::string kPathless = "0 0 0 0 ";
const std::string kNew = kShape + "round-robin 0 2 1 8:0 1 8:64 1 round-robin 0 1 1 8:32 1 ";
const std::string kUnqueued = "0 " + kNew.substr(kNew.find("1 alua"));
const std::string kForeign = "0 0 1 1 queue-length 0 2 0 8:0 8:64 ";
const std::string kLonger = "0 0 1 1 service-time 0 3 1 8:0 1 8:64 1 8:32 1 ";
const std::string kTwo = "0 0 2 1 service-time 0 1 2 8:0 1 1 service-time 0 1 2 8:64 1 3 ";
const std::string kBare = "0 0 2 1 round-robin 0 1 0 8:0 round-robin 0 1 0 8:64 ";

class Changes : public testing::Test {
 protected:
  Changes() { map.status.clear(); }
  RecordedMachine machine;
  Map& map = machine.map(0);
  FakeDeviceMapper& port = machine.port;

  KernelStatus write(EntryID id, const ob::Object& value) {
    const ScopedHandle entry(machine.registry(), machine.registry().findServiceByEntryID(id));
    return machine.registry().setProperty(entry.get(), registry::kProperties, value);
  }
  KernelStatus writeAlgorithm(const char* algorithm, std::int64_t count) {
    ob::DictionaryBuilder request(2);
    request.add(registry::kAlgorithm, ob::String::make(algorithm));
    request.add(registry::kBatchCount, ob::Number::make(count));
    return write(machine.unit(0), *request.build());
  }
  // 0 enables a path, 3 disables it.
  KernelStatus writeStates(const std::vector<std::pair<const char*, std::int64_t>>& states) {
    ob::DictionaryBuilder members(states.size());
    for (const auto& [identifier, state] : states) {
      members.add(*ob::String::make(identifier), ob::Number::make(state));
    }
    ob::DictionaryBuilder request(1);
    request.add(registry::kPathState, members.build());
    return write(machine.unit(0), *request.build());
  }
};

TEST_F(Changes, PutANewTableInForceOrLeaveTheOldOne) {
  using Action = std::function<void()>;
  struct Row {
    const char* what;
    Action beforehand;
    int status;
    std::string inForce = kOld, waiting = {};
    std::int64_t count = 1;
    const char* algorithm = "Modified Round Robin";
  };
  const auto under = [&](const std::string& line) { return [&] { map.table.line = line; }; };
  const auto loads = [&](const std::string& line) { return [&] { map.loaded = line; }; };
  const auto fails = [&](const char* step, int status) {
    return [this, step, status] { port.faults[step] = status; };
  };
  // Another program acts at the first read after the load, or after the resume.
  const auto whenLoaded = [&](Action action, bool resumed = false) {
    return [this, action, resumed] {
      port.before = [this, action, resumed, done = false](const std::string& operation) mutable {
        const bool now = resumed ? map.event != 0 : map.loaded.has_value();
        if (operation == "read" && now && !std::exchange(done, true)) action();
      };
    };
  };
  const auto whenResumed = [&](const Action& action) { return whenLoaded(action, true); };
  const auto resumes = [&] { port.resume({254, 0}); };
  const auto suspends = [&] { map.suspended = true; };
  const Row rows[] = {
      {"another selector", {}, 0, kNew},
      {"the same selector", under(kTwo), 0, kTwo, "", 1, "Least Bytes"},
      {"a count that was never known", under(kBare), 0,
       "0 0 2 1 service-time 0 1 2 8:0 1 1 service-time 0 1 2 8:64 1 1 ", "", 0, "Least Bytes"},
      {"a count that the kernel clamps", {}, -EOPNOTSUPP, kOld, "", 16},
      {"no multipath line", under(kShape), -EINVAL, kShape},
      {"groups that differ", under(kMixed), 0, kNew},
      {"no path in the table", under(kPathless), -ENODEV, kPathless},
      {"a table of a killed change", loads(kUnqueued), 0, kNew},
      {"another program's table", loads(kLonger), -EALREADY, kOld, kLonger},
      {"suspended before", suspends, -EBUSY},
      {"lock", fails("lock", -EBUSY), -EBUSY},
      {"load", fails("load", -ENOMEM), -ENOMEM},
      {"resume", fails("resume", -EINVAL), -EINVAL},
      {"a resume that is cut short", fails("interrupt", -EINTR), -EINTR},
      {"failing the path again", fails("message", -EBUSY), -EBUSY},
      {"another table in force", whenResumed(under(kForeign)), -EBUSY, kForeign},
      {"loads meanwhile", whenLoaded(loads(kLonger)), -EALREADY, kOld, kLonger},
      {"puts in force meanwhile", whenLoaded(under(kLonger)), -EBUSY, kLonger},
      {"suspends meanwhile", whenLoaded(suspends), -EBUSY},
      {"resumes meanwhile", whenLoaded(resumes), -EBUSY, kNew},
      {"selects then", whenResumed(under(kOld)), -EIO},
      {"selects and loads then", whenResumed([&] { under(kOld)(), loads(kLonger)(); }), -EBUSY,
       kOld, kLonger},
      {"switches queueing then", whenResumed(under(kUnqueued)), 0, kUnqueued},
  };
  const Map recorded = map;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    map = recorded;
    map.table.line = kOld;
    map.failed = {kSecondDevice};
    map.disabledGroups = {2};
    map.readOnly = true;  // the fake refuses a load with another flag or length
    port.before = [](const std::string&) {};
    port.calls.clear();
    if (row.beforehand) row.beforehand();
    EXPECT_EQ(writeAlgorithm(row.algorithm, row.count), row.status);
    EXPECT_EQ(map.table.line.substr(0, row.inForce.size()), row.inForce);
    EXPECT_EQ(map.loaded.value_or(""), row.waiting);
    EXPECT_THAT(map.failed, ElementsAre(kSecondDevice));
    EXPECT_THAT(map.disabledGroups, ElementsAre(2u));
    EXPECT_THAT(port.faults, testing::IsEmpty());
    EXPECT_EQ(map.suspended, std::string(row.what).starts_with("suspend"));
    EXPECT_TRUE(row.inForce != kTwo || port.calls.empty());
  }
}

TEST_F(Changes, SwitchPathsByTheDaemonOrElseByTheDriver) {
  struct Row {
    std::vector<std::pair<const char*, std::int64_t>> states;
    sys::Answer<DaemonReply> daemon;
    bool obeys;  // the daemon does what it says
    int status;
    std::set<sys::DeviceNumber> failed;
    std::vector<std::string> messages;
  };
  constexpr auto kDone = DaemonReply::kDone;
  const std::vector<std::string> both{"fail_path 8:0", "reinstate_path 8:64"};
  const Row rows[] = {
      {{{kFirst, 3}, {kSecond, 0}}, {-ENOENT, {}}, false, 0, {kFirstDevice}, both},
      {{{kFirst, 3}}, {0, kDone}, true, 0, {kFirstDevice, kSecondDevice}, {}},
      {{{kFirst, 3}}, {0, kDone}, false, -EIO, {kSecondDevice}, {}},
      {{{kFirst, 3}}, {-ETIMEDOUT, {}}, false, -ETIMEDOUT, {kSecondDevice}, {}},
      {{{kFirst, 3}}, {0, DaemonReply::kTooLate}, false, -ETIMEDOUT, {kSecondDevice}, {}},
      {{{kFirst, 3}},
       {0, DaemonReply::kRefused},
       false,
       0,
       {kFirstDevice, kSecondDevice},
       {both[0]}},
      {{{kFirst, 3}, {kSecond, 0}}, {-EIO, {}}, false, -EIO, {}, {both[1]}},  // the other is tried
      {{{kFirst, 3}, {"FFFF", 3}}, {0, kDone}, true, -ENOENT, {kSecondDevice}, {}},
      {{{kFirst, 1}}, {0, kDone}, true, -EINVAL, {kSecondDevice}, {}},
  };
  for (const auto& row : rows) {
    map.failed = {kSecondDevice};
    port.calls.clear();
    machine.daemon.answer = [&](const std::string& command) {
      if (row.obeys && command == "fail path sda") map.failed.insert(kFirstDevice);
      return command.ends_with("sda") ? row.daemon : sys::Answer<DaemonReply>{-ENOENT, {}};
    };
    EXPECT_EQ(writeStates(row.states), row.status) << &row - rows;
    EXPECT_EQ(map.failed, row.failed) << &row - rows;
    EXPECT_EQ(port.calls, row.messages) << &row - rows;
  }
}

TEST_F(Changes, AreRefusedForAnUnknownAlgorithmAndAMapThatHasGone) {
  const auto nothing = ob::DictionaryBuilder(0).build();
  EXPECT_EQ(writeAlgorithm("Most Bytes", 1), -EINVAL);
  const EntryID id = machine.unit(0);
  const ScopedHandle gone(machine.registry(), machine.registry().findServiceByEntryID(id));
  port.maps.clear();
  EXPECT_EQ(machine.registry().setProperty(gone.get(), registry::kProperties, *nothing), -ENXIO);
}

}  // namespace
}  // namespace tavrenix::test
