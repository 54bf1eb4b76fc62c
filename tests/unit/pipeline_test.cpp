// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The parts of the pipeline that need no device: the graph, blocks of memory, byte order, attributes, roots.
#include "ir/dag.h"
#include "memory/host_memory.h"
#include "objects/launch_limits.h"
#include "objects/library_program.h"
#include "tests/error_of.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace oryn::tarva::library {
namespace {

using number = std::shared_ptr<int>;

struct graph_of_numbers {
  explicit graph_of_numbers(int count) {
    for (int i = 0; i < count; ++i)
      nodes.push_back(std::make_shared<int>(i));
    for (const auto& node : nodes)
      graph.insert_node(node);
  }
  void edge(int from, int to) { graph.insert_edge(nodes[from], nodes[to]); }
  std::vector<int> sorted() const {
    std::vector<int> order;
    for (const auto& node : graph.topological_sort())
      order.push_back(*node);
    return order;
  }

  std::vector<number> nodes;
  dag<number> graph;
};

TEST(graph, refuses_what_is_no_graph) {
  graph_of_numbers made(2);
  made.edge(0, 1);
  EXPECT_THROW(made.edge(0, 1), std::logic_error);
  EXPECT_THROW(made.graph.insert_edge(made.nodes[0], std::make_shared<int>(7)), std::logic_error);
  EXPECT_THROW(dag<number>(made.graph, std::vector<number>{made.nodes[0]}), std::logic_error) << "no way out";
  EXPECT_EQ(dag<number>(made.graph, std::vector<number>{made.nodes[1]}).nodes().size(), 1U);
  made.edge(1, 0);
  EXPECT_EQ(
      error_of([&] { made.sorted(); }),
      "Attempting to perform a topological sort on a graph that is not a DAG, because it contains cycles.");
  const std::function<std::vector<number>(const number&)> to_nothing = [](const number&) {
    return std::vector<number>{};
  };
  EXPECT_THROW(dag<number>(made.graph, to_nothing), std::logic_error);
}

// Beyond the size at which a node is found by a short search, and with nodes that are reached twice.
TEST(graph, sorts_every_edge_forward_and_finds_components) {
  constexpr int size = 100;
  graph_of_numbers made(size + 3);
  for (int from = 0; from < size; ++from)
    for (int to = from + 1; to < std::min(size, from + 4); ++to)
      made.edge(from, to);
  made.edge(size + 2, size + 1);
  std::vector<int> expected(size);
  std::iota(expected.begin(), expected.end(), 0);
  std::vector<int> order = made.sorted();
  order.erase(std::remove_if(order.begin(), order.end(), [](int node) { return node >= size; }), order.end());
  EXPECT_EQ(order, expected);

  const auto components = made.graph.disjoint_subgraphs();
  ASSERT_EQ(components.size(), 3U);
  EXPECT_EQ(components[0].nodes().size(), 100U);
  EXPECT_EQ(components[1].nodes().size(), 1U);
  ASSERT_EQ(components[2].nodes().size(), 2U);
  EXPECT_EQ(*components[2].topological_sort().front(), size + 2);
}

TEST(host_block, fills_every_element_of_a_large_block) {
  host_memory block;
  block.set_allocation(data_type::int8v3_, 100'003);
  block.allocate();
  block.fill({9, 8, 7, 6}, 0, 100'003);
  const auto* bytes = static_cast<const std::uint8_t*>(block.get_read_pointer(0));
  for (std::size_t i = 0; i < 400'012; ++i)
    ASSERT_EQ(bytes[i], 9 - i % 4) << i;
  block.free();
}

// Which components are reversed is to be seen on a device of the other order; here, where it begins and ends.
TEST(byte_order, is_reversed_in_the_range_alone) {
  std::array<std::uint8_t, 16> bytes{};
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
  swap_endianness(bytes.data(), data_type::uint16v3_, 1, 1);
  swap_endianness(bytes.data(), data_type::boolean_, 0, 4);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 16>{0, 1, 2, 3, 4, 5, 6, 7, 9, 8, 11, 10, 13, 12, 14, 15}));
  EXPECT_THROW(swap_endianness(bytes.data(), data_type{0}, 0, 0), std::logic_error);
}

TEST(attributes, tell_a_size_if_they_are_clear) {
  for (const auto& [words, expected] : std::vector<std::pair<std::vector<std::string>, size_triple>>{
           {{"reqd_work_group_size(8,4,2),work_group_size_hint(8,4,1)"}, {8, 4, 2}},
           {{"vec_type_hint(int)", "__attribute__((reqd_work_group_size(8,", "4,", "2", ")))"}, {8, 4, 2}},
           {{"reqd_work_group_size(18446744073709551615,1,1)"}, {UINT64_MAX, 1, 1}},
           {{"reqd_work_group_size(18446744073709551616,1,1)"}, {}},
           {{"reqd_work_group_size(8,4,0)"}, {}},
           {{"reqd_work_group_size(8,4)"}, {}},
           {{"reqd_work_group_size(8,4,2"}, {}},
           {{"reqd_work_group_size(-8,4,2)"}, {}},
           {{"reqd_work_group_size("}, {}},
           {{"reqd_work_group_size"}, {}},
           {{}, {}}})
    EXPECT_EQ(find_required_group_size(words).value_or(size_triple{}), expected)
        << testing::PrintToString(words);
}

TEST(roots, are_rounded_down) {
  for (std::uint64_t value = 0; value <= 1U << 20; ++value) {
    const std::uint64_t square = integer_square_root(value);
    const std::uint64_t cube = integer_cube_root(value);
    ASSERT_TRUE(square * square <= value && (square + 1) * (square + 1) > value) << value;
    ASSERT_TRUE(cube * cube * cube <= value && (cube + 1) * (cube + 1) * (cube + 1) > value) << value;
  }
  EXPECT_EQ(integer_square_root(UINT64_MAX), 0xFFFFFFFFU);
  EXPECT_EQ(integer_cube_root(UINT64_MAX), 2642245U);
}

} // namespace
} // namespace oryn::tarva::library
