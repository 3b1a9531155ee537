// Arrivals and departures, over a recorded machine whose maps change and events of the test's own.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <future>
#include <sstream>

#include "model/registry_names.hpp"
#include "runtime/dispatch_queue.hpp"
#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

using registry::kFirstMatchNotification;
using registry::kLogicalUnitClass;
using registry::kPathClass;
using registry::kTerminateNotification;
using sys::Kind;

constexpr sys::DeviceNumber kFirst{254, 0};
constexpr sys::DeviceNumber kFourth{254, 3};

class NotificationsTest : public testing::Test {
 protected:
  NotificationsTest() { registry().setDispatchQueue(notificationPort, *queue); }
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
  sys::LinuxRegistry& registry() { return machine.registry(); }
  RegistryHandle add(RegistryPort to, std::string_view kind, std::string_view className,
                     NotificationDelivery deliver) {
    const auto [status, iterator] = registry().addMatchingNotification(
        to, kind, registry().classMatching(className), std::move(deliver));
    EXPECT_EQ(status, kSuccess);
    iterators.push_back(iterator);
    return iterator;
  }
  // Registers and, like a client, takes up on the queue what is present and all that comes.
  void watch(std::string_view kind, std::string_view className) {
    const char sign = kind == kTerminateNotification ? '-' : '+';
    const auto deliver = [this, sign](RegistryHandle iterator) { takeUp(iterator, sign); };
    const RegistryHandle iterator = add(notificationPort, kind, className, deliver);
    queue->async([deliver, iterator] { deliver(iterator); });
    queue->drain();
  }
  void watchAll() {
    for (const auto className : {kLogicalUnitClass, kPathClass}) {
      for (const auto kind : {kFirstMatchNotification, kTerminateNotification}) {
        watch(kind, className);
      }
    }
  }
  void takeUp(RegistryHandle iterator, char sign) {
    std::vector<std::string> taken;
    while (const RegistryHandle entry = registry().iteratorNext(iterator)) {
      const ScopedHandle held(registry(), entry);
      const auto name = sys::nameOf(registry().getEntryID(entry).value);
      EXPECT_EQ(registry().conformsTo(entry, kLogicalUnitClass), name.kind == Kind::kUnit);
      EXPECT_EQ(registry().conformsTo(entry, kPathClass), name.kind == Kind::kPath);
      taken.push_back(sign + name.device().text());
      if (asksGeneration) generations.push_back(generation());
    }
    const std::lock_guard lock(mutex);
    told.insert(told.end(), taken.begin(), taken.end());
    changed.notify_all();
  }
  // Takes up what waits without a look at it.
  void drop(RegistryHandle iterator) {
    while (const RegistryHandle entry = registry().iteratorNext(iterator)) {
      registry().release(entry);
    }
  }
  // Waits until so much has been told; words: a sign and the number of a device each.
  void expectTold(const std::string& words) {
    std::istringstream stream(words);
    const std::vector<std::string> expected{std::istream_iterator<std::string>(stream), {}};
    std::unique_lock lock(mutex);
    changed.wait_for(lock, std::chrono::seconds(20),
                     [&] { return told.size() >= expected.size(); });
    EXPECT_THAT(told, testing::UnorderedElementsAreArray(expected));
    told.clear();
  }
  // The listening thread reads what these change.
  void setStatus(int status) {
    const std::lock_guard lock(port.mutex);
    port.listStatus = status;
  }
  void addMap(sys::DeviceNumber device) {
    const std::lock_guard lock(port.mutex);
    port.maps[device] = maps.at(device);
  }
  void removeMap(sys::DeviceNumber device) {
    const std::lock_guard lock(port.mutex);
    port.maps.erase(device);
  }
  void sendEvent() const {
    constexpr std::string_view kEvent("change@/x\0SUBSYSTEM=block\0", 26);
    EXPECT_EQ(::send(sender, kEvent.data(), kEvent.size(), 0), static_cast<ssize_t>(kEvent.size()));
  }
  std::uint32_t generation() {
    const SCSIMPIOStatisticsRequest request{.requestType = kConfigurationGeneration};
    std::uint32_t number = 0;
    std::size_t length = sizeof number;
    machine.host.tunable().sysctlbyname(kStatisticsTunable, &number, &length, &request,
                                        sizeof request);
    return number;
  }

