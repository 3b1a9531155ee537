// The ordered map against a model of it, below and above the size from which it is indexed.
#include "runtime/ordered_map.hpp"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

TEST(OrderedMap, KeepsTheOrderOfArrivalAndReplacesInPlace) {
  ob::NumberMap<int> map;
  for (const std::uint64_t key : {5u, 3u, 9u}) map.set(key, 1);
  map.set(3, 2);
  std::vector<std::pair<std::uint64_t, int>> pairs(map.begin(), map.end());
  EXPECT_EQ(pairs, (std::vector<std::pair<std::uint64_t, int>>{{5, 1}, {3, 2}, {9, 1}}));
  map.erase(5);
  EXPECT_EQ(map.begin()->first, 3u);
  EXPECT_EQ(map.find(5), nullptr);
}

TEST(OrderedMap, AgreesWithAModelThroughRandomChanges) {
  for (const std::uint64_t keys : {8u, 40u, 3000u}) {
    std::mt19937_64 random(keys);
    ob::NumberMap<std::uint64_t> map;
    std::map<std::uint64_t, std::uint64_t> model;
    for (int step = 0; step < 20'000; ++step) {
      const std::uint64_t key = random() % keys;
      if (random() % 5 < 2) {
        map.erase(key);
        model.erase(key);
      } else {
        map.set(key, random());
        model[key] = *map.find(key);
      }
      ASSERT_EQ(map.size(), model.size());
    }
    for (std::uint64_t key = 0; key < keys; ++key) {
      const auto known = model.find(key);
      ASSERT_EQ(map.contains(key), known != model.end()) << key;
      if (known != model.end()) {
        ASSERT_EQ(*map.find(key), known->second);
      }
    }
    std::size_t cursor = random();
    for (const auto& [key, value] : map) ASSERT_EQ(map.findAfter(cursor, key), &value);
    for (std::uint64_t key = keys; key-- > 0;) {  // in another order, and the absent ones
      ASSERT_EQ(map.findAfter(cursor, key), map.find(key)) << key;
    }
    const std::map<std::uint64_t, std::uint64_t> walked(map.begin(), map.end());
    EXPECT_EQ(walked, model);
    map.clear();
    EXPECT_TRUE(map.empty());
    EXPECT_FALSE(map.contains(0));
    EXPECT_EQ(map.findAfter(cursor, 0), nullptr);
  }
}

}  // namespace
