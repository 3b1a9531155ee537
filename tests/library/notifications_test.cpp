// What a client is told of, in which order, and when no longer: both delivery forms.
#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "library/notification.hpp"
#include "model/registry_names.hpp"
#include "tests/library/failing_new.hpp"
#include "tests/library/notification_clients.hpp"
#include "tests/library/scenario.hpp"

namespace tavrenix::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

const ObStringRef kUnitCame = kMPIOLogicalUnitAppearedNotification;
const ObStringRef kUnitWent = kMPIOLogicalUnitDisappearedNotification;
const ObStringRef kPathCame = kMPIOLogicalUnitPathAppearedNotification;
const ObStringRef kPathWent = kMPIOLogicalUnitPathDisappearedNotification;

enum class Form { kQueue, kRunLoop };

class Notifications : public testing::TestWithParam<Form> {
 protected:
  ~Notifications() override {
    client.reset();
    EXPECT_EQ(storage.registry().openHandles(), 0u);
  }
  static std::unique_ptr<NotificationClient> make() {
    if (GetParam() == Form::kQueue) return std::make_unique<QueueClient>();
    return std::make_unique<RunLoopClient>();
  }
  std::vector<Told> told() {
    client->settle();
    return client->take();
  }

  LibraryHost host;
  memory::MemoryHost& storage = host->memory;
  std::unique_ptr<NotificationClient> client = make();
};
INSTANTIATE_TEST_SUITE_P(Forms, Notifications, testing::Values(Form::kQueue, Form::kRunLoop),
                         [](const auto& form) {
                           return form.param == Form::kQueue ? "Queue" : "RunLoop";
                         });

TEST_P(Notifications, BeginWithTheStorageThatIsPresentUnitsFirst) {
  addStorage(storage, {.units = 3, .paths = 2, .volumes = 1});
  setProperty(storage, unitID(2), "Peripheral Device Type", number(12));
  touch(storage);
  ASSERT_TRUE(client->start());
  EXPECT_THAT(told(), ElementsAre(Pair(kUnitCame, unitID(0)), Pair(kUnitCame, unitID(1)),
                                  Pair(kPathCame, pathID(0, 0)), Pair(kPathCame, pathID(0, 1)),
                                  Pair(kPathCame, pathID(1, 0)), Pair(kPathCame, pathID(1, 1))));
  EXPECT_TRUE(storage.registry().notificationsAreSettled());
}

TEST_P(Notifications, TellOfEachArrivalAndDepartureOnceUntilTheEnd) {
  ASSERT_TRUE(client->start());
  EXPECT_THAT(told(), IsEmpty());
  for (int round = 0; round < 2; ++round) {
    addUnits(storage, {.units = 1, .paths = 2});
    EXPECT_THAT(told(),
                UnorderedElementsAre(Pair(kUnitCame, unitID(0)), Pair(kPathCame, pathID(0, 0)),
                                     Pair(kPathCame, pathID(0, 1))));
    removePath(storage, 0, 1);
    EXPECT_THAT(told(), ElementsAre(Pair(kPathWent, pathID(0, 1))));
    removeUnit(storage, 0, 1);
    EXPECT_THAT(told(),
                UnorderedElementsAre(Pair(kPathWent, pathID(0, 0)), Pair(kUnitWent, unitID(0))));
    touch(storage);
  }
  client->stop();
  EXPECT_EQ(storage.registry().openHandles(), 0u);
  addUnits(storage, {.units = 1, .paths = 1});
  EXPECT_THAT(told(), IsEmpty());
}

TEST_P(Notifications, TellOfAVanishedPathByTheHandleThatTheClientKnowsAndThenDropIt) {
  addStorage(storage, {.units = 1, .paths = 2});
  ASSERT_TRUE(client->start());
  told();
  const auto paths = Handles().paths();
  bool stillKnown = false;
  client->onEvent = [&](const Event& event) {
    stillKnown =
        event.handle == ObArrayGetValueAtIndex(paths.get(), 0) && knownPath(event.id) != nullptr;
  };
  {
    const memory::MemoryRegistry::HeldNotifications held(storage.registry());
    removePath(storage, 0, 0);
    touch(storage);
  }
  EXPECT_EQ(told().size(), 1u);
  EXPECT_TRUE(stillKnown);
  EXPECT_EQ(knownPath(pathID(0, 0)), nullptr);
}

