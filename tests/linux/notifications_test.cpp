// Arrivals and departures, over a recorded machine whose maps change and events of the test's own.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <future>

#include "linux/host.hpp"
#include "model/entry.hpp"
#include "model/registry_names.hpp"
#include "runtime/dispatch_queue.hpp"
#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

using sys::Kind;

constexpr sys::DeviceNumber kFourth{254, 3};
constexpr std::string_view kEvent("change@/x\0SUBSYSTEM=block\0", 26);

// A device-mapper that a test changes while another thread reads it.
class SharedDeviceMapper final : public sys::DeviceMapperPort {
 public:
  sys::Answer<std::vector<sys::ListedMap>> list() override {
    const std::lock_guard lock(mutex_);
    auto listed = port_.list();
    if (listed.status != 0) ++failures;
    return listed;
  }
  sys::Answer<sys::MapLines> read(sys::DeviceNumber map, sys::Lines which) override {
    const std::lock_guard lock(mutex_);
    return port_.read(map, which);
  }
  int load(sys::DeviceNumber, const sys::Target&, bool) override { return -EIO; }
  int resume(sys::DeviceNumber) override { return -EIO; }
  int clear(sys::DeviceNumber) override { return -EIO; }
  int message(sys::DeviceNumber, const std::string&) override { return -EIO; }

  void change(const std::function<void(FakeDeviceMapper&)>& change) {
    const std::lock_guard lock(mutex_);
    change(port_);
  }

  std::atomic<int> failures{0};  // of list()

 private:
  std::mutex mutex_;
  FakeDeviceMapper port_;
};

class NotificationsTest : public testing::Test {
 protected:
  NotificationsTest() {
    port.change([&](FakeDeviceMapper& maps) { loadRecordedMaps(maps, copy.root.string()); });
    notificationPort = registry().createNotificationPort();
    EXPECT_NE(notificationPort, 0u);
    registry().setDispatchQueue(notificationPort, *queue);
  }
  ~NotificationsTest() override {
    for (const RegistryHandle iterator : iterators) registry().release(iterator);
    if (notificationPort != 0) registry().destroyNotificationPort(notificationPort);
    queue->drain();
    EXPECT_EQ(registry().openHandles(), 0u);
    if (sender >= 0) ::close(sender);
  }

