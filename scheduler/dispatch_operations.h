#pragma once

#include "ir/device_command.h"
#include "ir/dag.h"
#include "ir/physical_operation.h"

#include <memory>
#include <vector>

namespace oryn::tarva::library {

using physical_graph = dag<std::shared_ptr<physical_ir::physical_operation>>;
using command_graph = dag<std::shared_ptr<device_ir::device_command>>;

// Cuts the graph by device and connected component, makes the device commands of each piece, and hands them
// to the device's dispatcher. Each piece may be running as soon as it is handed over; if a later one fails,
// those before it are not recalled.
//
// Returns the commands. Who keeps them until they have ended is nearly always the one to free them: storage that is freed
// by the thread which obtained it is at hand for the next request, while malloc has to put that of other threads back in
// order.
[[nodiscard]] std::vector<command_graph> dispatch_operations(const physical_graph& graph);

// The pieces: connected sets of nodes of one device each.
std::vector<physical_graph> device_subgraphs(const physical_graph& graph);

} // namespace oryn::tarva::library
