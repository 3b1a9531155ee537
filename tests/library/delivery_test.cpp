// Which calls a client of notifications gets, in which order, and when they end.
#include <gmock/gmock.h>

#include <thread>

#include "tests/library/client.hpp"

namespace tavrenix::test {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Delivered = std::pair<ObStringRef, EntryID>;

const Delivered kUnitCame(kMPIOLogicalUnitAppearedNotification, unitID(0));
const Delivered kUnitWent(kMPIOLogicalUnitDisappearedNotification, unitID(0));
Delivered pathCame(std::uint64_t path) {
  return {kMPIOLogicalUnitPathAppearedNotification, pathID(0, path)};
}
Delivered pathWent(std::uint64_t path) {
  return {kMPIOLogicalUnitPathDisappearedNotification, pathID(0, path)};
}

TEST(Notifications, BeginWithThePresentDevicesAndHearEachChangeUntilTheEnd) {
  LibraryHost host;
  memory::MemoryHost& storage = host->memory;
  addStorage(storage, {.units = 2, .paths = 2});
  setProperty(storage, unitID(1), "Peripheral Device Type", number(12));  // no storage, so no unit
  touch(storage);
  RunLoopClient client;
  ASSERT_TRUE(client.start());
  EXPECT_THAT(client.take(), ElementsAre(kUnitCame, pathCame(0), pathCame(1)));
  const auto paths = Handles().paths();
  client.onEvent = [&](const Event& event) {
    EXPECT_EQ(event.handle, ObArrayGetValueAtIndex(paths.get(), 1)) << "as the client knows it";
  };
  {
    const memory::MemoryRegistry::HeldNotifications held(storage.registry());
    storage.registry().removeEntry(pathID(0, 1));
    touch(storage);
  }
  EXPECT_THAT(client.take(), ElementsAre(pathWent(1)));
  EXPECT_FALSE(knownPath(pathID(0, 1))) << "dropped by the rescan that follows";
  client.onEvent = nullptr;
  removeUnit(storage, 0, 1);
  EXPECT_THAT(client.take(), UnorderedElementsAre(pathWent(0), kUnitWent));
  addUnits(storage, {.units = 1, .paths = 2});
  EXPECT_THAT(client.take(), UnorderedElementsAre(kUnitCame, pathCame(0), pathCame(1)));
  client.stop();
  EXPECT_EQ(storage.registry().openHandles(), 0u);
  removeUnit(storage, 0, 2);
  EXPECT_TRUE(client.take().empty());
}

TEST(Notifications, ACallMayUseTheLibraryAndEndItsOwnRegistration) {
  LibraryHost host;
  addStorage(host->memory, {.units = 2, .paths = 2});
  QueueClient client;
  client.onEvent = [&](const Event&) {
    const Handles handles;
    touch(host->memory);
    EXPECT_EQ(ObArrayGetCount(handles.paths().get()), 2u);
    EXPECT_TRUE(MPIOLogicalUnitSetBatchCount(handles.unit(), 3, nullptr));
  };
  client.error = ob::toC<ObErrorRef>(ob::String::make("stale").get());
  ASSERT_TRUE(client.start());
  EXPECT_EQ(client.error, nullptr);
  EXPECT_EQ(client.take().size(), 6u);
  const MPIONotificationRef destroyed = client.notification;
  client.onEvent = [&](const Event&) {
    client.stop();
    MPIONotificationDestroy(destroyed);  // does nothing: the registration has ended
  };
  removeUnit(host->memory, 0, 2);
  EXPECT_EQ(client.take().size(), 1u);
  MPIONotificationDestroy(reinterpret_cast<MPIONotificationRef>(&client));
  EXPECT_EQ(host->memory.registry().openHandles(), 0u);
}

// Creates a registration while each of its operations on the registry fails, one after the other.
TEST(Notifications, AFailedCreationNamesTheFailedStepAndKeepsEarlierRegistrations) {
  std::vector<std::string> errors{"Unable to create notification port (error 0x08000007)"};
  for (const std::string devices : {"logical units", "logical unit paths"}) {
    errors.push_back("KsServiceMatching unable to locate any services matching multipathed " +
                     devices + " (error 0x08000002)");
    errors.insert(errors.end(), 2,
                  "KsServiceAddMatchingNotification for " + devices +
                      " failed (error 0x08000006, result -536870212)");
  }
  constexpr std::size_t handlesLeft[] = {0, 1, 1, 2, 3, 3, 4};  // the port and the iterators
  LibraryHost host;
  for (std::size_t step = 0; step < errors.size(); ++step) {
    const ob::Pool pool;
    const std::size_t handles = host->memory.registry().openHandles();
    QueueClient client;
    client.alone([&] {
      host->watch.reset();
      host->watch.failAt(step);
      EXPECT_FALSE(client.start());
    });
    const Owned<ObStringRef> description(ObErrorCopyDescription(client.error));
    EXPECT_EQ(utf8(description.get()), errors[step]);
    EXPECT_EQ(ob::fromC<ob::Object>(client.error)->retainCount(), 1u) << "the pool's alone";
    EXPECT_EQ(host->memory.registry().openHandles() - handles, handlesLeft[step]);
  }
}

TEST(Notifications, OfARunLoopSourceAreRegisteredOnceAndEndWithAnyRemoval) {
  LibraryHost host;
  addStorage(host->memory, {.units = 1, .paths = 1});
  const Owned<ObStringRef> mode(ObStringCreateWithUTF8("Other"));
  RunLoopClient client;
  ASSERT_TRUE(client.start());
  EXPECT_EQ(std::exchange(client.events, {}).size(), 2u) << "delivered within the add";
  ASSERT_TRUE(ObRunLoopAddSource(ObRunLoopGetCurrent(), client.source.get(), mode.get()));
  std::thread([&] { client.start(); }).join();  // the thread's end removes it from that loop
  EXPECT_TRUE(client.take().empty());
  EXPECT_EQ(host->memory.registry().openHandles(), 0u);
  client.stop();
  ObRunLoopRemoveSource(ObRunLoopGetCurrent(), client.source.get(), mode.get());
  EXPECT_EQ(ObRunLoopRunInMode(kObRunLoopDefaultMode, 0), kObRunLoopFinished)
      << "the source of the port has left the loop as well";
  client.onEvent = [&](const Event&) {
    if (client.events.size() > 1) return;
    client.stop();
    client.start();
  };
  ASSERT_TRUE(client.start());
  EXPECT_EQ(client.take().size(), 1u + 2u) << "the ended registration delivers no more";
}

}  // namespace
}  // namespace tavrenix::test