  std::optional<sys::EventSource> openEvents() {
    ++opened;
    int pair[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair), 0);
    if (sender >= 0) ::close(sender);
    sender = pair[1];
    return sys::EventSource(pair[0], ::geteuid());
  }
  sys::LinuxRegistry& registry() { return host.registry(); }
  RegistryResult<RegistryHandle> add(RegistryPort to, std::string_view kind,
                                     std::string_view className, NotificationDelivery deliver) {
    return registry().addMatchingNotification(to, kind, registry().classMatching(className),
                                              std::move(deliver));
  }
  // Registers and, like a client, takes up on the queue what is present and all that comes.
  void watch(std::string_view kind, std::string_view className, const std::string& prefix) {
    const auto deliver = [this, prefix](RegistryHandle iterator) { takeUp(iterator, prefix); };
    const auto [status, iterator] = add(notificationPort, kind, className, deliver);
    ASSERT_EQ(status, kSuccess);
    iterators.push_back(iterator);
    queue->async([deliver, iterator = iterator] { deliver(iterator); });
    queue->drain();
  }
  void watchAll() {
    watch(registry::kFirstMatchNotification, registry::kLogicalUnitClass, "+");
    watch(registry::kTerminateNotification, registry::kLogicalUnitClass, "-");
    watch(registry::kFirstMatchNotification, registry::kPathClass, "+");
    watch(registry::kTerminateNotification, registry::kPathClass, "-");
    expectTold({"+254:0", "+254:1", "+254:2", "+254:3", "+8:0", "+8:16", "+8:32", "+8:48", "+8:64",
                "+8:80", "+8:96", "+8:112"});
  }
  void takeUp(RegistryHandle iterator, const std::string& prefix) {
    std::vector<std::string> taken;
    while (const RegistryHandle entry = registry().iteratorNext(iterator)) {
      const ScopedHandle held(registry(), entry);
      const auto name = sys::nameOf(registry().getEntryID(entry).value);
      EXPECT_EQ(registry().conformsTo(entry, registry::kLogicalUnitClass),
                name.kind == Kind::kUnit);
      EXPECT_EQ(registry().conformsTo(entry, registry::kPathClass), name.kind == Kind::kPath);
      taken.push_back(prefix + name.device().text());
      if (asksGeneration) generations.push_back(generation());
    }
    const std::lock_guard lock(mutex);
    told.insert(told.end(), taken.begin(), taken.end());
    changed.notify_all();
  }
  void expectTold(const std::vector<std::string>& expected) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, std::chrono::seconds(20),
                     [&] { return told.size() >= expected.size(); });
    EXPECT_THAT(told, testing::UnorderedElementsAreArray(expected));
    told.clear();
  }
  void sendEvent() const {
    EXPECT_EQ(::send(sender, kEvent.data(), kEvent.size(), 0), static_cast<ssize_t>(kEvent.size()));
  }
  void removeMap(sys::DeviceNumber device) {
    port.change([&](FakeDeviceMapper& maps) { maps.maps.erase(device); });
  }
  std::uint32_t generation() {
    const SCSIMPIOStatisticsRequest request{.requestType = kConfigurationGeneration};
    std::uint32_t number = 0;
    std::size_t length = sizeof number;
    host.tunable().sysctlbyname(kStatisticsTunable, &number, &length, &request, sizeof request);
    return number;
  }

  const CopiedMachine copy{"states"};
  SharedDeviceMapper port;
  FakeDaemon daemon;
  int opened = 0;
  int sender = -1;
  sys::LinuxHost host{
      sys::HostFiles(copy.root.string()), port, daemon, 0, sys::Burst::Clock::duration::zero(),
      [this] { return openEvents(); }};
  RegistryPort notificationPort = 0;
  ob::Ref<ob::DispatchQueue> queue = ob::make<ob::DispatchQueue>("test");
  std::vector<RegistryHandle> iterators;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::string> told;
  std::atomic<bool> asksGeneration{false};
  std::vector<std::uint32_t> generations;
};

TEST_F(NotificationsTest, EachArrivalAndDepartureIsToldOnce) {
  watchAll();
  FakeDeviceMapper::Map fourth;
  port.change([&](FakeDeviceMapper& maps) { fourth = maps.maps.at(kFourth); });
  removeMap(kFourth);
  sendEvent();
  sendEvent();
  expectTold({"-254:3", "-8:48", "-8:112"});
  port.change([&](FakeDeviceMapper& maps) { maps.maps[kFourth] = fourth; });
  sendEvent();
  expectTold({"+254:3", "+8:48", "+8:112"});
  sendEvent();  // nothing more
  std::filesystem::remove(copy.root / "sys/dev/block/8:0");
  sendEvent();
  expectTold({"-8:0"});
  removeMap({254, 0});
  sendEvent();
  expectTold({"-254:0", "-8:64"});
}

TEST_F(NotificationsTest, APortHasOneRunLoopSource) {
  auto& registry = host.registry();
  const RegistryPort made = registry.createNotificationPort();
  const auto source = registry.getRunLoopSource(made);
  ASSERT_TRUE(source);
  EXPECT_EQ(registry.getRunLoopSource(made), source);
  registry.destroyNotificationPort(made);
  EXPECT_FALSE(registry.getRunLoopSource(made));
}

