#include "tests/soak/world.hpp"

namespace tavrenix::soak {

namespace {

// Each user of the seed has a stream of its own; those of clients follow.
constexpr std::uint64_t kHandStream = 1;
constexpr std::uint64_t kStormStream = 2;
// In a drawn order clients are told only when the change is done, and get none.
constexpr std::chrono::milliseconds kSomePatience{1};

}  // namespace

void Findings::add(std::string finding) {
  constexpr std::size_t kMost = 10;
  const std::lock_guard lock(mutex_);
  if (found_.size() < kMost) found_.push_back(std::move(finding));
}

std::vector<std::string> Findings::take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(found_, {});
}

void Findings::note(std::uint64_t answer) {
  const std::lock_guard lock(mutex_);
  sum_ = (sum_ ^ answer) * 0x100000001B3;
}

World::World(std::uint64_t seed, Order itsOrder, std::uint32_t firstGeneration,
             const std::filesystem::path& folder)
    : order(itsOrder),
      scratch(folder),
      simulated([this](std::string_view line) { findings.add("the host: " + std::string(line)); }),
      hand(simulated, scratch.path("image.json"), firstGeneration, Random(seed, kHandStream)),
      storm(seams.watch, Random(seed, kStormStream)) {
  if (order == Order::kFree) hand.setPatience(kSomePatience);
}

}  // namespace tavrenix::soak
