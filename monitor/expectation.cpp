#include "monitor/failure.hpp"
#include "monitor/verbs.hpp"

namespace tavrenix::monitor {

Expectation::Expectation(const CommandLine& line) {
  constexpr std::uint64_t kMostPaths = 10'000;
  paths_ = line.number(kPathsOption.letter, 1, kMostPaths);
  const auto file = line.value(kBaselineOption.letter);
  if (paths_ && file) throw Failure("give --paths or --baseline, not both");
  if (file) baseline_ = readBaseline(*file);
}

std::optional<std::uint64_t> Expectation::pathsOf(const Unit& unit) const {
  return baseline_ ? baseline_->expectedPaths(unit) : paths_;
}

}  // namespace tavrenix::monitor
