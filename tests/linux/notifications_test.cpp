// Arrivals and departures, over a recorded machine whose maps change and events of the test's own.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>

#include "linux/host.hpp"
#include "model/entry.hpp"
#include "runtime/dispatch_queue.hpp"
#include "tests/linux/recorded_machine.hpp"

namespace tavrenix::test {
namespace {

using sys::Kind;

constexpr sys::DeviceNumber kFourth{254, 3};

class NotificationsTest : public testing::Test {
 protected:
  NotificationsTest() {
    loadRecordedMaps(port, copy.root.string());
    int pair[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair), 0);
    listener = pair[0];
    sender = pair[1];
    host.emplace(
        sys::HostFiles(copy.root.string()), port, daemon, 0, sys::Burst::Clock::duration::zero(),
        [this]() -> std::optional<sys::EventSource> { return sys::EventSource(listener); });
    notificationPort = registry().createNotificationPort();
    registry().setDispatchQueue(notificationPort, *queue);
  }
  ~NotificationsTest() override {
    for (const RegistryHandle iterator : iterators) registry().release(iterator);
    registry().destroyNotificationPort(notificationPort);
    queue->drain();
    EXPECT_EQ(registry().openHandles(), 0u);
    host.reset();
    ::close(sender);
  }

  sys::LinuxRegistry& registry() { return host->registry(); }
  // Registers and, like a client, takes up on the queue what is present and all that comes.
  void watch(std::string_view kind, std::string_view className, const std::string& prefix) {
    const auto deliver = [this, prefix](RegistryHandle iterator) { takeUp(iterator, prefix); };
    const auto [status, iterator] = registry().addMatchingNotification(
        notificationPort, kind, registry().classMatching(className), deliver);
    ASSERT_EQ(status, kSuccess);
    iterators.push_back(iterator);
    queue->async([deliver, iterator = iterator] { deliver(iterator); });
    queue->drain();
  }
  void takeUp(RegistryHandle iterator, const std::string& prefix) {
    std::vector<std::string> taken;
    while (const RegistryHandle entry = registry().iteratorNext(iterator)) {
      const ScopedHandle held(registry(), entry);
      const auto device = sys::nameOf(registry().getEntryID(entry).value).device();
      taken.push_back(prefix + device.text());
      generations.push_back(generation());
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
    constexpr std::string_view kEvent("change@/x\0SUBSYSTEM=block\0", 26);
    EXPECT_EQ(::send(sender, kEvent.data(), kEvent.size(), 0), static_cast<ssize_t>(kEvent.size()));
  }
  std::uint32_t generation() {
    const SCSIMPIOStatisticsRequest request{.requestType = kConfigurationGeneration};
    std::uint32_t number = 0;
    std::size_t length = sizeof number;
    host->tunable().sysctlbyname(kStatisticsTunable, &number, &length, &request, sizeof request);
    return number;
  }

  const CopiedMachine copy{"states"};
  FakeDeviceMapper port;
  FakeDaemon daemon;
  int listener = -1;
  int sender = -1;
  std::optional<sys::LinuxHost> host;
  RegistryPort notificationPort = 0;
  ob::Ref<ob::DispatchQueue> queue = ob::make<ob::DispatchQueue>("test");
  std::vector<RegistryHandle> iterators;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::string> told;
  std::vector<std::uint32_t> generations;
};

TEST_F(NotificationsTest, WhatIsPresentWaitsForTheFirstLook) {
  watch(registry::kFirstMatchNotification, registry::kLogicalUnitClass, "+");
  expectTold({"+254:0", "+254:1", "+254:2", "+254:3"});
  watch(registry::kTerminateNotification, registry::kLogicalUnitClass, "-");
  expectTold({});
  watch(registry::kFirstMatchNotification, registry::kPathClass, "+");
  expectTold({"+8:0", "+8:16", "+8:32", "+8:48", "+8:64", "+8:80", "+8:96", "+8:112"});
}

TEST_F(NotificationsTest, EachArrivalAndDepartureIsToldOnce) {
  watch(registry::kFirstMatchNotification, registry::kLogicalUnitClass, "+");
  watch(registry::kTerminateNotification, registry::kLogicalUnitClass, "-");
  watch(registry::kTerminateNotification, registry::kPathClass, "-");
  expectTold({"+254:0", "+254:1", "+254:2", "+254:3"});
  const auto fourth = port.maps.at(kFourth);
  port.maps.erase(kFourth);
  sendEvent();
  sendEvent();
  expectTold({"-254:3", "-8:48", "-8:112"});
  port.maps[kFourth] = fourth;
  sendEvent();
  expectTold({"+254:3"});
  sendEvent();  // nothing more
  port.maps.erase({254, 0});
  sendEvent();
  expectTold({"-254:0", "-8:0", "-8:64"});
}

TEST_F(NotificationsTest, TheGenerationStandsStillUntilDeparturesAreTakenUp) {
  watch(registry::kTerminateNotification, registry::kLogicalUnitClass, "-");
  watch(registry::kTerminateNotification, registry::kPathClass, "-");
  watch(registry::kFirstMatchNotification, registry::kLogicalUnitClass, "+");
  expectTold({"+254:0", "+254:1", "+254:2", "+254:3"});
  generations.clear();
  const std::uint32_t before = generation();
  port.maps.erase(kFourth);
  EXPECT_EQ(generation(), before);  // a scan before the event changes nothing, and hears of it
  expectTold({"-254:3", "-8:48", "-8:112"});
  EXPECT_THAT(generations, testing::Each(before));
  queue->drain();
  EXPECT_NE(generation(), before);
}

TEST_F(NotificationsTest, ADestroyedPortHoldsNothingUp) {
  watch(registry::kTerminateNotification, registry::kLogicalUnitClass, "-");
  const RegistryPort idle = registry().createNotificationPort();  // bound to nothing
  const auto [status, iterator] = registry().addMatchingNotification(
      idle, registry::kTerminateNotification, registry().classMatching(registry::kLogicalUnitClass),
      [](RegistryHandle) {});
  ASSERT_EQ(status, kSuccess);
  iterators.push_back(iterator);
  EXPECT_EQ(registry().iteratorNext(iterator), 0u);  // armed
  const std::uint32_t before = generation();
  port.maps.erase(kFourth);
  EXPECT_EQ(generation(), before);
  expectTold({"-254:3"});
  queue->drain();
  EXPECT_EQ(generation(), before);
  registry().destroyNotificationPort(idle);
  EXPECT_NE(generation(), before);
}

TEST_F(NotificationsTest, RefusesWhatIsNoRegistration) {
  const auto add = [&](RegistryPort to, std::string_view kind,
                       ob::Ref<const ob::Dictionary> matching) {
    return registry().addMatchingNotification(to, kind, std::move(matching), [](RegistryHandle) {});
  };
  const auto units = registry().classMatching(registry::kLogicalUnitClass);
  EXPECT_NE(add(0, registry::kFirstMatchNotification, units).status, kSuccess);
  EXPECT_NE(add(notificationPort, "KsOther", units).status, kSuccess);
  EXPECT_NE(add(notificationPort, registry::kFirstMatchNotification, nullptr).status, kSuccess);
  port.listStatus = -EACCES;
  EXPECT_EQ(add(notificationPort, registry::kFirstMatchNotification, units).status, -EACCES);
}

}  // namespace
}  // namespace tavrenix::test
