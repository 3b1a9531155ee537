// The library on the simulated host for a long time: operations of the registry, queries of the
// tunable, allocations of pools and writes fail at random, while units, paths and volumes come and
// go and three kinds of client work, each on a thread of its own.
//
// What a run does follows from its seed as far as this goes: in a drawn order one thread works at a
// time, the seed says which, and what it brings about on the listener's queue is done before the
// next one works. Such a run can be had again, fault by fault, and a test below holds it to that.
// Not the same then are addresses, dates and how long things take. When all work at once each still
// draws its own operations from the seed, but the kernel decides who comes first, and so which
// operation the next fault hits. Such a run shows what the other cannot, and cannot be had again.
#include "tests/soak/soak.hpp"

#include <unistd.h>

#include <future>
#include <sstream>
#include <thread>

#include "library/manager.hpp"
#include "tests/library/failing_new.hpp"
#include "tests/soak/clients.hpp"
#include "tests/soak/truth.hpp"

namespace tavrenix::soak {
namespace {

// Storms follow each other, each on a host of its own; after each the truth is asked for.
constexpr std::uint64_t kOperationsOfAStorm = 50'000;
constexpr std::uint64_t kTurnsStream = 3;
constexpr std::uint64_t kFirstClientStream = 4;
// Lister, changer, listener, hand.
constexpr Turns::Weights kWeights = {20, 10, 10, 1};

// Every write of the driver waits for the disk, where there is one.
std::filesystem::path folder() {
  const char* const memory = "/dev/shm";
  return ::access(memory, W_OK | X_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

// One operation of client or hand. In a drawn order it is over, with all that it brought about,
// when this returns.
void doOne(World& world, Listener& listener, const std::function<void()>& work) {
  if (world.order == Order::kFree) return work();
  {
    const memory::MemoryRegistry::HeldNotifications held(world.registry());
    work();
  }
  listener.settle();
}

struct Clients {
  Clients(World& world, Turns& turns, std::uint64_t seed)
      : lister(world, turns, Random(seed, kFirstClientStream)),
        changer(world, turns, Random(seed, kFirstClientStream + 1)),
        listener(world, turns, Random(seed, kFirstClientStream + 2)) {}
  Lister lister;
  Changer changer;
  Listener listener;
};

// Returns the handles that the clients left behind as they must.
std::size_t letEverybodyWork(World& world, std::uint64_t seed, std::uint64_t operations) {
  Turns turns(world.order, kWeights, operations, Random(seed, kTurnsStream),
              [&] { world.storm.calm(); });
  Clients clients(world, turns, seed);
  const std::function<void()> works[Turns::kWorkers] = {
      [&] { clients.lister.work(); }, [&] { clients.changer.work(); },
      [&] { clients.listener.work(); }, [&] { world.hand.change(world.storm.isRaging()); }};
  const auto run = [&](std::size_t worker) {
    while (std::uint64_t left = turns.take(worker)) {
      for (; left > 0; --left) doOne(world, clients.listener, works[worker]);
      turns.give();
    }
    if (worker == 2) clients.listener.finish();
  };
  world.storm.rage();
  std::vector<std::thread> threads;
  for (std::size_t worker = 0; worker < Turns::kWorkers; ++worker)
    threads.emplace_back(run, worker);
  for (auto& thread : threads) thread.join();
  clients.listener.settle();
  return clients.listener.handlesLeft();
}

// A client that registers now is told of what the host has, and of what comes and goes after that.
void expectToBeTold(World& world, test::NotificationClient& client) {
  ASSERT_TRUE(client.start());
  client.settle();
  std::vector<EntryID> expected;
  for (const auto& [id, text] : truthOf(world.hand.image())) expected.push_back(id);
  const auto take = [&] {
    std::vector<EntryID> told;
    for (const auto& [kind, id] : client.take()) told.push_back(id);
    std::sort(told.begin(), told.end());
    return told;
  };
  EXPECT_EQ(take(), expected);
  const std::size_t handles = world.registry().openHandles();
  EntryID unit = 0;
  std::vector<EntryID> whole;
  do {  // until it is one that is shown
    unit = world.hand.addUnit();
    client.settle();
    whole = take();
  } while (!truthOf(world.hand.image()).contains(unit));
  const Json image = world.hand.image();
  EXPECT_EQ(std::count(whole.begin(), whole.end(), unit), 1);
  EXPECT_EQ(whole.size(), 1 + entryOf(image, unit)["parents"].size());
  // The host lets clients take up departures before it goes on, and so cannot be waited for here.
  auto removal = std::async(std::launch::async, [&] { world.hand.removeUnit(unit); });
  while (removal.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    client.settle();
  }
  client.settle();
  EXPECT_EQ(take(), whole) << "what went";
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
  const Shown truth = truthOf(world.hand.image());
  EXPECT_EQ(shownByLibrary(world.registry()), truth);
  // Nothing that is gone is kept, and so no old handle passes for one of a device that is there.
  EXPECT_EQ(manager().logicalUnits->size() + manager().paths->size(), truth.size());
  test::QueueClient onQueue;
  expectToBeTold(world, onQueue);
  test::RunLoopClient onLoop;
  expectToBeTold(world, onLoop);
  EXPECT_EQ(shownByLibrary(world.registry()), truthOf(world.hand.image()));
  EXPECT_EQ(world.registry().openHandles(), iteratorsLeft);
}

// The library may complain of the faults, and of nothing else.
void expectOnlyKnownComplaints(const std::string& said) {
  std::istringstream lines(said);
  for (std::string line; std::getline(lines, line);) {
    ASSERT_EQ(line, "sysctlbyname failed to get stats block: -1");
  }
}

struct Outcome {
  std::uint64_t sum = 0;
  Storm::Counts failed{};
};

Outcome weather(std::uint64_t seed, Order order, std::uint64_t operations) {
  // The manager takes note of the generation, and outlives the host.
  static std::uint32_t generation = 1;
  World world(seed, order, generation += 1'000'000, folder());
  testing::internal::CaptureStderr();
  const std::size_t handlesLeft = letEverybodyWork(world, seed, operations);
  expectOnlyKnownComplaints(testing::internal::GetCapturedStderr());
  const auto findings = world.findings.take();
  for (const auto& finding : findings) ADD_FAILURE() << finding;
  world.findings.note(handlesLeft);
  for (const std::size_t count : world.storm.failed()) world.findings.note(count);
  const Outcome outcome{world.findings.sum(), world.storm.failed()};
  expectTheTruth(world, handlesLeft);
  return outcome;
}

// The same, with how to have it again, told beforehand, for one that never ends.
Outcome stormWithReplay(std::uint64_t seed, Order order, std::uint64_t operations) {
  const auto* test = testing::UnitTest::GetInstance()->current_test_info();
  std::ostringstream replay;
  replay << "soak_tests --seed " << seed << " --operations " << operations
         << " --gtest_filter=Soak." << test->name();
  std::cout << "storm: " << replay.str() << std::endl;
  SCOPED_TRACE("to have it again: " + replay.str());
  return weather(seed, order, operations);
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
  constexpr std::uint64_t kFew = 1000;
  const std::ptrdiff_t ownThreads = threads();
  stormWithReplay(settings().seed, order, kFew);  // what is made once is made by then
  const std::size_t live = liveAllocationsOf(ownThreads);
  Storm::Counts failed{};
  std::uint64_t seed = settings().seed;
  for (std::uint64_t left = settings().operations; left > 0 && !testing::Test::HasFailure();) {
    const std::uint64_t operations = std::min(kOperationsOfAStorm, left);
    left -= operations;
    const auto counts = stormWithReplay(seed++, order, operations).failed;
    for (std::size_t i = 0; i < failed.size(); ++i) failed[i] += counts[i];
    EXPECT_EQ(liveAllocationsOf(ownThreads), live) << "allocations are left";
  }
  if (settings().operations < kOperationsOfAStorm) return;
  for (std::size_t i = 0; i < failed.size(); ++i) {
    if (i != static_cast<std::size_t>(test::Operation::kRelease)) {
      EXPECT_GT(failed[i], 0u) << "operation " << i << " never failed";
    }
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
  const auto first = weather(settings().seed, Order::kDrawn, kSome);
  const auto again = weather(settings().seed, Order::kDrawn, kSome);
  EXPECT_EQ(first.sum, again.sum);
  EXPECT_EQ(first.failed, again.failed);
  EXPECT_NE(first.sum, weather(settings().seed + 1, Order::kDrawn, kSome).sum);
}

}  // namespace
}  // namespace tavrenix::soak
