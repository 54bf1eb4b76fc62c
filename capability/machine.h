// The devices of the machine behind numbers, and the checks of what callers pass.
#pragma once

#include "capability/call_handle.h"

#include <utility>
#include <vector>

namespace qv {

// Root devices and nodes are plain numbers. All operations return a transport code.
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
// devices are to be offered under, or null.
machine look_at_machine(const char* loader, const char* versions);

} // namespace qv