  int opened = 0;
  int sender = -1;
  RecordedMachine machine{"states", {.opener = [this] { return openEvents(); }}};
  FakeDeviceMapper& port = machine.port;
  const std::map<sys::DeviceNumber, FakeDeviceMapper::Map> maps = port.maps;
  RegistryPort notificationPort = registry().createNotificationPort();
  ob::Ref<ob::DispatchQueue> queue = ob::make<ob::DispatchQueue>("test");
  std::vector<RegistryHandle> iterators;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::string> told;
  std::atomic<bool> asksGeneration{false};
  std::vector<std::uint32_t> generations;
};

TEST_F(NotificationsTest, EachArrivalAndDepartureIsToldOnce) {
  machine.map(3).table = {};
  watchAll();
  expectTold("+254:0 +254:1 +254:2 +8:0 +8:16 +8:32 +8:64 +8:80 +8:96");
  addMap(kFourth);  // a map is a unit once it has a table
  sendEvent();
  expectTold("+254:3 +8:48 +8:112");
  removeMap(kFourth);
  sendEvent();
  sendEvent();
  expectTold("-254:3 -8:48 -8:112");
  addMap(kFourth);
  sendEvent();
  expectTold("+254:3 +8:48 +8:112");
  sendEvent();  // nothing more
  machine.remove("/sys/dev/block/8:0");
  sendEvent();
  expectTold("-8:0");
  removeMap(kFirst);
  sendEvent();
  expectTold("-254:0 -8:64");
}

TEST_F(NotificationsTest, AMachineThatCannotBeReadIsReadAgainAndOneWithoutTheDriverHasNoUnits) {
  watch(kTerminateNotification, kLogicalUnitClass);
  removeMap(kFourth);
  setStatus(-ENOMEM);
  sendEvent();
  while (port.failedLists == 0) std::this_thread::yield();
  setStatus(0);
  expectTold("-254:3");
  setStatus(-ENXIO);
  sendEvent();
  expectTold("-254:0 -254:1 -254:2");
}

TEST_F(NotificationsTest, TheGenerationStandsStillUntilDeparturesAreTakenUp) {
  watch(kTerminateNotification, kLogicalUnitClass);
  watch(kTerminateNotification, kPathClass);
  const std::uint32_t before = generation();
  asksGeneration = true;
  removeMap(kFourth);
  EXPECT_EQ(generation(), before);  // a scan before the event changes nothing, and hears of it
  expectTold("-254:3 -8:48 -8:112");
  queue->drain();
  EXPECT_THAT(generations, testing::ElementsAre(before, before, before));
  EXPECT_NE(generation(), before);
}

TEST_F(NotificationsTest, ArrivalsHaveTheirScanBeforeDeparturesKeepScansAway) {
  watch(kTerminateNotification, kLogicalUnitClass);
  std::promise<void> mayGoOn;
  queue->async([ready = mayGoOn.get_future().share()] { ready.wait(); });
  const std::uint32_t before = generation();
  const RegistryHandle present =
      add(notificationPort, kFirstMatchNotification, kLogicalUnitClass, [](RegistryHandle) {});
  removeMap(kFourth);
  EXPECT_NE(generation(), before);  // what is present has not been taken up
  takeUp(present, '+');
  expectTold("+254:0 +254:1 +254:2 +254:3");
  mayGoOn.set_value();
  sendEvent();
  expectTold("-254:3");
}

