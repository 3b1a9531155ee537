// The steps of a round, on a backing that notes what is asked of it, and the deliveries of a port.
#include "host/announcements.hpp"

#include <gtest/gtest.h>
#include <tavrenix/ob.h>

#include "host/registry_names.hpp"
#include "runtime/c/c_bridge.hpp"

namespace tavrenix::test {
namespace {

constexpr std::chrono::hours kForever(1);

class NotingBacking final : public Backing {
 public:
  bool has(EntryID) override { return true; }
  Result<Entries> entriesOfClass(std::string_view) override { return {}; }
  Result<Entries> relatives(EntryID, std::uint32_t) override { return {}; }
  std::string_view classOf(EntryID) override { return {}; }
  bool isKindOf(std::string_view name, std::string_view base) override { return name == base; }
  ob::Ref<const ob::Dictionary> properties(EntryID) override { return nullptr; }
  ob::Ref<const ob::Object> property(EntryID, const ob::String&) override { return nullptr; }
  KernelStatus carryOut(EntryID, const ob::String&, const ob::Object&) override { return 0; }
  bool startListening(Announcements&) override { return true; }
  void stopListening() override {}
  Result<std::vector<Entry>> present() override {
    steps += "look ";
    return {status, entries};
  }
  void holdGeneration() override { steps += "hold "; }
  bool publish() override {
    steps += refusals == 0 ? "publish " : "refused ";
    return refusals == 0 || refusals-- == 0;
  }

  std::vector<Entry> entries;
  KernelStatus status = kSuccess;
  int refusals = 0;
  std::string steps;
};

class Round : public testing::Test {
 protected:
  Round() {
    backing.entries = {{1, registry::kPathClass}, {3, registry::kPathClass}, {2, kUnit}};
    for (const auto& one : all) {
      one->port->setDispatchQueue(*queue);
      one->deliver = [this, &one = *one](RegistryHandle) {
        if (reads) read(one);
      };
    }
  }
  static std::shared_ptr<Registration> registered(bool ofArrivals, std::string_view className) {
    return std::make_shared<Registration>(
        Registration{ofArrivals, std::string(className), ob::make<NotificationPort>(), {}});
  }
  void read(Registration& one) {
    while (const auto entry = announcements.next(one)) {
      backing.steps += (one.ofArrivals ? "+" : "-") + std::to_string(entry->id) + ' ';
    }
  }
  void addAll() {
    for (const auto& one : all) {
      EXPECT_EQ(announcements.add(one), kSuccess);
      read(*one);
    }
    backing.steps.clear();
  }
  // Makes a round, and returns its steps.
  std::string steps(std::chrono::milliseconds timeout = kForever, bool isDone = true) {
    EXPECT_EQ(announcements.announce(timeout), isDone);
    queue->drain();
    return std::exchange(backing.steps, "");
  }

  static constexpr std::string_view kUnit = registry::kLogicalUnitClass;
  NotingBacking backing;
  Announcements announcements{backing};
  ob::Ref<ob::DispatchQueue> queue = ob::make<ob::DispatchQueue>("rounds");
  const std::shared_ptr<Registration> arrivals = registered(true, kUnit),
                                      units = registered(false, kUnit),
                                      paths = registered(false, registry::kPathClass),
                                      all[3] = {arrivals, units, paths};
  std::atomic<bool> reads = true;
};

TEST_F(Round, DeliversPathsThenUnitsThenPublishesThenDeliversArrivals) {
  backing.refusals = 1;
  addAll();
  backing.entries = {{3, kUnit}, {4, kUnit}};  // the one with another class is another entry
  EXPECT_EQ(steps(), "look hold -3 -1 -2 publish look publish +3 +4 ");
  backing.refusals = 1;
  EXPECT_EQ(steps(), "look refused look publish ");
  backing.status = -5;
  EXPECT_EQ(steps(kForever, false), "look ");
}

TEST_F(Round, WaitsNoLongerThanItsTimeoutAndNotForClientsThatAreGone) {
  constexpr std::chrono::milliseconds kNoTime(0);
  reads = false;
  for (const auto& one : all) EXPECT_EQ(announcements.add(one), kSuccess);
  backing.steps.clear();
  backing.entries.erase(backing.entries.begin());
  EXPECT_EQ(steps(kNoTime), "look look publish ") << "an arrival that is not read needs a scan";
  for (const auto& one : all) read(*one);
  EXPECT_EQ(std::exchange(backing.steps, ""), "+2 -1 ");
  backing.entries = {{3, registry::kPathClass}, {4, kUnit}};
  EXPECT_EQ(steps(kNoTime), "look hold look publish ");
  EXPECT_FALSE(announcements.areDelivered());
  announcements.remove(*units);
  read(*arrivals);
  EXPECT_EQ(std::exchange(backing.steps, ""), "+4 ");
  EXPECT_TRUE(announcements.areDelivered());
  paths->port->destroy();
  backing.entries = {};
  EXPECT_EQ(steps(), "look hold look publish ");
}

TEST_F(Round, IsNotNeededForAChangeWithoutArrivalsAndDepartures) {
  addAll();
  const auto published = [&] {
    announcements.publishUnlessEntriesChanged();
    return std::exchange(backing.steps, "");
  };
  EXPECT_EQ(published(), "look publish ");
  backing.entries.push_back({4, kUnit});
  EXPECT_EQ(published(), "look ");
  backing.entries = {{2, kUnit}};
  EXPECT_EQ(published(), "look ");
  backing.status = -5;
  EXPECT_EQ(published(), "look ");
}

TEST(NotificationPort, KeepsDeliveriesForALateQueueOrSourceUntilItIsDestroyed) {
  int calls = 0;
  const auto queue = ob::make<ob::DispatchQueue>("late");
  const auto late = ob::make<NotificationPort>(), port = ob::make<NotificationPort>();
  for (int i = 0; i < 2; ++i) late->post([&] { ++calls; });
  late->setDispatchQueue(*queue);
  queue->drain();
  EXPECT_EQ(calls, 2);
  port->post([&] { ++calls; });
  const auto source = port->runLoopSource();
  const auto raw = ob::toC<ObRunLoopSourceRef>(static_cast<ob::Object*>(source.get()));
  ObRunLoopAddSource(ObRunLoopGetCurrent(), raw, kObRunLoopDefaultMode);
  EXPECT_TRUE(ObRunLoopPerformDue(kObRunLoopDefaultMode));
  EXPECT_EQ(calls, 3);
  ObRunLoopSourceInvalidate(raw);
  const auto held = std::make_shared<int>();
  port->post([held] {});
  for (const auto& one : {late, port}) {
    one->destroy();
    one->post([held] {});
    one->setDispatchQueue(*queue);
    EXPECT_EQ(one->runLoopSource(), nullptr);
  }
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(queue->retainCount(), 1u);
}

}  // namespace
}  // namespace tavrenix::test
