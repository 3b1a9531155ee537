// Every step of both creations fails in turn: what is told, what stays, and that nothing else does.
#include <gmock/gmock.h>

#include "library/notification.hpp"
#include "runtime/pool.hpp"
#include "tests/library/failing_new.hpp"
#include "tests/library/notification_clients.hpp"
#include "tests/support/every_failure.hpp"

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
    addUnits(storage, {.units = 2, .paths = 2});
    removeUnit(storage, 1, 2);
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
  const ob::Pool pool;
  QueueClient client;
  bool started = false;
  const std::size_t sites = failEveryAllocation(
      [&] { started = client.start(); },
      [&](bool failed) {
        EXPECT_EQ(started, !failed);
        if (!failed) return;
        EXPECT_EQ(utf8(ObErrorGetDomain(client.error)), "Failed to allocate an internal structure");
        EXPECT_EQ(ObErrorGetCode(client.error), kMPIOErrorNoResources);
        client.settle();
      });
  EXPECT_GT(sites, 10u);
}

// Every operation of the host that the add brings about, those of the handlers included.
TEST_F(CreationFails, OnARunLoopSilentlyAtEverySite) {
  RunLoopClient client;
  const auto start = [&] {
    touch(storage);
    EXPECT_TRUE(client.start());
  };
  const std::size_t sites = failEveryOperation(host->watch, start, [&] {
    client.stop();
    EXPECT_EQ(storage.registry().openHandles(), 0u);
    client.take();
    start();
    EXPECT_EQ(client.take().size(), 3u) << "does not heal";
    client.stop();
  });
  EXPECT_GT(sites, 20u);
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
  std::optional<RunLoopClient> client;
  std::size_t withoutSource = 0;
  const auto start = [&] {
    touch(storage);
    client.emplace();
    if (client->source) client->start();
  };
  const std::size_t sites = failEveryAllocation(start, [&](bool failed) {
    EXPECT_TRUE(failed || client->take().size() == 3u);
    if (!client->source) ++withoutSource;
    client.reset();
    EXPECT_EQ(storage.registry().openHandles(), 0u);
  });
  EXPECT_GT(sites, 50u);
  EXPECT_EQ(withoutSource, 3u) << "the record, its weak cell, the source";
}

}  // namespace
}  // namespace tavrenix::test
