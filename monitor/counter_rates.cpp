#include "monitor/counter_rates.hpp"

namespace tavrenix::monitor {

namespace {

bool isZero(const Counters& counters) {
  return counters.bytesSent == 0 && counters.bytesReceived == 0 && counters.commands == 0;
}

}  // namespace

std::optional<Rates> ratesBetween(const Reading& before, const Reading& after) {
  const double seconds = after.seconds - before.seconds;
  if (!before.counters || !after.counters || seconds <= 0) return std::nullopt;
  const Counters& was = *before.counters;
  const Counters& now = *after.counters;
  if (now.bytesSent < was.bytesSent || now.bytesReceived < was.bytesReceived ||
      now.commands < was.commands) {
    return std::nullopt;
  }
  const auto rate = [&](std::uint64_t difference) {
    return static_cast<double>(difference) / seconds;
  };
  return Rates{rate(now.bytesReceived - was.bytesReceived), rate(now.bytesSent - was.bytesSent),
               rate(now.commands - was.commands)};
}

Reading readingAfter(const Reading& before, const std::optional<Counters>& counters,
                     double seconds) {
  const bool isLost = counters && isZero(*counters) && before.counters && !isZero(*before.counters);
  return {isLost ? std::nullopt : counters, seconds};
}

}  // namespace tavrenix::monitor