TEST_F(NotificationsTest, ADestroyedPortHoldsNothingUp) {
  watch(kTerminateNotification, kLogicalUnitClass);
  const RegistryPort idle = registry().createNotificationPort();  // bound to nothing
  drop(add(idle, kTerminateNotification, kLogicalUnitClass, [](RegistryHandle) {}));  // arms it
  const std::uint32_t before = generation();
  removeMap(kFourth);
  EXPECT_EQ(generation(), before);
  expectTold("-254:3");
  registry().destroyNotificationPort(idle);
  queue->drain();
  EXPECT_NE(generation(), before);
}

TEST_F(NotificationsTest, ListeningLastsAsLongAsThereArePorts) {
  const auto threads = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                         std::filesystem::directory_iterator());
  };
  watch(kTerminateNotification, kLogicalUnitClass);
  const auto listening = threads();
  const RegistryPort second = registry().createNotificationPort();
  EXPECT_EQ(opened, 1);
  EXPECT_TRUE(registry().getRunLoopSource(second));
  registry().destroyNotificationPort(second);
  EXPECT_FALSE(registry().getRunLoopSource(second));
  EXPECT_EQ(threads(), listening);
  registry().destroyNotificationPort(notificationPort);
  EXPECT_EQ(threads(), listening - 1);
  removeMap(kFourth);  // while nobody listens
  notificationPort = registry().createNotificationPort();
  EXPECT_EQ(opened, 2);
  takeUp(add(notificationPort, kFirstMatchNotification, kLogicalUnitClass, {}), '+');
  expectTold("+254:0 +254:1 +254:2");
}

TEST_F(NotificationsTest, APortMayBeDestroyedWithinItsOwnDelivery) {
  std::promise<void> inCall;
  std::promise<void> mayReturn;
  const auto deliver = [&](RegistryHandle) {
    inCall.set_value();  // a second call would throw
    mayReturn.get_future().wait();
    registry().destroyNotificationPort(std::exchange(notificationPort, 0));
  };
  drop(add(notificationPort, kTerminateNotification, kLogicalUnitClass, deliver));
  removeMap(kFourth);
  sendEvent();
  inCall.get_future().wait();
  removeMap(kFirst);
  sendEvent();
  mayReturn.set_value();
  queue->drain();
  EXPECT_EQ(notificationPort, 0u);
}

TEST_F(NotificationsTest, ClientsComeAndGoWhileStorageDoes) {
  watch(kFirstMatchNotification, kLogicalUnitClass);
  watch(kTerminateNotification, kLogicalUnitClass);
  expectTold("+254:0 +254:1 +254:2 +254:3");
  std::thread clients([&] {
    const auto own = ob::make<ob::DispatchQueue>("clients");
    for (int i = 0; i < 50; ++i) {
      const RegistryPort mine = registry().createNotificationPort();
      registry().setDispatchQueue(mine, *own);
      const auto added = registry().addMatchingNotification(
          mine, kFirstMatchNotification, registry().classMatching(kPathClass),
          [&](RegistryHandle iterator) { drop(iterator); });
      drop(added.value);
      registry().destroyNotificationPort(mine);
      own->drain();
      registry().release(added.value);
    }
  });
  for (int i = 0; i < 20; ++i) {
    removeMap(kFourth);
    sendEvent();
    expectTold("-254:3");
    addMap(kFourth);
    sendEvent();
    expectTold("+254:3");
  }
  clients.join();
}

TEST_F(NotificationsTest, RefusesWhatCannotBeWatched) {
  const auto status = [&](RegistryPort to) {
    const auto units = registry().classMatching(kLogicalUnitClass);
    return registry().addMatchingNotification(to, kFirstMatchNotification, units, {}).status;
  };
  EXPECT_EQ(status(0), -EINVAL);
  setStatus(-EACCES);
  EXPECT_EQ(status(notificationPort), -EACCES);
}

}  // namespace
}  // namespace tavrenix::test
