// Notification ports of the in-memory registry: what waits in an iterator, and when it is told of.
#include <gmock/gmock.h>

#include "model/entry.hpp"
#include "model/memory/registry.hpp"
#include "model/registry_names.hpp"

namespace tavrenix::memory {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MemoryNotifications : public testing::Test {
 protected:
  MemoryNotifications() {
    add(1);
    registry.setDispatchQueue(port, *queue);
  }
  ~MemoryNotifications() override {
    registry.destroyNotificationPort(port);
    for (const RegistryHandle iterator : iterators) registry.release(iterator);
    EXPECT_EQ(registry.openHandles(), 0u);
  }
  bool add(EntryID id, const std::string& className = "A") {
    return registry.addEntry(id, className, {}, ob::DictionaryBuilder(0).build());
  }
  RegistryHandle subscribe(std::string_view kind) {
    const auto made = registry.addMatchingNotification(port, kind, registry.classMatching("A"),
                                                       [this](RegistryHandle) { ++calls; });
    EXPECT_EQ(made.status, kSuccess);
    iterators.push_back(made.value);
    return made.value;
  }
  std::vector<EntryID> take(RegistryHandle iterator, std::size_t atMost) {
    std::vector<EntryID> found;
    while (found.size() < atMost) {
      const ScopedHandle entry(registry, registry.iteratorNext(iterator));
      if (!entry) break;
      found.push_back(registry.getEntryID(entry.get()).value);
    }
    return found;
  }
  // Reads the iterator to its end, which arms it.
  std::vector<EntryID> drain(RegistryHandle iterator) { return take(iterator, 100); }
  int callsByNow() {
    queue->drain();
    return calls;
  }

  ob::Ref<ob::DispatchQueue> queue = ob::make<ob::DispatchQueue>("test");
  int calls = 0;  // on the queue; read when it has drained
  MemoryRegistry registry;
  RegistryPort port = registry.createNotificationPort();
  std::vector<RegistryHandle> iterators;
};

TEST_F(MemoryNotifications, AnIteratorThatIsNotReadToItsEndIsToldOfNoMore) {
  const auto arrivals = subscribe(registry::kFirstMatchNotification);
  const auto departures = subscribe(registry::kTerminateNotification);
  add(2);
  registry.removeEntry(1);
  EXPECT_EQ(callsByNow(), 0);
  EXPECT_THAT(drain(departures), ElementsAre(1));
  EXPECT_THAT(take(arrivals, 2), ElementsAre(1, 2));
  EXPECT_FALSE(registry.notificationsAreSettled()) << "the last one is being worked on";
  EXPECT_THAT(drain(arrivals), IsEmpty());
  EXPECT_TRUE(registry.notificationsAreSettled());

  add(3);
  add(4);
  EXPECT_EQ(callsByNow(), 1) << "once for both";
  EXPECT_THAT(drain(arrivals), ElementsAre(3, 4));
  registry.removeEntry(4);
  EXPECT_EQ(callsByNow(), 2);
  EXPECT_THAT(drain(departures), ElementsAre(4));
}

TEST_F(MemoryNotifications, TellOfTheClassAndOfWhatDerivesFromIt) {
  registry.defineClass("B", "A");
  const auto arrivals = subscribe(registry::kFirstMatchNotification);
  add(2, "B");
  add(3, "C");
  EXPECT_FALSE(add(2, "B")) << "refused, and no event";
  EXPECT_FALSE(registry.removeEntry(99));
  EXPECT_THAT(drain(arrivals), ElementsAre(1, 2));
  EXPECT_TRUE(registry.replaceParents(2, {1}));
  EXPECT_EQ(callsByNow(), 0) << "an entry that moves is none that comes";
}

TEST_F(MemoryNotifications, HeldBackTheyComeInOrderAtTheEndAndNotTwice) {
  const auto before = subscribe(registry::kFirstMatchNotification);
  drain(before);
  RegistryHandle within = 0;
  {
    const MemoryRegistry::HeldNotifications held(registry);
    add(2);
    within = subscribe(registry::kFirstMatchNotification);
    {
      const MemoryRegistry::HeldNotifications inner(registry);
      add(3);
    }
    EXPECT_FALSE(registry.notificationsAreSettled());
    EXPECT_THAT(drain(before), IsEmpty());
    EXPECT_THAT(drain(within), ElementsAre(1, 2)) << "present when it was made";
  }
  EXPECT_EQ(callsByNow(), 2);
  EXPECT_THAT(drain(before), ElementsAre(2, 3));
  EXPECT_THAT(drain(within), ElementsAre(3));
}

TEST_F(MemoryNotifications, AReleasedIteratorIsToldOfNothingAndTheOthersAre) {
  const auto arrivals = subscribe(registry::kFirstMatchNotification);
  drain(arrivals);
  drain(subscribe(registry::kFirstMatchNotification));
  registry.release(iterators.back());
  iterators.pop_back();
  add(2);
  EXPECT_EQ(callsByNow(), 1);
  EXPECT_THAT(drain(arrivals), ElementsAre(2));
}

TEST_F(MemoryNotifications, RefuseWhatIsNoKindNoMatchingAndNoPort) {
  const auto attempt = [&](RegistryPort at, std::string_view kind,
                           ob::Ref<const ob::Dictionary> matching) {
    return registry.addMatchingNotification(at, kind, std::move(matching), {}).status;
  };
  const auto matching = registry.classMatching("A");
  EXPECT_NE(attempt(port, "KsServiceSomething", matching), kSuccess);
  EXPECT_NE(attempt(port, registry::kFirstMatchNotification, nullptr), kSuccess);
  EXPECT_NE(attempt(0, registry::kFirstMatchNotification, matching), kSuccess);
  registry.destroyNotificationPort(0);
  EXPECT_FALSE(registry.getRunLoopSource(0));
  EXPECT_EQ(registry.openHandles(), 1u);
}

}  // namespace
}  // namespace tavrenix::memory
