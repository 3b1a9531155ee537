// A map that keeps the order in which it was filled and costs little when small: a vector of pairs,
// with a hash index beside it only above kLinear of them.
//
// Not safe for concurrent use. Iterators and pointers into it end with the next change.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ob {

// Traits gives `static bool same(KeyView, const Key&)` and `static std::size_t hash(KeyView)`,
// where KeyView is what look-ups are made with and is made from a Key by `view(const Key&)`.
template <class Key, class Value, class Traits>
class OrderedMap {
 public:
  using Pair = std::pair<Key, Value>;
  using KeyView = typename Traits::KeyView;
  static constexpr std::size_t kLinear = 16;

  OrderedMap() = default;
  explicit OrderedMap(std::size_t capacity) { pairs_.reserve(capacity); }

  std::size_t size() const noexcept { return pairs_.size(); }
  bool empty() const noexcept { return pairs_.empty(); }
  auto begin() const noexcept { return pairs_.begin(); }
  auto end() const noexcept { return pairs_.end(); }

  const Value* find(KeyView key) const noexcept {
    const std::size_t at = position(key);
    return at == kNowhere ? nullptr : &pairs_[at].second;
  }
  bool contains(KeyView key) const noexcept { return position(key) != kNowhere; }

  // As find, for look-ups that mostly follow the order of the map: what stands behind cursor, where
  // the last one ended, is tried first, which spares a large map the wait for a line of its index.
  // cursor may be any number at the beginning.
  const Value* findAfter(std::size_t& cursor, KeyView key) const noexcept {
    const std::size_t next = cursor + 1;
    const bool follows = next < pairs_.size() && Traits::same(key, pairs_[next].first);
    const std::size_t at = follows ? next : position(key);
    if (at == kNowhere) return nullptr;
    cursor = at;
    return &pairs_[at].second;
  }

  // Adds the pair at the end, or replaces the value under an equal key where it stands.
  void set(Key key, Value value) {
    const std::size_t at = position(Traits::view(key));
    if (at != kNowhere) {
      pairs_[at].second = std::move(value);
      return;
    }
    if (index_.size() < (pairs_.size() + 1) * 2 && pairs_.size() >= kLinear)
      rebuildIndex(pairs_.size() * 4);
    pairs_.emplace_back(std::move(key), std::move(value));
    if (!index_.empty()) enter(pairs_.size() - 1);
  }

  // Removes the pair under key, if any. Below kLinear pairs the others keep their order; above it
  // the last pair takes the place of the removed one, which costs the same whatever the size.
  void erase(KeyView key) {
    const std::size_t at = position(key);
    if (at == kNowhere) return;
    [[maybe_unused]] const Pair removed =
        std::move(pairs_[at]);  // its destruction must not see a half-changed map
    if (index_.empty()) {
      pairs_.erase(pairs_.begin() + static_cast<std::ptrdiff_t>(at));
      return;
    }
    leave(slotOf(key, at));
    const std::size_t last = pairs_.size() - 1;
    if (at != last) {
      index_[slotOf(Traits::view(pairs_[last].first), last)] = static_cast<std::uint32_t>(at + 1);
      pairs_[at] = std::move(pairs_[last]);
    }
    pairs_.pop_back();
  }

  void clear() noexcept {
    [[maybe_unused]] const std::vector<Pair> removed = std::exchange(pairs_, {});
    index_.clear();
  }

 private:
  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

  std::size_t position(KeyView key) const noexcept {
    if (index_.empty()) {
      for (std::size_t i = 0; i < pairs_.size(); ++i) {
        if (Traits::same(key, pairs_[i].first)) return i;
      }
      return kNowhere;
    }
    const std::size_t mask = index_.size() - 1;
    for (std::size_t slot = Traits::hash(key) & mask; index_[slot] != 0; slot = (slot + 1) & mask) {
      const std::size_t at = index_[slot] - 1;
      if (Traits::same(key, pairs_[at].first)) return at;
    }
    return kNowhere;
  }

  // index_ holds positions plus one, 0 where free; its size is a power of two, at least twice the
  // pairs.
  void enter(std::size_t at) noexcept {
    const std::size_t mask = index_.size() - 1;
    std::size_t slot = home(at);
    while (index_[slot] != 0) slot = (slot + 1) & mask;
    index_[slot] = static_cast<std::uint32_t>(at + 1);
  }

  std::size_t home(std::size_t at) const noexcept {
    return Traits::hash(Traits::view(pairs_[at].first)) & (index_.size() - 1);
  }

  // The slot that leads to position at, whose key is key.
  std::size_t slotOf(KeyView key, std::size_t at) const noexcept {
    const std::size_t mask = index_.size() - 1;
    std::size_t slot = Traits::hash(key) & mask;
    while (index_[slot] != at + 1) slot = (slot + 1) & mask;
    return slot;
  }

  // Frees a slot and moves later ones of its run back, so that no run has a gap before its keys.
  void leave(std::size_t hole) noexcept {
    const std::size_t mask = index_.size() - 1;
    for (std::size_t slot = (hole + 1) & mask; index_[slot] != 0; slot = (slot + 1) & mask) {
      const std::size_t wanted = home(index_[slot] - 1);
      if (((slot - wanted) & mask) < ((slot - hole) & mask)) continue;
      index_[hole] = index_[slot];
      hole = slot;
    }
    index_[hole] = 0;
  }

  void rebuildIndex(std::size_t least) {
    std::size_t size = 4 * kLinear;
    while (size < least) size *= 2;
    std::vector<std::uint32_t>(size).swap(index_);
    for (std::size_t at = 0; at < pairs_.size(); ++at) enter(at);
  }

  std::vector<Pair> pairs_;
  std::vector<std::uint32_t> index_;
};

// Keys that are 64-bit numbers, such as entry IDs.
struct NumberKeyTraits {
  using KeyView = std::uint64_t;
  static std::uint64_t view(std::uint64_t key) noexcept { return key; }
  static bool same(std::uint64_t a, std::uint64_t b) noexcept { return a == b; }
  // Entry IDs run on: sixteen in a row share a line of the cache. What is above is mixed well (the
  // finaliser of SplitMix64), so that other regular patterns do not cluster; nor do IDs that go up
  // in steps of sixteen, as disks are numbered: their place in the line comes from the bits above.
  static std::size_t hash(std::uint64_t key) noexcept {
    std::uint64_t group = key >> 4;
    group = (group ^ (group >> 30)) * 0xBF58476D1CE4E5B9ULL;
    group = (group ^ (group >> 27)) * 0x94D049BB133111EBULL;
    group ^= group >> 31;
    return static_cast<std::size_t>(group << 4 | ((key ^ (key >> 4)) & 15));
  }
};

template <class Value>
using NumberMap = OrderedMap<std::uint64_t, Value, NumberKeyTraits>;

}  // namespace ob