TEST_P(Notifications, LookAnObjectWithoutAnIDUpUnderTheOneBeforeIt) {
  addStorage(storage, {.units = 3, .paths = 0});
  client->onEvent = [&](const Event&) { host->watch.failAll(Operation::kGetEntryID); };
  ASSERT_TRUE(client->start());
  EXPECT_THAT(told(), ElementsAre(Pair(kUnitCame, unitID(0)), Pair(kUnitCame, unitID(0)),
                                  Pair(kUnitCame, unitID(0))));
  // Each handler begins with ID 0, under which nothing is known.
  storage.registry().removeEntry(unitID(1));
  EXPECT_THAT(told(), IsEmpty());
}

TEST_P(Notifications, ACallMayUseEveryFunction) {
  addStorage(storage, {.units = 2, .paths = 1});
  client->onEvent = [&](const Event&) { EXPECT_TRUE(useEverything(*host)); };
  ASSERT_TRUE(client->start());
  EXPECT_EQ(told().size(), 4u);
}

TEST_P(Notifications, ACallMayEndItsOwnRegistrationWhileOthersWait) {
  addStorage(storage, {.units = 2, .paths = 2});
  const auto other = make();
  ASSERT_TRUE(client->start());
  ASSERT_TRUE(other->start());
  EXPECT_EQ(told().size(), 6u);
  client->onEvent = [&](const Event&) { client->stop(); };
  removeUnit(storage, 0, 2);
  EXPECT_EQ(told().size(), 1u);
  other->settle();
  EXPECT_EQ(other->take().size(), 6u + 3u) << "the other client has its own";
  other->stop();
}

class OnAQueue : public testing::Test {
 protected:
  LibraryHost host;
  memory::MemoryHost& storage = host->memory;
};
using OnARunLoop = OnAQueue;

TEST_F(OnAQueue, DestroyDoesNotWaitForACallAndLetsNoOtherBegin) {
  addStorage(storage, {.units = 4, .paths = 4});
  const std::uint32_t ports = gMPIOActiveNotificationPorts;
  QueueClient client;
  std::promise<void> inCall;
  std::promise<void> mayReturn;
  client.onEvent = [&](const Event&) {
    if (client.events.size() > 1) return;
    inCall.set_value();
    mayReturn.get_future().wait();
  };
  ASSERT_TRUE(client.start());
  inCall.get_future().wait();
  client.stop();
  mayReturn.set_value();
  client.settle();
  EXPECT_EQ(client.events.size(), 1u);
  EXPECT_EQ(storage.registry().openHandles(), 0u);
  EXPECT_EQ(gMPIOActiveNotificationPorts, ports + 1) << "never lowered";
}

TEST_F(OnAQueue, DestroyRefusesWhatIsNoSuchRegistration) {
  MPIONotificationDestroy(nullptr);
  alignas(MPIONotification) std::array<std::uint32_t, sizeof(MPIONotification) / 4> other{};
  MPIONotificationDestroy(reinterpret_cast<MPIONotificationRef>(other.data()));
  auto* ofRunLoop = new MPIONotification(MPIONotification::kRunLoop, 1);
  ofRunLoop->port = storage.registry().createNotificationPort();
  MPIONotificationDestroy(ofRunLoop);
  EXPECT_EQ(ofRunLoop->references, 1u);
  EXPECT_EQ(storage.registry().openHandles(), 1u);
  endNotifications(*ofRunLoop);
  ofRunLoop->release();
}

TEST(Notifications, MayHaveNobodyToCall) {
  LibraryHost host;
  addStorage(host->memory, {.units = 1, .paths = 1});
  const Owned<ObDispatchQueueRef> queue(ObDispatchQueueCreate(nullptr));
  const auto notification = MPIONotificationCreateWithDispatchQueue(nullptr, queue.get(), nullptr);
  EXPECT_NE(notification, nullptr);
  EXPECT_TRUE(ObDispatchQueueDrain(queue.get()));
  MPIONotificationDestroy(notification);

  const Owned<ObRunLoopSourceRef> source(MPIONotificationCreateRunLoopSource(nullptr, nullptr));
  EXPECT_TRUE(ObRunLoopAddSource(ObRunLoopGetCurrent(), source.get(), kObRunLoopDefaultMode));
  ObRunLoopSourceInvalidate(source.get());
  EXPECT_EQ(host->memory.registry().openHandles(), 0u);
}

