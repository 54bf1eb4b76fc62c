// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The graph in which operations and commands stand.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// A directed graph over shared pointers; a node is identified by its pointer's value. It only grows. The scheduler makes one of
// physical operations for each logical operation, cuts it into subgraphs, and turns each of those into one of device commands.
//
// It has no lock: a graph belongs to the thread that starts its operation. What is wrong with a use of it throws
// std::logic_error; the texts name no node, since a node has no name.
//
// Nodes keep the order of their insertion and edges that of theirs, so that every walk is repeatable. Inside,
// a node is its index. Most graphs are one node, so the rest is built only when it is needed: the edges with the
// first of them, and the map from pointer to index when a graph outgrows a short search.
template <class T>
class dag {
public:
  dag() = default;
  dag(const dag&) = default;
  dag(dag&&) noexcept = default;
  dag& operator=(const dag&) = default;
  dag& operator=(dag&&) noexcept = default;
  virtual ~dag() = default;

  // The subgraph of `source` on `subset`. Every edge that leaves a member must end in a member; edges that
  // enter from outside are dropped.
  dag(const dag& source, const std::vector<T>& subset) {
    for (const T& node : subset)
      insert_node(node);
    for (const T& node : subset)
      for (const std::size_t successor : source.successor_indices(source.index_of(node)))
        insert_edge(node, source.nodes_[successor]);
  }

  // Replaces every node of `source` by the chain that `replace` gives, and keeps the edges: they enter a
  // chain at its head and leave it at its tail. `after` is called for each node once the whole graph stands.
  template <class S>
  dag(const dag<S>& source, const std::type_identity_t<std::function<std::vector<T>(const S&)>>& replace,
      const std::type_identity_t<std::function<void(const S&, const std::vector<T>&)>>& after = {}) {
    std::vector<std::vector<T>> replacements;
    replacements.reserve(source.nodes().size());
    for (const S& node : source.nodes()) {
      std::vector<T>& chain = replacements.emplace_back(replace(node));
      if (chain.empty())
        throw std::logic_error("DAG conversion requires that replacement set be non-empty.");
      for (const T& link : chain)
        insert_node(link);
      for (std::size_t i = 1; i < chain.size(); ++i)
        insert_edge(chain[i - 1], chain[i]);
    }
    if (replacements.size() > 1)
      for (std::size_t from = 0; from < replacements.size(); ++from)
        for (const std::size_t to : source.successor_indices(from))
          insert_edge(replacements[from].back(), replacements[to].front());
    if (after)
      for (std::size_t i = 0; i < replacements.size(); ++i)
        after(source.nodes()[i], replacements[i]);
  }

  // In the order of their insertion; the index of a node is its place there.
  const std::vector<T>& nodes() const { return nodes_; }
  std::span<const std::size_t> successor_indices(std::size_t index) const {
    return indices_of(index, &edges::successors);
  }

  // A node that is already present is left alone.
  void insert_node(const T& node) {
    if (find(node) != absent)
      return;
    nodes_.push_back(node);
    if (nodes_.size() > short_search)
      enter_in_index();
  }

  // Both nodes must exist and the edge must not.
  void insert_edge(const T& from, const T& to) {
    const std::size_t tail = index_of(from);
    const std::size_t head = index_of(to);
    for (const std::size_t successor : successor_indices(tail))
      if (successor == head)
        throw std::logic_error("Attempting to insert an edge into the DAG that already exists.");
    if (edges_.size() < nodes_.size())
      edges_.resize(nodes_.size());
    edges_[tail].successors.push_back(head);
    edges_[head].predecessors.push_back(tail);
  }

  // Calls `visit` on each node after everything reachable from it. Stops at once when a cycle is met. A stack of its own takes
  // the place of recursion, so that a long chain cannot use up the thread's stack.
  void depth_first_search(bool& has_cycle, const std::function<void(const T&)>& visit) const {
    // Not seen yet; being worked on, with what is above it on the stack; visited.
    enum class colour : std::uint8_t { white, grey, black };
    has_cycle = false;
    std::vector<colour> colours = label_nodes(colour::white, "Inserting a node label failed during the DFS.");
    std::vector<std::size_t> stack;
    for (std::size_t root = 0; root < nodes_.size(); ++root) {
      if (colours[root] == colour::white)
        stack.push_back(root);
      while (!stack.empty()) {
        const std::size_t node = stack.back();
        if (colours[node] == colour::white) {
          colours[node] = colour::grey;
          for (const std::size_t successor : successor_indices(node)) {
            if (colours[successor] == colour::grey) {
              has_cycle = true;
              return;
            }
            if (colours[successor] == colour::white)
              stack.push_back(successor);
          }
          continue;
        }
        if (colours[node] == colour::grey) {
          visit(nodes_[node]);
          colours[node] = colour::black;
        } else if (indices_of(node, &edges::predecessors).size() < 2) {
          // Only a second edge brings a second entry, which may lie below the one that was finished.
          throw std::logic_error("DAG DFS: Node label is BLACK, but this should never happen.");
        }
        stack.pop_back();
      }
    }
  }

