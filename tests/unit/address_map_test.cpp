// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The map of addresses, against a model.
#include "base/address_map.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <unordered_map>
#include <vector>

namespace oryn::tarva::library {
namespace {

// What an ordinary map does with the same calls. Few keys collide and are removed often, many make the table grow
// and shrink; keys a page apart differ in their upper bits only.
class address_map_against_model : public ::testing::TestWithParam<std::pair<std::size_t, std::uintptr_t>> {};

TEST_P(address_map_against_model, agrees) {
  const auto [key_count, distance] = GetParam();
  const std::vector<char> addresses(distance * (key_count + 1));
  address_map<std::shared_ptr<int>> map;
  std::unordered_map<const void*, int> model;
  std::minstd_rand random(1);
  for (int step = 0; step < 60'000; ++step) {
    const auto* key = static_cast<const void*>(&addresses[distance * (random() % key_count)]);
    // Rather more insertions at first, and rather more removals at last.
    if (random() % 60'000 > static_cast<unsigned>(step)) {
      const auto [value, is_new] = map.try_emplace(key, std::make_shared<int>(step));
      EXPECT_EQ(is_new, model.try_emplace(key, step).second);
      EXPECT_EQ(**value, model.at(key));
    } else {
      const auto removed = map.extract(key);
      const auto expected = model.extract(key);
      ASSERT_EQ(removed.has_value(), !expected.empty());
      if (removed) {
        EXPECT_EQ(**removed, expected.mapped());
      }
    }
    const auto* value = map.find(key);
    ASSERT_EQ(value != nullptr, model.contains(key)) << step;
    ASSERT_EQ(map.size(), model.size());
  }
  std::size_t visited = 0;
  map.for_each([&](const void* key, const std::shared_ptr<int>& value) {
    EXPECT_EQ(*value, model.at(key));
    ++visited;
  });
  EXPECT_EQ(visited, model.size());
  EXPECT_EQ(map.find(nullptr), nullptr);
  EXPECT_EQ(map.extract(nullptr), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(keys, address_map_against_model,
                         ::testing::Values(std::pair{12, 16}, std::pair{300, 4096}, std::pair{20'000, 32}));

} // namespace
} // namespace oryn::tarva::library
