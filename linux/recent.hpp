// Answers that may be given again for a short while.
#pragma once

#include <chrono>

#include "runtime/ordered_map.hpp"

namespace tavrenix::sys {

using Clock = std::chrono::steady_clock;

// How long what was read of the machine may be told again without reading it anew. Long enough for the
// several questions of one scan about one unit, and shorter than anyone can tell from having asked a
// little earlier.
inline constexpr Clock::duration kRecent = std::chrono::milliseconds(5);

// Values by entry ID, each forgotten when it is older than kept. Not safe for concurrent use.
template <class Value>
class RecentMap {
 public:
  explicit RecentMap(Clock::duration kept) noexcept : kept_(kept) {}

  // Null where there is none that is fresh. Valid until the next change.
  const Value* find(std::uint64_t id) const {
    if (kept_ == Clock::duration::zero()) return nullptr;
    const Timed* timed = values_.find(id);
    return timed != nullptr && Clock::now() - timed->when < kept_ ? &timed->value : nullptr;
  }
  void put(std::uint64_t id, Value value) {
    // What is gone is asked for no more, so entries pile up unless the map starts anew now and then.
    if (values_.size() >= kMost) values_.clear();
    values_.set(id, {std::move(value), Clock::now()});
  }
  void clear() { values_.clear(); }

 private:
  static constexpr std::size_t kMost = 65536;
  struct Timed {
    Value value;
    Clock::time_point when;
  };
  Clock::duration kept_;
  ob::NumberMap<Timed> values_;
};

}  // namespace tavrenix::sys