  // The nodes in an order in which every edge points forward. Without edges it is the reverse of the insertion, as a search
  // through them would give.
  std::vector<T> topological_sort() const {
    if (edges_.empty())
      return {nodes_.rbegin(), nodes_.rend()};
    std::vector<T> order;
    order.reserve(nodes_.size());
    bool has_cycle = false;
    depth_first_search(has_cycle, [&order](const T& node) { order.push_back(node); });
    if (has_cycle)
      throw std::logic_error(
          "Attempting to perform a topological sort on a graph that is not a DAG, because it "
          "contains cycles.");
    std::reverse(order.begin(), order.end());
    return order;
  }

  // The connected components, edges taken without direction, in the order of their first nodes. They can be worked on without
  // regard to each other.
  std::vector<dag> disjoint_subgraphs() const {
    if (nodes_.size() == 1)
      return std::vector<dag>(1, *this);
    constexpr std::size_t no_colour = 0;
    std::vector<std::size_t> colours =
        label_nodes(no_colour, "Inserting a node color failed while finding disjoint subgraphs.");
    std::vector<std::vector<T>> members;
    std::vector<std::size_t> stack;
    for (std::size_t root = 0; root < nodes_.size(); ++root) {
      if (colours[root] != no_colour)
        continue;
      members.emplace_back();
      const std::size_t current = members.size();
      stack.push_back(root);
      while (!stack.empty()) {
        const std::size_t node = stack.back();
        stack.pop_back();
        if (colours[node] == current)
          continue;
        if (colours[node] != no_colour)
          throw std::logic_error("Impossible situation discovered in graph coloring algorithm.");
        colours[node] = current;
        members.back().push_back(nodes_[node]);
        for (const auto side : {&edges::successors, &edges::predecessors})
          for (const std::size_t neighbour : indices_of(node, side))
            stack.push_back(neighbour);
      }
    }
    if (members.size() == 1)
      return std::vector<dag>(1, *this);
    std::vector<dag> result;
    result.reserve(members.size());
    for (const auto& component : members)
      result.emplace_back(*this, component);
    return result;
  }

private:
  static constexpr std::size_t absent = ~std::size_t{0};
  static constexpr std::size_t short_search = 16;

  // Of one node.
  struct edges {
    std::vector<std::size_t> successors;
    std::vector<std::size_t> predecessors;
  };

  std::span<const std::size_t> indices_of(std::size_t node, std::vector<std::size_t> edges::*side) const {
    if (node >= edges_.size())
      return {};
    return edges_[node].*side;
  }

  std::size_t find(const T& node) const {
    if (nodes_.size() <= short_search) {
      for (std::size_t i = 0; i < nodes_.size(); ++i)
        if (nodes_[i] == node)
          return i;
      return absent;
    }
    const auto found = index_.find(node.get());
    return found == index_.end() ? absent : found->second;
  }

  // A label for each node. A node that stood here twice would have two.
  template <class Label>
  std::vector<Label> label_nodes(Label first, const char* failure) const {
    for (std::size_t i = 0; i < nodes_.size(); ++i)
      if (find(nodes_[i]) != i)
        throw std::runtime_error(failure);
    return std::vector<Label>(nodes_.size(), first);
  }

  std::size_t index_of(const T& node) const {
    const std::size_t index = find(node);
    if (index == absent)
      throw std::logic_error("DAG node does not exist, but it was expected to exist.");
    return index;
  }

  void enter_in_index() {
    for (std::size_t i = index_.size(); i < nodes_.size(); ++i)
      if (!index_.emplace(nodes_[i].get(), i).second)
        throw std::runtime_error("Insertion of node into DAG failed.");
  }

  std::vector<T> nodes_;
  std::vector<edges> edges_;
  std::unordered_map<const void*, std::size_t> index_;
};

} // namespace oryn::tarva::library
