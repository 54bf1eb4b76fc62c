// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// How the graph of a logical operation gets to the workers.
#pragma once

#include "ir/dag.h"
#include "ir/device_command.h"
#include "ir/physical_operation.h"

#include <memory>
#include <vector>

namespace oryn::tarva::library {

using physical_graph = dag<std::shared_ptr<physical_ir::physical_operation>>;
using command_graph = dag<std::shared_ptr<device_ir::device_command>>;

// Cuts the graph by device and connected component, makes the device commands of each subgraph, and hands them
// to the device's dispatcher. Each subgraph may be running as soon as it is handed over; if a later one fails,
// those before it are not recalled. The graph and the commands may be gone once all have been handed over.
//
// `commands` gets the commands beforehand. If the caller keeps them until they have ended, they are nearly always freed on the
// caller's thread. That is faster: malloc gives a thread what it has freed itself at once, and what others have freed later.
void dispatch_operations(const physical_graph& graph, std::vector<command_graph>& commands);

// Runs a graph of host work on this thread, and returns when it has ended.
void run_host_work(const physical_graph& graph);

// Connected sets of nodes of one device each.
std::vector<physical_graph> device_subgraphs(const physical_graph& graph);

} // namespace oryn::tarva::library
