#include "tests/soak/world.hpp"

#include <unistd.h>

namespace tavrenix::soak {

namespace {

// Every write of the driver waits for the disk, where there is one.
std::filesystem::path folder() {
  const char* const memory = "/dev/shm";
  return ::access(memory, W_OK | X_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

}  // namespace

World::World(std::uint64_t itsSeed, Order itsOrder)
    : seed(itsSeed),
      order(itsOrder),
      scratch(folder()),
      hand(simulated, scratch.path("image.json"), Random(seed, Stream::kHand)),
      storm(seams.watch, Random(seed, Stream::kStorm)) {
  // In a drawn order clients are told only when the change is done, and get no time.
  if (order == Order::kFree) hand.setPatience(std::chrono::milliseconds(1));
}

std::unique_lock<std::recursive_mutex> World::alone() {
  return order == Order::kFree ? std::unique_lock(clients)
                               : std::unique_lock(clients, std::defer_lock);
}

void World::complain(const std::string& fault) {
  constexpr int kMost = 10;
  if (++complaints <= kMost) ADD_FAILURE() << fault;
}

void World::note(std::uint64_t answer) {
  const std::lock_guard lock(noting);
  sum = (sum ^ answer) * 0x100000001B3;
}

}  // namespace tavrenix::soak
