// Units and paths come and go while a client of each form listens and a third thread queries. For
// the thread sanitizer, and for what must hold of every event: none is lost, none comes twice, and
// an entry comes before it goes.
#include <gtest/gtest.h>

#include <future>
#include <map>
#include <mutex>
#include <thread>

#include "library/notification.hpp"
#include "tests/library/notification_clients.hpp"

namespace tavrenix::test {
namespace {

constexpr std::size_t kRounds = 100;
constexpr Shape kShape{.units = 10, .paths = 4, .volumes = 0};
constexpr std::size_t kEntries = kShape.units * (1 + kShape.paths);

// Calls of the public functions, and what moves the generation, are made one after the other.
std::mutex serial;

void query() {
  const std::lock_guard lock(serial);
  const Handles handles;
  for (std::size_t i = 0; i < ObArrayGetCount(handles.units.get()); ++i) {
    const Owned<ObDictionaryRef> ofUnit(MPIOLogicalUnitCopyProperties(handles.unit(i)));
    const auto paths = handles.paths(i);
    const Owned<ObDictionaryRef> ofPath(
        MPIOLogicalUnitPathCopyProperties(at<MPIOLogicalUnitPathRef>(paths, 0)));
  }
}

void waitUntilSettled(const memory::MemoryRegistry& registry) {
  while (!registry.notificationsAreSettled()) std::this_thread::yield();
}

void comeAndGo(memory::MemoryHost& storage) {
  {
    const std::lock_guard lock(serial);
    addUnits(storage, kShape);
  }
  waitUntilSettled(storage.registry());
  for (std::uint64_t unit = 0; unit < kShape.units; ++unit) {
    removeUnit(storage, unit, kShape.paths);
  }
  waitUntilSettled(storage.registry());
  const std::lock_guard lock(serial);
  touch(storage);
}

void expectAll(const std::vector<Event>& events) {
  const std::map<ObStringRef, ObStringRef> departureOf = {
      {kMPIOLogicalUnitAppearedNotification, kMPIOLogicalUnitDisappearedNotification},
      {kMPIOLogicalUnitPathAppearedNotification, kMPIOLogicalUnitPathDisappearedNotification}};
  std::map<EntryID, std::vector<Event>> byEntry;
  for (const Event& event : events) byEntry[event.id].push_back(event);
  ASSERT_EQ(byEntry.size(), kEntries);
  for (const auto& [id, ofEntry] : byEntry) {
    ASSERT_EQ(ofEntry.size(), kRounds * 2) << id;
    for (std::size_t i = 0; i < ofEntry.size(); i += 2) {
      ASSERT_EQ(departureOf.at(ofEntry[i].kind), ofEntry[i + 1].kind) << id;
      ASSERT_EQ(ofEntry[i].handle, ofEntry[i + 1].handle) << id;
    }
  }
}

TEST(NotificationStress, TenThousandEventsReachEachOfTwoClients) {
  LibraryHost host;
  memory::MemoryHost& storage = host->memory;
  std::vector<Owned<ObTypeRef>> kept;  // some of the handles told of
  QueueClient onQueue;
  onQueue.onEvent = [&](const Event& event) {
    if (onQueue.events.size() % 97 == 0) kept.emplace_back(ObRetain(event.handle));
  };
  ASSERT_TRUE(onQueue.start());
  const auto record = onQueue.notification->anchor.cell();

  std::promise<ObRunLoopRef> loop;
  std::vector<Event> onLoopEvents;
  std::thread loopThread([&] {
    RunLoopClient onLoop;
    EXPECT_TRUE(onLoop.start());
    loop.set_value(ObRunLoopGetCurrent());
    ObRunLoopRun();
    onLoopEvents.swap(onLoop.events);
  });
  const Owned<ObRunLoopRef> running(loop.get_future().get());
  ObRetain(running.get());
  std::atomic<bool> done{false};
  std::thread asking([&] {
    while (!done) query();
  });

  for (std::size_t round = 0; round < kRounds; ++round) comeAndGo(storage);

  done = true;
  asking.join();
  ObRunLoopStop(running.get());
  loopThread.join();
  onQueue.stop();
  onQueue.settle();
  expectAll(onQueue.events);
  expectAll(onLoopEvents);
  EXPECT_FALSE(record->load()) << "the record is not freed";
  EXPECT_EQ(storage.registry().openHandles(), 0u);
  EXPECT_EQ(ObArrayGetCount(Handles().units.get()), 0u);
  ASSERT_FALSE(kept.empty());
  for (const auto& handle : kept) {
    EXPECT_EQ(ob::fromC<ob::Object>(handle.get())->retainCount(), 1u);
  }
}

}  // namespace
}  // namespace tavrenix::test
