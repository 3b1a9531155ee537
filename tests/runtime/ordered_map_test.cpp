// The ordered map against a model of it, below and above the size from which it is indexed.
#include "runtime/ordered_map.hpp"

#include <gtest/gtest.h>

#include <random>

namespace {

using Pairs = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

TEST(OrderedMap, AgreesWithAModelThroughRandomChanges) {
  for (const std::uint64_t keys : {8u, 40u, 1000u}) {
    std::mt19937_64 random(keys);
    ob::NumberMap<std::uint64_t> map;
    Pairs model;
    const auto place = [&](std::uint64_t key) {
      return std::find_if(model.begin(), model.end(),
                          [=](auto& pair) { return pair.first == key; });
    };
    for (int step = 0; step < 20'000; ++step) {
      const std::uint64_t key = random() % keys;
      const auto at = place(key);
      if (random() % 5 < 2) {
        map.erase(key);
        if (at != model.end()) model.erase(at);
      } else {
        map.set(key, static_cast<std::uint64_t>(step));
        if (at == model.end()) model.emplace_back(key, 0);
        place(key)->second = static_cast<std::uint64_t>(step);
      }
      ASSERT_EQ(map.size(), model.size());
    }
    Pairs walked(map.begin(), map.end());
    if (keys > map.kLinear) {  // a large one does not keep the order
      std::sort(walked.begin(), walked.end());
      std::sort(model.begin(), model.end());
    }
    EXPECT_EQ(walked, model);
    std::size_t cursor = random();
    for (const auto& [key, value] : map) ASSERT_EQ(map.findAfter(cursor, key), &value);
    for (std::uint64_t key = keys; key-- > 0;) {  // in another order, and the absent ones
      const auto at = place(key);
      const auto* found = map.find(key);
      ASSERT_EQ(found == nullptr, at == model.end()) << key;
      ASSERT_TRUE(found == nullptr || *found == at->second) << key;
      ASSERT_EQ(map.findAfter(cursor, key), found) << key;
      ASSERT_EQ(map.contains(key), found != nullptr) << key;
    }
    map.clear();
    EXPECT_TRUE(map.empty());
    EXPECT_FALSE(map.contains(0));
    EXPECT_EQ(map.findAfter(cursor, 0), nullptr);
  }
}

}  // namespace