// The first sessions leave what is made once and kept.
TEST_F(OnARunLoop, ASessionLeavesNoMemoryBehind) {
  addStorage(storage, {.units = 1, .paths = 2});
  std::size_t before = 0;
  for (int session = 0; session < 3; ++session) {
    {
      RunLoopClient client;
      ASSERT_TRUE(client.start());
      removePath(storage, 0, 1);
      client.settle();
      storage.registry().addEntry(pathID(0, 1), std::string(registry::kPathClass), {},
                                  dictionary({}));
      client.settle();
      EXPECT_EQ(client.take().size(), 5u);
      client.stop();
    }
    if (session == 1) before = liveAllocations();
  }
  EXPECT_EQ(liveAllocations(), before);
}

TEST_F(OnARunLoop, ASecondLoopOrModeRegistersNothingMoreAndAnyRemovalEndsIt) {
  addStorage(storage, {.units = 1, .paths = 1});
  const std::uint32_t before = gMPIOActiveNotificationPorts;
  const Owned<ObStringRef> mode(ObStringCreateWithUTF8("Other"));
  RunLoopClient client;
  ASSERT_TRUE(client.start());
  EXPECT_EQ(client.take().size(), 2u) << "told within the add";
  const std::size_t handles = storage.registry().openHandles();
  ObRunLoopRef loop = ObRunLoopGetCurrent();
  ASSERT_TRUE(ObRunLoopAddSource(loop, client.source.get(), mode.get()));
  std::thread([&] { client.start(); }).join();  // the end of that thread takes it out of its loop
  EXPECT_THAT(client.take(), IsEmpty());
  EXPECT_EQ(storage.registry().openHandles(), 0u);
  EXPECT_EQ(gMPIOActiveNotificationPorts, before);

  client.stop();
  EXPECT_EQ(ObRunLoopRunInMode(kObRunLoopDefaultMode, 0), kObRunLoopFinished)
      << "the port's own source has left the loop with the client's";
  ASSERT_TRUE(client.start());
  EXPECT_EQ(client.take().size(), 2u) << "scheduled again";
  EXPECT_EQ(storage.registry().openHandles(), handles);
  EXPECT_EQ(gMPIOActiveNotificationPorts, before + 1);
  EXPECT_EQ(ObRunLoopRunInMode(kObRunLoopDefaultMode, 0), kObRunLoopTimedOut);
  EXPECT_TRUE(ObRunLoopRemoveSource(loop, client.source.get(), mode.get()));
  EXPECT_EQ(storage.registry().openHandles(), 0u) << "the removal from the other mode";
  EXPECT_EQ(gMPIOActiveNotificationPorts, before);
}

TEST_F(OnARunLoop, ACallMayTakeTheSourceOutAndAddItAgain) {
  addStorage(storage, {.units = 3, .paths = 1});
  RunLoopClient client;
  bool again = false;
  client.onEvent = [&](const Event&) {
    if (std::exchange(again, true)) return;
    client.stop();
    client.start();
  };
  ASSERT_TRUE(client.start());
  // The first call, and within it all six anew; the registration that it ended tells no more.
  EXPECT_EQ(client.take().size(), 1u + 6u);
  removePath(storage, 1, 0);
  client.settle();
  EXPECT_THAT(client.take(), ElementsAre(Pair(kPathWent, pathID(1, 0))));
}

TEST_F(OnARunLoop, TheSourceMayBeRetainedAndReleasedOnAnyThread) {
  auto client = std::make_unique<RunLoopClient>();
  ASSERT_TRUE(client->start());
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([source = client->source.get()] {
      for (int round = 0; round < 1000; ++round) ObRelease(ObRetain(source));
    });
  }
  for (auto& thread : threads) thread.join();
  auto* source = client->source.get();
  ObRetain(source);
  client.reset();  // invalidates it
  EXPECT_EQ(storage.registry().openHandles(), 0u);
  EXPECT_FALSE(ObRunLoopAddSource(ObRunLoopGetCurrent(), source, kObRunLoopDefaultMode));
  std::thread([source] { ObRelease(source); }).join();
}

}  // namespace
}  // namespace tavrenix::test
