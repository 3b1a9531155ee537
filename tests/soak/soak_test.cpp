// The library on the simulated host for a long time: operations of the registry, queries of the
// tunable, allocations of pools and writes fail at random, while units, paths and volumes come and
// go and three kinds of client work. SOAK_SEED and SOAK_OPERATIONS in the environment say what is
// drawn and how long it goes on.
//
// What a run does follows from its seed as far as this goes: in a drawn order one works at a time,
// the seed says who, and what that brings about on the listener's queue is done before the next one
// works. Such a run can be had again, fault by fault, and a test below holds it to that.
// Not the same then are addresses, dates and how long things take. When all work at once each still
// draws its own operations from the seed, but the kernel decides who comes first, and so which
// operation the next fault hits. Such a run shows what the other cannot, and cannot be had again.
#include <unistd.h>

#include <cstdlib>
#include <future>
#include <semaphore>
#include <sstream>
#include <thread>

#include "tests/library/failing_new.hpp"
#include "tests/soak/clients.hpp"
#include "tests/soak/shown.hpp"

namespace tavrenix::soak {
namespace {

// Storms follow each other, each on a host of its own; after each the truth is asked for.
constexpr std::uint64_t kOperationsOfAStorm = 50'000;

std::uint64_t setting(const char* name, std::uint64_t otherwise) {
  const char* const text = std::getenv(name);
  return text == nullptr ? otherwise : std::stoull(text);
}
std::uint64_t firstSeed() {
  return setting("SOAK_SEED", 20261121);
}

// Operations of clients to one change of the host.
constexpr std::size_t kOperationsOfAChange = 40;

struct Clients {
  explicit Clients(World& world)
      : lister(world, Stream::kLister), changer(world, Stream::kChanger), listener(world) {}
  Client lister;
  Client changer;
  Listener listener;
};

// All on one thread. Each operation is over, with all that it brought about, before the next.
void workInDrawnOrder(World& world, Clients& clients, std::uint64_t operations) {
  Random order(world.seed, Stream::kOrder);
  for (; operations > 0; --operations) {
    {
      const memory::MemoryRegistry::HeldNotifications held(world.registry());
      const std::uint64_t drawn = order.below(kOperationsOfAChange + 1);
      if (drawn == kOperationsOfAChange) {
        world.hand.change();
      } else if (drawn < 10) {
        clients.changer.change();
      } else if (drawn < 20) {
        clients.listener.work();
      } else {
        clients.lister.list();
      }
    }
    clients.listener.settle();
  }
  world.storm.calm();
  clients.listener.finish();
}

// The hand on this thread, and each client on one of its own; they wait for the hand.
void workAllAtOnce(World& world, Clients& clients, std::uint64_t operations) {
  std::atomic<std::int64_t> left{static_cast<std::int64_t>(operations)};
  std::counting_semaphore<> granted(0);
  const auto repeat = [&](auto work) {
    for (granted.acquire(); left-- > 0; granted.acquire()) work();
    world.storm.calm();
  };
  std::thread threads[] = {
      std::thread([&] { repeat([&] { clients.lister.list(); }); }),
      std::thread([&] { repeat([&] { clients.changer.change(); }); }),
      std::thread([&] {
        repeat([&] { clients.listener.work(); });
        clients.listener.finish();
      }),
  };
  while (left > 0) {
    world.hand.change();
    granted.release(kOperationsOfAChange);
  }
  granted.release(std::size(threads));
  for (auto& thread : threads) thread.join();
}

// Returns the handles that the clients left behind as they must.
std::size_t letEverybodyWork(World& world, std::uint64_t operations) {
  Clients clients(world);
  const auto work = world.order == Order::kDrawn ? workInDrawnOrder : workAllAtOnce;
  std::thread(work, std::ref(world), std::ref(clients), operations).join();
  clients.listener.settle();
  return clients.listener.handlesLeft();
}

std::vector<EntryID> idsToldOf(test::NotificationClient& client) {
  client.settle();
  std::vector<EntryID> told;
  for (const auto& [kind, id] : client.take()) told.push_back(id);
  std::sort(told.begin(), told.end());
  return told;
}

// A client that registers now is told of what is there, and of what comes and goes after that.
void expectToBeTold(World& world, test::NotificationClient& client, const Shown& shown) {
  ASSERT_TRUE(client.start());
  std::vector<EntryID> there;
  for (const auto& [id, words] : shown) there.push_back(id);
  EXPECT_EQ(idsToldOf(client), there);
  const std::size_t handles = world.registry().openHandles();
  const auto came = world.hand.addUnit();
  EXPECT_EQ(idsToldOf(client), came);
  // The host lets clients take up departures before it goes on, and so cannot be waited for here.
  auto removal = std::async(std::launch::async, [&] { world.hand.removeUnit(); });
  while (removal.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    client.settle();
  }
  EXPECT_EQ(idsToldOf(client), came) << "what went";
  EXPECT_EQ(world.registry().openHandles(), handles);
  client.stop();
}

// Nobody takes up what the ports of failed creations are told of, and the host would wait for that.
// What is no port stays as it is.
void destroyPortsLeft(memory::MemoryRegistry& registry) {
  for (RegistryPort port = 1; port <= 10'000; ++port) registry.destroyNotificationPort(port);
}

void expectTheTruth(World& world, std::size_t handlesLeft) {
  EXPECT_EQ(world.registry().openHandles(), handlesLeft);
  destroyPortsLeft(world.registry());
  const std::size_t iteratorsLeft = world.registry().openHandles();
  ASSERT_TRUE(manager().lock->try_lock());
  manager().lock->unlock();
  world.hand.setPatience(lab::SimulatedHost::kPatience);
  // A scan that a fault cut short is made again when the driver's generation moves, not before.
  world.hand.settle();
  const Shown shown = shownByLibrary(world.registry());
  // Nothing that is gone is kept, and so no old handle passes for one of a device that is there.
  EXPECT_EQ(manager().logicalUnits->size() + manager().paths->size(), shown.size());
  test::QueueClient onQueue;
  expectToBeTold(world, onQueue, shown);
  test::RunLoopClient onLoop;
  expectToBeTold(world, onLoop, shown);
  EXPECT_EQ(shownByLibrary(world.registry()), shown);
  EXPECT_EQ(world.registry().openHandles(), iteratorsLeft);
  // What a library shows that has gone through no storm.
  lab::SimulatedHost untouched([](std::string_view) {});
  untouched.load(world.hand.path());
  manager().lastGeneration = 0;
  const test::UnderLibrary under(untouched.memory());
  EXPECT_EQ(shown, shownByLibrary(untouched.memory().registry()));
}

// The library may complain of the faults, and of nothing else.
void expectOnlyKnownComplaints(const std::string& said) {
  std::istringstream lines(said);
  for (std::string line; std::getline(lines, line);) {
    ASSERT_EQ(line, "sysctlbyname failed to get stats block: -1");
  }
}

// Returns a sum over all that was answered and failed. How to have it again is told beforehand, for
// one that never ends.
std::uint64_t storm(std::uint64_t seed, Order order, std::uint64_t operations) {
  std::cout << "storm: SOAK_SEED=" << seed << " SOAK_OPERATIONS=" << operations
            << " soak_tests --gtest_filter=Soak."
            << testing::UnitTest::GetInstance()->current_test_info()->name() << std::endl;
  manager().lastGeneration = 0;  // the manager outlives the host
  World world(seed, order);
  testing::internal::CaptureStderr();
  const std::size_t handlesLeft = letEverybodyWork(world, operations);
  expectOnlyKnownComplaints(testing::internal::GetCapturedStderr());
  world.note(handlesLeft);
  for (std::size_t i = 0; i < world.storm.failed().size(); ++i) {
    const std::size_t failed = world.storm.failed()[i];
    world.note(failed);
    const bool mustFail = operations == kOperationsOfAStorm &&
                          i != static_cast<std::size_t>(test::Operation::kRelease);
    EXPECT_TRUE(failed > 0 || !mustFail) << "operation " << i << " never failed";
  }
  expectTheTruth(world, handlesLeft);
  return world.sum;
}

std::ptrdiff_t threads() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

// Allocations that are there when the threads of queues have ended, which they do in their own time
// once nobody holds the queue.
std::size_t liveAllocationsOf(std::ptrdiff_t ownThreads) {
  for (int i = 0; i < 10'000 && threads() > ownThreads; ++i) ::usleep(1000);
  return test::liveAllocations();
}

void soak(Order order) {
  const std::ptrdiff_t ownThreads = threads();
  storm(firstSeed(), order, 1000);  // what is made once is made by then
  const std::size_t live = liveAllocationsOf(ownThreads);
  std::uint64_t seed = firstSeed();
  std::uint64_t left = setting("SOAK_OPERATIONS", 1'000'000);
  while (left > 0 && !testing::Test::HasFailure()) {
    const std::uint64_t operations = std::min(kOperationsOfAStorm, left);
    left -= operations;
    storm(seed++, order, operations);
    EXPECT_EQ(liveAllocationsOf(ownThreads), live) << "allocations are left";
  }
}

TEST(Soak, InDrawnOrder) {
  soak(Order::kDrawn);
}

TEST(Soak, AllAtOnce) {
  soak(Order::kFree);
}

TEST(Soak, TheSameSeedGivesTheSameRun) {
  constexpr std::uint64_t kSome = 2000;
  const std::uint64_t first = storm(firstSeed(), Order::kDrawn, kSome);
  EXPECT_EQ(storm(firstSeed(), Order::kDrawn, kSome), first);
  EXPECT_NE(storm(firstSeed() + 1, Order::kDrawn, kSome), first);
}

}  // namespace
}  // namespace tavrenix::soak
