// A machine whose events the test sends: the contract of the device registry, the rest of the
// listening thread's work, and which events count.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/linux/recorded_machine.hpp"
#include "tests/support/registry_contract.hpp"

namespace tavrenix::test {
namespace {

using namespace std::string_literals;

// Returns the receiving end of a connection and puts the other end into `sender`.
ob::FileDescriptor pairedWith(ob::FileDescriptor& sender) {
  int pair[2];
  EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair), 0);
  sender = ob::FileDescriptor(pair[1]);
  return ob::FileDescriptor(pair[0]);
}
void send(const ob::FileDescriptor& sender, std::string_view message) {
  ::send(sender.get(), message.data(), message.size(), MSG_NOSIGNAL);
}
std::string eventOf(const std::string& subsystem) {
  return "change@/x\0SUBSYSTEM="s + subsystem + "\0SEQNUM=1\0"s;
}

// An event as udev sends it on, with a header of 40 bytes that gives the place of the properties.
std::string udevEventOf(const std::string& subsystem, std::size_t cut = 0) {
  const std::string properties = "SUBSYSTEM=" + subsystem + "\0SEQNUM=1\0"s;
  std::string message = "libudev\0\xfe\xed\xca\xfe"s;
  for (const std::size_t field : {std::size_t{40}, std::size_t{40}, properties.size()}) {
    const auto number = static_cast<std::uint32_t>(field);
    message.append(reinterpret_cast<const char*>(&number), sizeof number);
  }
  message.resize(40);
  return message + properties.substr(cut);
}

struct RecordedFixture {
  static constexpr bool kMakesRounds = true;
  static constexpr sys::DeviceNumber kUnit{254, 1};

  BackedRegistry& registry() { return machine.registry(); }
  EntryID unit() const { return machine.unit(1); }
  EntryID absent() const { return unit() ^ (EntryID{1} << 40); }
  std::uint32_t generation() {
    return machine.ask<std::uint32_t>(kConfigurationGeneration).value_or(0);
  }
  void change(const std::function<void(FakeDeviceMapper&)>& how) {
    {
      const std::lock_guard lock(machine.port.mutex);
      how(machine.port);
    }
    const std::lock_guard lock(mutex);
    send(sender, eventOf("block"));
  }
  void removeUnit() {
    change([](FakeDeviceMapper& port) { port.maps.erase(kUnit); });
  }
  void restoreUnit() {
    change([this](FakeDeviceMapper& port) {
      port.maps[kUnit] = maps.at(kUnit);
      port.maps[kUnit].event = ++events;  // so that the generation is a new one
    });
  }
  std::optional<sys::EventSource> openEvents() {
    const std::lock_guard lock(mutex);
    ++opened;
    return sys::EventSource(pairedWith(sender), {}, ::geteuid());
  }
  void closeEvents() {
    const std::lock_guard lock(mutex);
    sender = ob::FileDescriptor();
  }

  std::mutex mutex;
  std::atomic<int> opened = 0;
  ob::FileDescriptor sender;
  std::uint32_t events = 100;
  RecordedMachine machine{0, [this] { return openEvents(); }};
  const std::map<sys::DeviceNumber, FakeDeviceMapper::Map> maps = machine.port.maps;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Recorded, RegistryContract, RecordedFixture);

class Listening : public RegistryContract<RecordedFixture> {
 protected:
  const EntryID unit = fixture.unit();
  FakeDeviceMapper& driver = fixture.machine.port;
};

TEST_F(Listening, RepeatsALookThatFailed) {
  watch(registry::kTerminateNotification);
  fixture.change([](FakeDeviceMapper& machine) {
    machine.lists = 0;
    machine.listStatus = -ENOMEM;
    machine.maps.erase(RecordedFixture::kUnit);
  });
  while (driver.lists == 0) std::this_thread::yield();
  {
    const std::lock_guard lock(driver.mutex);
    driver.listStatus = 0;
  }
  expectNote(unit, registry::kTerminateNotification);
}

TEST_F(Listening, LastsAsLongAsThereArePortsThoughItsEventsBreak) {
  registry().destroyNotificationPort(registry().createNotificationPort());
  watch(registry::kTerminateNotification);
  EXPECT_EQ(fixture.opened, 1);
  fixture.closeEvents();
  fixture.removeUnit();  // its event is lost
  expectNote(unit, registry::kTerminateNotification);
  EXPECT_EQ(fixture.opened, 2);
  std::atomic<bool> destroyed = false;
  const auto made = add(port, registry::kFirstMatchNotification, [&](RegistryHandle) {
    registry().destroyNotificationPort(std::exchange(port, 0));
    destroyed = true;
  });
  read(made.value);
  fixture.restoreUnit();
  while (!destroyed) std::this_thread::yield();
  port = registry().createNotificationPort();
  EXPECT_EQ(fixture.opened, 3);
}

TEST(EventSource, HearsEachEventOfStorageOnce) {
  using sys::EventSource;
  using WaitResult = EventSource::WaitResult;
  struct Row {
    const char* what;
    std::chrono::milliseconds timeout;
    std::vector<std::string> kernel, udev;
    WaitResult first;
  };
  constexpr std::chrono::milliseconds kLong(1'000'000), kShort(1000);
  const std::string disk = eventOf("block"), network = eventOf("net");
  const Row rows[] = {
      {"sent again", kShort, {disk}, {disk}, WaitResult::kChange},
      {"links are still missing", kLong, {disk}, {}, WaitResult::kNothing},
      {"udevd does not answer", {}, {disk, disk}, {}, WaitResult::kChange},
      {"from udev alone", kLong, {}, {udevEventOf("block")}, WaitResult::kChange},
      {"from udev, too short", kLong, {}, {udevEventOf("block", 1)}, WaitResult::kNothing},
      {"others", {}, {network, "x", ""}, {udevEventOf("net"), "@"}, WaitResult::kNothing},
      {"cut off", kLong, {disk + std::string(40000, 'x')}, {}, WaitResult::kChange},
  };
  for (const auto& row : rows) {
    ob::FileDescriptor kernel, udev;
    auto fromKernel = pairedWith(kernel);
    EventSource source(std::move(fromKernel), pairedWith(udev), ::geteuid(), row.timeout);
    for (const auto& message : row.kernel) send(kernel, message);
    for (const auto& message : row.udev) send(udev, message);
    // A change ends the wait, however busy the machine is.
    const auto until = row.first == WaitResult::kChange ? kLong : std::chrono::milliseconds(1);
    EXPECT_EQ(source.wait(until), row.first) << row.what;
    EXPECT_EQ(source.wait(row.timeout == kShort ? 2 * kShort : kShort / 50), WaitResult::kNothing)
        << row.what;
    udev = ob::FileDescriptor();
    EXPECT_EQ(source.wait(), WaitResult::kBroken) << row.what;
  }
  ob::FileDescriptor kernel;
  EventSource distrusting(pairedWith(kernel), {}, ::geteuid() + 1);
  send(kernel, disk);
  EXPECT_EQ(distrusting.wait(std::chrono::milliseconds(1)), WaitResult::kNothing);
}

}  // namespace
}  // namespace tavrenix::test
