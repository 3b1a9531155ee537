// Every step of both creations fails in turn: what is told, what stays, and that nothing else does.
#include <gmock/gmock.h>

#include "library/notification.hpp"
#include "runtime/pool.hpp"
#include "tests/library/failing_new.hpp"
#include "tests/library/notification_clients.hpp"

namespace tavrenix::test {
namespace {

constexpr const char* kNoUnits =
    "KsServiceMatching unable to locate any services matching multipathed logical units";
constexpr const char* kNoPaths =
    "KsServiceMatching unable to locate any services matching multipathed logical unit paths";
constexpr const char* kUnitsNotAdded = "KsServiceAddMatchingNotification for logical units failed";
constexpr const char* kPathsNotAdded =
    "KsServiceAddMatchingNotification for logical unit paths failed";

struct Failure {
  const char* message;
  std::int64_t code;
  std::size_t handlesLeft;  // the port and the iterators made by then
  std::size_t callsLeft;    // for a unit with two paths
  std::uint32_t portsCounted;
};
// One row for each operation of the registry that a creation makes, in its order.
constexpr Failure kFailures[] = {
    {"Unable to create notification port", kMPIOErrorNoResources, 0, 0, 0},
    {kNoUnits, kMPIOErrorServiceNotFound, 1, 0, 1},
    {kUnitsNotAdded, kMPIOErrorNotificationFailed, 1, 0, 1},
    {kUnitsNotAdded, kMPIOErrorNotificationFailed, 2, 1, 1},
    {kNoPaths, kMPIOErrorServiceNotFound, 3, 1, 1},
    {kPathsNotAdded, kMPIOErrorNotificationFailed, 3, 1, 1},
    {kPathsNotAdded, kMPIOErrorNotificationFailed, 4, 3, 1},
};

class CreationFails : public testing::Test {
 protected:
  CreationFails() { addStorage(storage, {.units = 1, .paths = 2}); }
  LibraryHost host;
  memory::MemoryHost& storage = host->memory;
};

TEST_F(CreationFails, OnAQueueWithTheErrorOfTheStepAndNothingUndone) {
  for (std::size_t step = 0; step < std::size(kFailures); ++step) {
    SCOPED_TRACE(step);
    const Failure& expected = kFailures[step];
    const ob::Pool pool;
    const std::size_t handles = storage.registry().openHandles();
    const std::uint32_t ports = gMPIOActiveNotificationPorts;
    QueueClient client;
    {
      const HeldQueue held(client.queue.get());
      host->watch.reset();
      host->watch.failAt(step);
      EXPECT_FALSE(client.start());
      host->watch.reset();
    }
    ASSERT_NE(client.error, nullptr);
    EXPECT_EQ(utf8(ObErrorGetDomain(client.error)), expected.message);
    EXPECT_EQ(ObErrorGetCode(client.error), expected.code);
    const auto* error = ob::fromC<ob::Error>(client.error);
    EXPECT_EQ(error->retainCount(), 1u) << "the pool's alone";
    if (expected.code == kMPIOErrorNotificationFailed) {
      EXPECT_EQ(numberUnder(error->userInfo(), *ob::String::make("Error Result Code")),
                kInjectedStatus);
    } else {
      EXPECT_EQ(error->userInfo(), nullptr);
    }
    EXPECT_EQ(storage.registry().openHandles() - handles, expected.handlesLeft);
    EXPECT_EQ(gMPIOActiveNotificationPorts - ports, expected.portsCounted);
    EXPECT_EQ(client.take().size(), expected.callsLeft) << "tasks that were queued by then";
  }
}

TEST_F(CreationFails, OnAQueueAndLaterEventsReachNobody) {
  QueueClient client;
  host->watch.failAt(std::size(kFailures) - 1);
  {
    const HeldQueue held(client.queue.get());
    host->watch.reset();
    host->watch.failAt(std::size(kFailures) - 1);
    ASSERT_FALSE(client.start());
    host->watch.reset();
  }
  client.take();
  removePath(storage, 0, 0);
  addUnits(storage, {.units = 2, .paths = 2});
  client.settle();
  EXPECT_TRUE(client.events.empty());
}

TEST_F(CreationFails, OnAQueueAlsoWhereNobodyWantsTheError) {
  QueueClient client;
  host->watch.failAll(Operation::kCreateNotificationPort);
  EXPECT_EQ(MPIONotificationCreateWithDispatchQueue(&client.block, client.queue.get(), nullptr),
            nullptr);
  EXPECT_EQ(MPIONotificationCreateWithDispatchQueue(&client.block, nullptr, nullptr), nullptr);
}

TEST_F(CreationFails, OnAQueueTheErrorIsClearedFirst) {
  QueueClient client;
  int something = 0;
  client.error = reinterpret_cast<ObErrorRef>(&something);
  EXPECT_TRUE(client.start());
  EXPECT_EQ(client.error, nullptr);
}

TEST_F(CreationFails, OnAQueueAtEveryAllocation) {
  for (std::size_t successes = 0;; ++successes) {
    SCOPED_TRACE(successes);
    const ob::Pool pool;
    QueueClient client;
    failAllocationAfter(successes);
    const bool started = client.start();
    if (!allocationFailed()) {
      EXPECT_TRUE(started);
      EXPECT_GT(successes, 10u);
      break;
    }
    ASSERT_FALSE(started);
    EXPECT_EQ(utf8(ObErrorGetDomain(client.error)), "Failed to allocate an internal structure");
    EXPECT_EQ(ObErrorGetCode(client.error), kMPIOErrorNoResources);
    client.settle();
  }
}

// Every operation of the host that the add brings about, those of the handlers included.
TEST_F(CreationFails, OnARunLoopSilentlyAtEverySite) {
  std::size_t sites = 0;
  for (std::size_t site = 0; site <= sites; ++site) {
    SCOPED_TRACE(site);
    RunLoopClient client;
    touch(storage);
    host->watch.reset();
    host->watch.failAt(site);
    ASSERT_TRUE(client.start());
    if (site == 0) sites = 20;
    sites = std::max(sites, host->watch.failable());
    host->watch.reset();
    client.stop();
    EXPECT_EQ(storage.registry().openHandles(), 0u);
    client.take();
    touch(storage);
    ASSERT_TRUE(client.start());
    EXPECT_EQ(client.take().size(), 3u) << "does not heal";
  }
  EXPECT_GT(sites, 20u);
}

TEST_F(CreationFails, OnARunLoopWithoutAPortAsksForNothingMore) {
  RunLoopClient client;
  host->watch.reset();
  host->watch.failAll(Operation::kCreateNotificationPort);
  ASSERT_TRUE(client.start());
  EXPECT_EQ(host->watch.registryOperations(), 1u);
  client.stop();
}

TEST_F(CreationFails, OnARunLoopWithoutAPortSourceLeavesThePortThatCancellingCounts) {
  const std::uint32_t ports = gMPIOActiveNotificationPorts;
  RunLoopClient client;
  host->watch.failAll(Operation::kGetRunLoopSource);
  ASSERT_TRUE(client.start());
  host->watch.reset();
  EXPECT_EQ(storage.registry().openHandles(), 1u);
  EXPECT_EQ(gMPIOActiveNotificationPorts, ports);
  client.stop();
  EXPECT_EQ(storage.registry().openHandles(), 0u);
  EXPECT_EQ(gMPIOActiveNotificationPorts, ports - 1);
  gMPIOActiveNotificationPorts = ports;
}

TEST_F(CreationFails, OnARunLoopAtEveryAllocation) {
  for (std::size_t successes = 0;; ++successes) {
    SCOPED_TRACE(successes);
    touch(storage);
    failAllocationAfter(successes);
    RunLoopClient client;
    const bool failedToMake = !client.source;
    if (client.source) client.start();
    if (!allocationFailed()) {
      EXPECT_EQ(client.take().size(), 3u);
      EXPECT_GT(successes, 50u);
      break;
    }
    EXPECT_EQ(failedToMake, successes < 3);  // the record, its weak cell, the source
    if (client.source) client.stop();
    ASSERT_EQ(storage.registry().openHandles(), 0u);
  }
}

}  // namespace
}  // namespace tavrenix::test
