// A map that keeps the order in which it was filled and costs little when small: a vector of pairs.
// A hash index is added only above kLinear pairs.
//
// Thread safety: reads may run side by side; a change must be alone.
// Ownership: iterators and pointers into the map are valid until its next change.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "runtime/hash.hpp"

namespace ob {

// Traits has a type KeyView, which look-ups are made with, and three static functions:
// `KeyView view(const Key&)`, `bool same(KeyView, const Key&)` and `std::size_t hash(KeyView)`.
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

  // Returns the value under the key, or null if there is none.
  const Value* find(KeyView key) const noexcept {
    const std::size_t at = position(key);
    return at == kNowhere ? nullptr : &pairs_[at].second;
  }
  bool contains(KeyView key) const noexcept { return position(key) != kNowhere; }

  // Returns the same as find. Faster if look-ups mostly follow the order of the map: tries the pair
  // after `cursor` first, and so saves most reads of the index. Sets `cursor` to the pair that it
  // found. The cursor may start with any number.
  const Value* findAfter(std::size_t& cursor, KeyView key) const noexcept {
    const std::size_t next = cursor + 1;
    const bool follows = next < pairs_.size() && Traits::same(key, pairs_[next].first);
    const std::size_t at = follows ? next : position(key);
    if (at == kNowhere) return nullptr;
    cursor = at;
    return &pairs_[at].second;
  }

  // Adds the pair at the end, or replaces the value under an equal key in its place.
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

  // Removes the pair under the key, if any. Up to kLinear pairs keep their order. In a larger map
  // the last pair takes the place of the removed one, so that the cost does not grow with the size.
  void erase(KeyView key) {
    const std::size_t at = position(key);
    if (at == kNowhere) return;
    // Its destructor may run code that uses the map, so it runs last, when the map is whole again.
    [[maybe_unused]] const Pair removed = std::move(pairs_[at]);
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

  // A slot of index_ holds a position plus one, or 0 if it is free. The number of slots is a power
  // of two and at least twice the number of pairs.
  void enter(std::size_t at) noexcept {
    const std::size_t mask = index_.size() - 1;
    std::size_t slot = home(at);
    while (index_[slot] != 0) slot = (slot + 1) & mask;
    index_[slot] = static_cast<std::uint32_t>(at + 1);
  }

  std::size_t home(std::size_t at) const noexcept {
    return Traits::hash(Traits::view(pairs_[at].first)) & (index_.size() - 1);
  }

  // Returns the slot of position `at`, which holds `key`.
  std::size_t slotOf(KeyView key, std::size_t at) const noexcept {
    const std::size_t mask = index_.size() - 1;
    std::size_t slot = Traits::hash(key) & mask;
    while (index_[slot] != at + 1) slot = (slot + 1) & mask;
    return slot;
  }

  // Frees the slot. A search ends at the first free slot, so later slots of the same run move back
  // to close the gap.
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
  // Neighbouring entry IDs are often looked up together. So 16 neighbours get 16 neighbouring
  // slots, which share a line of the processor's cache. Disks have IDs in steps of 16: the higher
  // bits are mixed in, so that these do not all want the same slot of a line.
  static std::size_t hash(std::uint64_t key) noexcept {
    return static_cast<std::size_t>(hashOf(key >> 4) << 4 | ((key ^ (key >> 4)) & 15));
  }
};

template <class Value>
using NumberMap = OrderedMap<std::uint64_t, Value, NumberKeyTraits>;

}  // namespace ob
