#pragma once

#include "access/opencl/command_queue.h"
#include "access/opencl/event.h"
#include "access/opencl/host_command_queue.h"
#include "ir/device_command.h"
#include "memory/device_memory.h"
#include "memory/opencl_buffer_allocation.h"
#include "opencl/opencl_version.h"

#include <typeinfo>

namespace oryn::tarva::library::device_ir::opencl {

// The queue class that a version's dispatcher enqueues on.
template <version V>
using dispatch_queue = skerv::opencl::host_queue<V>;

template <version V>
inline constexpr auto
    opencl_kind = static_cast<command_kind>(static_cast<std::uint32_t>(command_kind::opencl) +
                                            version_traits<V>::capability);

// A step that becomes one OpenCL command. The dispatcher of a version runs only commands of that version.
template <version V>
class opencl_device_command : public device_command {
public:
  explicit opencl_device_command(std::shared_ptr<physical_ir::physical_operation> operation)
      : device_command(opencl_kind<V>, std::move(operation)) {}

  // True for a command that needs no OpenCL, as things stand when its turn has come: it is not enqueued, and its end is
  // told in its turn.
  virtual bool has_nothing_to_do() const { return false; }
  // Checks, enqueues, and marks the command as submitted. What it throws has left nothing enqueued.
  virtual skerv::opencl::event<V> enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                          void* const* wait_list) = 0;

protected:
  library_device& get_device() const {
    const auto& device = this->get_physical_operation()->get_device();
    if (!device)
      throw std::logic_error("No device associated with a device command that requires a device. This is an "
                             "error.");
    return *device;
  }

  skerv::opencl::event<V> submit(dispatch_queue<V>& queue, const skerv::opencl::command<V>& command,
                                 std::uint32_t wait_count, void* const* wait_list) {
    skerv::opencl::event<V> event = queue.enqueue(command, wait_count, wait_list);
    this->set_submitted();
    return event;
  }
};

// The OpenCL buffer behind a block. A block of another version's device is refused. The class of the allocation is
// final, so a comparison of types is enough.
template <version V>
const skerv::opencl::buffer<V>& buffer_of(const device_memory& memory) {
  using allocation = opencl_buffer_allocation<skerv::opencl::buffer<V>>;
  const device_memory_allocation& found = memory.get_allocation();
  if (typeid(found) != typeid(allocation))
    throw std::bad_cast();
  return static_cast<const allocation&>(found).get_buffer();
}

template <version V>
std::string class_text(const char* name) {
  return std::string("opencl_") + version_traits<V>::name + "::" + name + ": {";
}

} // namespace oryn::tarva::library::device_ir::opencl
