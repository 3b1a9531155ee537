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
  for (const Failure& expected : kFailures) {
    const std::ptrdiff_t step = &expected - kFailures;
    SCOPED_TRACE(step);
    const ob::Pool pool;
    const std::size_t handles = storage.registry().openHandles();
    const std::uint32_t ports = gMPIOActiveNotificationPorts;
    QueueClient client;
    {
      const HeldQueue held(client.queue.get());
      host->watch.reset();
      host->watch.failAt(static_cast<std::size_t>(step));
      EXPECT_FALSE(client.start());
      host->watch.reset();
    }
    const auto* error = ob::fromC<ob::Error>(client.error);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain().view(), expected.message);
    EXPECT_EQ(error->code(), expected.code);
    EXPECT_EQ(error->retainCount(), 1u) << "the pool's alone";
    const bool withResult = expected.code == kMPIOErrorNotificationFailed;
    EXPECT_EQ(numberUnder(error->userInfo(), *ob::String::make("Error Result Code")),
              withResult ? kInjectedStatus : -999);
    EXPECT_EQ(storage.registry().openHandles() - handles, expected.handlesLeft);
    EXPECT_EQ(gMPIOActiveNotificationPorts - ports, expected.portsCounted);
    EXPECT_EQ(client.take().size(), expected.callsLeft) << "tasks that were queued by then";
    removePath(storage, 0, 0);
    addUnits(storage, {.units = 1, .paths = 2});
    client.settle();
    EXPECT_TRUE(client.events.empty()) << "later events reach nobody";
  }
}

TEST_F(CreationFails, OnAQueueAlsoWhereNobodyWantsTheErrorWhichIsClearedFirst) {
  QueueClient client;
  client.error = reinterpret_cast<ObErrorRef>(&client);
  EXPECT_TRUE(client.start());
  EXPECT_EQ(client.error, nullptr);
  EXPECT_EQ(MPIONotificationCreateWithDispatchQueue(&client.block, nullptr, nullptr), nullptr);
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
  std::size_t sites = 21;
  for (std::size_t site = 0; site < sites; ++site) {
    SCOPED_TRACE(site);
    RunLoopClient client;
    touch(storage);
    host->watch.reset();
    host->watch.failAt(site);
    ASSERT_TRUE(client.start());
    sites = std::max(sites, host->watch.failable());
    host->watch.reset();
    client.stop();
    EXPECT_EQ(storage.registry().openHandles(), 0u);
    client.take();
    touch(storage);
    ASSERT_TRUE(client.start());
    EXPECT_EQ(client.take().size(), 3u) << "does not heal";
  }
  EXPECT_GT(sites, 21u);
}

TEST_F(CreationFails, OnARunLoopWithoutAPortOrItsSourceAsksForNothingMore) {
  const std::uint32_t ports = gMPIOActiveNotificationPorts;
  RunLoopClient client;
  for (const auto& [failing, handlesLeft] : {std::pair{Operation::kCreateNotificationPort, 0u},
                                             std::pair{Operation::kGetRunLoopSource, 1u}}) {
    host->watch.reset();
    host->watch.failAll(failing);
    ASSERT_TRUE(client.start());
    EXPECT_EQ(host->watch.registryOperations(), 1u + handlesLeft);
    EXPECT_EQ(storage.registry().openHandles(), handlesLeft);
    EXPECT_EQ(gMPIOActiveNotificationPorts, ports);
    client.stop();
    EXPECT_EQ(storage.registry().openHandles(), 0u);
  }
  EXPECT_EQ(gMPIOActiveNotificationPorts, ports - 1) << "the port without a source, when cancelled";
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
