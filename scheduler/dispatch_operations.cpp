// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "scheduler/dispatch_operations.h"

#include "objects/library_device.h"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <utility>

namespace oryn::tarva::library {

namespace {

using physical_pointer = std::shared_ptr<physical_ir::physical_operation>;
using command_pointer = std::shared_ptr<device_ir::device_command>;
using command_sequence = std::vector<command_pointer>;

command_sequence generate_commands(const physical_pointer& operation) {
  const auto& device = operation->device;
  if (!device)
    throw std::logic_error("Unsupported device type found.");
  return device->generate_commands(operation);
}

// No command may report to an operation that has not been counted.
void mark_submitted(const physical_pointer& operation, const command_sequence& commands) {
  operation->set_device_command_count(commands.size());
  operation->set_submitted();
}

device_work_dispatcher& dispatcher_of(const physical_graph& subgraph) {
  return subgraph.nodes().front()->device->get_dispatcher();
}

// The commands are counted before the worker can end any of them, and given back if the dispatcher refuses.
void submit_subgraph(const physical_graph& subgraph, const std::shared_ptr<prepared_work>& work,
                     std::uint64_t command_count) {
  const auto& operation = subgraph.nodes().front()->logical_operation;
  operation->add_device_commands(command_count);
  try {
    dispatcher_of(subgraph).submit_work(work);
  } catch (...) {
    operation->device_commands_ended(command_count);
    throw;
  }
}

bool is_on_one_device(const physical_graph& graph) {
  return std::all_of(graph.nodes().begin(), graph.nodes().end(),
                     [&graph](const auto& node) { return node->device == graph.nodes().front()->device; });
}

} // namespace

// First by device, as no edge runs between devices, then by what hangs together.
std::vector<physical_graph> device_subgraphs(const physical_graph& graph) {
  if (is_on_one_device(graph))
    return graph.disjoint_subgraphs();
  // Few devices, in the order in which the graph names them.
  std::vector<std::pair<std::shared_ptr<library_device>, std::vector<physical_pointer>>> by_device;
  for (const auto& node : graph.nodes()) {
    auto group = by_device.begin();
    while (group != by_device.end() && group->first != node->device)
      ++group;
    if (group == by_device.end())
      group = by_device.insert(group, {node->device, {}});
    group->second.push_back(node);
  }
  std::vector<physical_graph> subgraphs;
  for (const auto& group : by_device)
    for (auto& subgraph : physical_graph(graph, group.second).disjoint_subgraphs())
      subgraphs.push_back(std::move(subgraph));
  return subgraphs;
}

namespace {

void dispatch_subgraphs(std::span<const physical_graph> subgraphs, std::vector<command_graph>& commands) {
  // A mixture of devices would put commands on the wrong worker.
  if (!std::all_of(subgraphs.begin(), subgraphs.end(), is_on_one_device))
    throw std::logic_error("Expected all nodes in the subgraph to have the same device.");
  // All commands are made, and all room for them, before any is handed over: a subgraph that waits for another device
  // must not run if the other device's subgraph cannot be handed over, too.
  std::vector<std::shared_ptr<prepared_work>> prepared;
  commands.reserve(subgraphs.size());
  prepared.reserve(subgraphs.size());
  for (const auto& subgraph : subgraphs) {
    const command_graph& made = commands.emplace_back(subgraph, generate_commands, mark_submitted);
    prepared.push_back(dispatcher_of(subgraph).prepare_work(made));
  }
  for (std::size_t i = 0; i < subgraphs.size(); ++i)
    submit_subgraph(subgraphs[i], prepared[i], commands[i].nodes().size());
}

} // namespace

void dispatch_operations(const physical_graph& graph, std::vector<command_graph>& commands) {
  // Most operations are a single node, and that graph is its only subgraph.
  if (graph.nodes().size() == 1)
    return dispatch_subgraphs({&graph, 1}, commands);
  dispatch_subgraphs(device_subgraphs(graph), commands);
}

// Nothing else has these commands, so they need no dispatcher to put them in order among others.
void run_host_work(const physical_graph& graph) {
  const command_sequence commands =
      command_graph(graph, generate_commands, mark_submitted).topological_sort();
  graph.nodes().front()->logical_operation->add_device_commands(commands.size());
  for (const command_pointer& command : commands)
    static_cast<device_ir::host_function_call&>(*command).run();
}

} // namespace oryn::tarva::library