TEST_F(NotificationsTest, AMapIsAUnitOnceItHasATable) {
  sys::Target table;
  port.change([&](FakeDeviceMapper& maps) {
    table = std::exchange(maps.maps.at(kFourth).table, sys::Target{});
  });
  watch(registry::kFirstMatchNotification, registry::kLogicalUnitClass, "+");
  watch(registry::kFirstMatchNotification, registry::kPathClass, "+");
  expectTold({"+254:0", "+254:1", "+254:2", "+8:0", "+8:16", "+8:32", "+8:64", "+8:80", "+8:96"});
  port.change([&](FakeDeviceMapper& maps) { maps.maps.at(kFourth).table = table; });
  sendEvent();
  expectTold({"+254:3", "+8:48", "+8:112"});
}

TEST_F(NotificationsTest, AMachineThatCannotBeReadForAMomentIsReadAgain) {
  watchAll();
  removeMap(kFourth);
  port.change([](FakeDeviceMapper& maps) { maps.listStatus = -ENOMEM; });
  sendEvent();
  while (port.failures == 0) std::this_thread::yield();
  port.change([](FakeDeviceMapper& maps) { maps.listStatus = 0; });
  expectTold({"-254:3", "-8:48", "-8:112"});
}

TEST_F(NotificationsTest, ADriverThatIsUnloadedHasNoUnits) {
  watch(registry::kTerminateNotification, registry::kLogicalUnitClass, "-");
  port.change([](FakeDeviceMapper& maps) { maps.listStatus = -ENXIO; });
  sendEvent();
  expectTold({"-254:0", "-254:1", "-254:2", "-254:3"});
}

TEST_F(NotificationsTest, TheGenerationStandsStillUntilDeparturesAreTakenUp) {
  watchAll();
  const std::uint32_t before = generation();
  asksGeneration = true;
  removeMap(kFourth);
  EXPECT_EQ(generation(), before);  // a scan before the event changes nothing, and hears of it
  expectTold({"-254:3", "-8:48", "-8:112"});
  queue->drain();
  EXPECT_THAT(generations, testing::ElementsAre(before, before, before));
  EXPECT_NE(generation(), before);
}

TEST_F(NotificationsTest, ArrivalsHaveTheirScanBeforeDeparturesKeepScansAway) {
  watch(registry::kTerminateNotification, registry::kLogicalUnitClass, "-");
  std::promise<void> mayGoOn;
  queue->async([ready = mayGoOn.get_future().share()] { ready.wait(); });
  const std::uint32_t before = generation();
  const auto [status, present] = add(notificationPort, registry::kFirstMatchNotification,
                                     registry::kLogicalUnitClass, [](RegistryHandle) {});
  ASSERT_EQ(status, kSuccess);
  iterators.push_back(present);
  removeMap(kFourth);
  EXPECT_NE(generation(), before);  // what is present has not been taken up
  takeUp(present, "+");
  expectTold({"+254:0", "+254:1", "+254:2", "+254:3"});
  mayGoOn.set_value();
  sendEvent();
  expectTold({"-254:3"});
}

TEST_F(NotificationsTest, ADestroyedPortHoldsNothingUp) {
  watch(registry::kTerminateNotification, registry::kLogicalUnitClass, "-");
  const RegistryPort idle = registry().createNotificationPort();  // bound to nothing
  const auto [status, iterator] = add(idle, registry::kTerminateNotification,
                                      registry::kLogicalUnitClass, [](RegistryHandle) {});
  ASSERT_EQ(status, kSuccess);
  iterators.push_back(iterator);
  EXPECT_EQ(registry().iteratorNext(iterator), 0u);  // armed
  const std::uint32_t before = generation();
  removeMap(kFourth);
  EXPECT_EQ(generation(), before);
  expectTold({"-254:3"});
  registry().destroyNotificationPort(idle);
  queue->drain();
  EXPECT_NE(generation(), before);
}

