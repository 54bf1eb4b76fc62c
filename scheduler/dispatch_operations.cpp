#include "scheduler/dispatch_operations.h"

#include "opencl/generate_device_command_sequence.h"
#include "objects/device_work_dispatcher.h"
#include "opencl/opencl_device.h"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <typeinfo>
#include <utility>

namespace oryn::tarva::library {

namespace {

using physical_pointer = std::shared_ptr<physical_ir::physical_operation>;
using command_pointer = std::shared_ptr<device_ir::device_command>;
using command_sequence = std::vector<command_pointer>;
using sequence_generator = command_sequence (*)(const physical_pointer&);

// The classes of devices are final, so a comparison of types is enough.
template <version... Vs>
sequence_generator find_generator(const library_device& device) {
  sequence_generator found = nullptr;
  // The first version that fits ends the search.
  static_cast<void>(((typeid(device) == typeid(opencl_version_device<Vs>)
                          ? (found = &device_ir::opencl::generate_device_command_sequence<Vs>, true)
                          : false) ||
                     ...));
  return found;
}

sequence_generator generator_for(const library_device* device) {
  const sequence_generator found = device == nullptr
                                       ? nullptr
                                       : find_generator<version::v1_0, version::v1_1, version::v1_2,
                                                        version::v2_0, version::v2_1, version::v2_2>(*device);
  if (found == nullptr)
    throw std::logic_error("Unsupported device type found.");
  return found;
}

// No command may report to an operation that has not been counted.
void mark_submitted(const physical_pointer& operation, const command_sequence& commands) {
  operation->set_device_command_count(commands.size());
  operation->set_submitted();
}

device_work_dispatcher& dispatcher_of(const physical_graph& piece) {
  return piece.nodes().front()->get_device()->get_dispatcher();
}

void submit_piece(const physical_graph& piece, std::unique_ptr<prepared_work> work,
                  std::uint64_t command_count) {
  const auto& request = piece.nodes().front()->get_logical_operation();
  request->add_device_commands(command_count);
  try {
    dispatcher_of(piece).submit_work(std::move(work));
  } catch (...) {
    request->device_commands_ended(command_count);
    throw;
  }
}

bool is_on_one_device(const physical_graph& graph) {
  return std::all_of(graph.nodes().begin(), graph.nodes().end(), [&graph](const auto& node) {
    return node->get_device() == graph.nodes().front()->get_device();
  });
}

void check_piece(const physical_graph& piece) {
  if (!is_on_one_device(piece))
    throw std::logic_error("Expected all nodes in the subgraph to have the same device.");
}

} // namespace

std::vector<physical_graph> device_subgraphs(const physical_graph& graph) {
  if (is_on_one_device(graph))
    return graph.disjoint_subgraphs();
  // Few devices, in the order in which the graph names them.
  std::vector<std::pair<std::shared_ptr<library_device>, std::vector<physical_pointer>>> by_device;
  for (const auto& node : graph.nodes()) {
    auto group = by_device.begin();
    while (group != by_device.end() && group->first != node->get_device())
      ++group;
    if (group == by_device.end())
      group = by_device.insert(group, {node->get_device(), {}});
    group->second.push_back(node);
  }
  std::vector<physical_graph> pieces;
  for (const auto& group : by_device)
    for (auto& piece : physical_graph(graph, group.second).disjoint_subgraphs())
      pieces.push_back(std::move(piece));
  return pieces;
}

namespace {

std::vector<command_graph> dispatch_pieces(std::span<const physical_graph> pieces) {
  for (const auto& piece : pieces)
    check_piece(piece);
  // All commands are made, and all room for them, before any is handed over: a piece that waits for another device
  // must not run if the other device's piece cannot be handed over, too.
  std::vector<command_graph> commands;
  std::vector<std::unique_ptr<prepared_work>> prepared;
  commands.reserve(pieces.size());
  prepared.reserve(pieces.size());
  for (const auto& piece : pieces) {
    const auto generate = generator_for(piece.nodes().front()->get_device().get());
    const command_graph& made = commands.emplace_back(piece, generate, mark_submitted);
    prepared.push_back(dispatcher_of(piece).prepare_work(made));
  }
  for (std::size_t i = 0; i < pieces.size(); ++i)
    submit_piece(pieces[i], std::move(prepared[i]), commands[i].nodes().size());
  return commands;
}

} // namespace

std::vector<command_graph> dispatch_operations(const physical_graph& graph) {
  // Most requests are one step: that graph is its own only piece.
  if (graph.nodes().size() == 1)
    return dispatch_pieces({&graph, 1});
  return dispatch_pieces(device_subgraphs(graph));
}

} // namespace oryn::tarva::library
