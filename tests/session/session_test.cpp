// Sessions that follow from seeds, and clients on threads of their own.
#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "tests/library/failing_new.hpp"
#include "tests/session/client_session.hpp"

namespace tavrenix::test {
namespace {

TEST(Session, OfAnySeedKeepsWhatTheLibraryPromisesAndLeavesNothing) {
  // The sanitizers slow a session down, and fuzzing under them draws thousands more.
  const std::uint64_t seeds = kAllocationsCanFail ? 400 : 100;
  std::size_t live = 0;
  for (std::uint64_t seed = 0; seed < seeds; ++seed) {
    std::cout << "seed " << seed << std::endl;  // for the one that ends the process
    {
      Choices choices(seed);
      runSession(choices, 100, 100 * (seed % 3));
    }
    if (seed < 20) live = std::max(live, liveAllocations.load());  // what is made once and kept
  }
  // Threads of queues end in their own time.
  for (int i = 0; i < 5000 && liveAllocations > live; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_LE(liveAllocations, live);
}

// Runs the command while one operation of the host fails, or finds no memory, for each in turn.
std::set<std::string> saidOnFailures(const std::vector<std::string>& words) {
  std::set<std::string> said;
  LibraryHost host;
  addStorage(host->memory, {.units = 1, .paths = 1, .volumes = 0});
  const auto run = [&] {
    touch(host->memory);
    said.insert(runCommand(words).text);
  };
  for (const bool throws : {false, true}) {
    host->watch.throws = throws;
    failEveryOperation(host->watch, run, [] {});
  }
  return said;
}

TEST(Command, SaysWhatItCouldNotDoWhicheverOperationFails) {
  const std::string id = "600A0B80000000000000000000000000", noUnit = "Unable to find lun " + id;
  const std::string result = " (error 0x08000003, result -536870212)\n";
  const std::string algorithm = "Unable to change algorithm: ";
  EXPECT_EQ(saidOnFailures({"modify", "lun", "-i", id, "-a", "LeastIO", "-b", "3"}),
            (std::set<std::string>{
                "", noUnit + "\n", algorithm + "KsRegistryEntrySetObProperty failed" + result,
                algorithm + "KsServiceGetMatchingService failed to find entry matching specified "
                            "entry ID (error 0x08000002)\n",
                algorithm + "reason unknown\n", "Unable to change batch count: reason unknown\n"}));
  for (const auto& report : saidOnFailures({"info", "-i", id})) {
    EXPECT_EQ(report.find("(NULL)"), std::string::npos) << "a row of a unit without properties";
  }
  for (const std::string change : {"enable", "disable"}) {
    const std::string notDone = "Unable to " + change + " path";
    EXPECT_EQ(saidOnFailures({"modify", "path", "-l", id, "-i", "0000", "--" + change}),
              (std::set<std::string>{
                  "", noUnit + "\n", "Unable to find path 0000\n", notDone + "\n",
                  notDone + ": Unable to locate needed service in KsRegistry (error 0x08000002)\n",
                  notDone + ": Unable to set property" + result}));
  }
}

constexpr std::size_t kRounds = 40;
constexpr Shape kShape{.units = 8, .paths = 4, .volumes = 1};

// Expects of each entry an arrival and a departure per round, in turns and with the same handle.
void expectEveryEvent(const std::vector<Event>& events) {
  std::map<EntryID, std::vector<Event>> byEntry;
  for (const Event& event : events) byEntry[event.id].push_back(event);
  ASSERT_EQ(byEntry.size(), kShape.units * (1 + kShape.paths));
  for (const auto& [id, ofEntry] : byEntry) {
    ASSERT_EQ(ofEntry.size(), kRounds * 2) << id;
    for (std::size_t i = 0; i < ofEntry.size(); ++i) {
      ASSERT_EQ(ofEntry[i].kind, ofEntry[i % 2].kind) << id;
      ASSERT_EQ(ofEntry[i].handle, ofEntry[i - i % 2].handle) << id;
    }
    ASSERT_NE(ofEntry[0].kind, ofEntry[1].kind) << id;
  }
}

TEST(Session, OnSeveralThreadsHearsEachArrivalAndDepartureOnce) {
  LibraryHost host;
  memory::MemoryHost& storage = host->memory;
  QueueClient onQueue;
  ASSERT_TRUE(onQueue.start());
  std::promise<ObRunLoopRef> loop;
  std::vector<Event> onLoopEvents;
  std::thread listening([&] {
    RunLoopClient onLoop;
    EXPECT_TRUE(onLoop.start());
    ObRetain(ObRunLoopGetCurrent());
    loop.set_value(ObRunLoopGetCurrent());
    ObRunLoopRun();
    onLoopEvents.swap(onLoop.events);
  });
  const Owned<ObRunLoopRef> running(loop.get_future().get());
  std::mutex serial;  // clients serialise their calls, and what moves the generation
  std::atomic<bool> done{false};
  std::thread asking([&] {
    while (!done) {
      const std::lock_guard lock(serial);
      useAll(Handles().units);
    }
  });
  const auto settle = [&] {
    while (!storage.registry().notificationsAreDelivered()) std::this_thread::yield();
  };
  for (std::size_t round = 0; round < kRounds; ++round) {
    {
      const std::lock_guard lock(serial);
      addUnits(storage, kShape);
    }
    settle();
    for (std::uint64_t unit = 0; unit < kShape.units; ++unit) {
      removeUnit(storage, unit, kShape.paths);
    }
    settle();
    const std::lock_guard lock(serial);
    touch(storage);
  }
  done = true;
  asking.join();
  ObRunLoopStop(running.get());
  listening.join();
  onQueue.stop();
  expectEveryEvent(onQueue.take());
  expectEveryEvent(onLoopEvents);
  EXPECT_EQ(storage.registry().openHandles(), 0u);
}

}  // namespace
}  // namespace tavrenix::test