TEST_F(NotificationsTest, ListeningLastsAsLongAsThereArePorts) {
  const auto threads = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                         std::filesystem::directory_iterator());
  };
  watchAll();
  const auto listening = threads();
  const RegistryPort second = registry().createNotificationPort();
  EXPECT_EQ(opened, 1);
  registry().destroyNotificationPort(second);
  EXPECT_EQ(threads(), listening);
  registry().destroyNotificationPort(std::exchange(notificationPort, 0));
  EXPECT_EQ(threads(), listening - 1);
  removeMap(kFourth);  // while nobody listens
  const RegistryPort third = registry().createNotificationPort();
  EXPECT_EQ(opened, 2);
  const auto [status, present] =
      add(third, registry::kFirstMatchNotification, registry::kLogicalUnitClass, {});
  ASSERT_EQ(status, kSuccess);
  iterators.push_back(present);
  takeUp(present, "+");
  expectTold({"+254:0", "+254:1", "+254:2"});
  registry().destroyNotificationPort(third);
}

TEST_F(NotificationsTest, APortMayBeDestroyedWithinItsOwnDelivery) {
  std::promise<void> inCall;
  std::promise<void> mayReturn;
  const auto deliver = [&](RegistryHandle) {
    inCall.set_value();  // a second call would throw
    mayReturn.get_future().wait();
    registry().destroyNotificationPort(std::exchange(notificationPort, 0));
  };
  const auto [status, iterator] =
      add(notificationPort, registry::kTerminateNotification, registry::kLogicalUnitClass, deliver);
  ASSERT_EQ(status, kSuccess);
  iterators.push_back(iterator);
  EXPECT_EQ(registry().iteratorNext(iterator), 0u);
  removeMap(kFourth);
  sendEvent();
  inCall.get_future().wait();
  removeMap({254, 0});
  sendEvent();
  mayReturn.set_value();
  queue->drain();
  EXPECT_EQ(notificationPort, 0u);
}

TEST_F(NotificationsTest, ClientsComeAndGoWhileStorageDoes) {
  watchAll();
  FakeDeviceMapper::Map fourth;
  port.change([&](FakeDeviceMapper& maps) { fourth = maps.maps.at(kFourth); });
  std::thread clients([&] {
    const auto own = ob::make<ob::DispatchQueue>("clients");
    for (int i = 0; i < 50; ++i) {
      const RegistryPort mine = registry().createNotificationPort();
      registry().setDispatchQueue(mine, *own);
      const auto deliver = [&](RegistryHandle iterator) {
        while (const RegistryHandle entry = registry().iteratorNext(iterator)) {
          registry().release(entry);
        }
      };
      const auto added =
          add(mine, registry::kFirstMatchNotification, registry::kPathClass, deliver);
      own->async([deliver, iterator = added.value] { deliver(iterator); });
      own->drain();
      registry().destroyNotificationPort(mine);
      own->drain();
      registry().release(added.value);
    }
  });
  for (int i = 0; i < 20; ++i) {
    removeMap(kFourth);
    sendEvent();
    expectTold({"-254:3", "-8:48", "-8:112"});
    port.change([&](FakeDeviceMapper& maps) { maps.maps[kFourth] = fourth; });
    sendEvent();
    expectTold({"+254:3", "+8:48", "+8:112"});
  }
  clients.join();
}

TEST_F(NotificationsTest, RefusesWhatIsNoRegistration) {
  const auto status = [&](RegistryPort to, std::string_view kind,
                          ob::Ref<const ob::Dictionary> matching) {
    return registry().addMatchingNotification(to, kind, std::move(matching), {}).status;
  };
  const auto units = registry().classMatching(registry::kLogicalUnitClass);
  EXPECT_NE(status(0, registry::kFirstMatchNotification, units), kSuccess);
  EXPECT_NE(status(notificationPort, "KsOther", units), kSuccess);
  EXPECT_NE(status(notificationPort, registry::kFirstMatchNotification, nullptr), kSuccess);
  port.change([](FakeDeviceMapper& maps) { maps.listStatus = -EACCES; });
  EXPECT_EQ(status(notificationPort, registry::kFirstMatchNotification, units), -EACCES);
}

}  // namespace
}  // namespace tavrenix::test
