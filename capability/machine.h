// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The devices of the machine behind numbers: which there are, and the checks of what callers pass for them.
//
// A device is offered if it says what it is and gives a context and queues; whether it counts itself as available is a
// property of it. Nothing that a platform or device does wrong while it is looked at touches the others: it is left out, and a
// line of the log says why.
#pragma once

#include "capability/dispatch.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace qv {

// All devices that can be used, in the order of the loader's platforms, custom devices behind the other devices of theirs.
// Each is offered under `forced` if that holds any capability, else under its natural one. Throws if there is too little
// memory to look at the machine.
std::vector<root_device> find_root_devices(const opencl_functions& cl, const capability_set& forced);

// Owns the root devices, which do not move or go as long as it is there. It does not change, so that any thread may ask it.
//
// Root devices and nodes are plain numbers. All operations return a transport code, and write nothing if it is a failure.
class machine {
public:
  explicit machine(std::vector<root_device> devices) : devices_(std::move(devices)) {}

  std::int32_t get_root_devices(std::uint64_t count, std::uint64_t* array, std::uint64_t* out_count) const;
  std::int32_t find_capability_nodes(std::uint64_t root, std::uint64_t capability, std::uint64_t count,
                                     std::uint64_t* array, std::uint64_t* out_count) const;
  std::int32_t create_call_handle(std::uint64_t root, std::uint64_t node, qv_call_handle** out_handle) const;

private:
  const root_device* find(std::uint64_t root) const;

  std::vector<root_device> devices_;
};

// Looks at the machine through the OpenCL loader `loader`; `versions` is the list of versions that the
// devices are to be offered under, or null. Without the loader there are no devices. Throws as above.
machine look_at_machine(const char* loader, const char* versions);

} // namespace qv
