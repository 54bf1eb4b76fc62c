#pragma once

#include "access/opencl/event.h"
#include "ir/device_command.h"
#include "opencl/opencl_version.h"

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

// A command in a list. An OpenCL command that has been enqueued has an event.
template <version V>
struct work_item {
  explicit work_item(std::shared_ptr<device_command> made) : command(std::move(made)) {}

  std::shared_ptr<device_command> command;
  std::optional<skerv::opencl::event<V>> running{};
  bool has_nothing_to_do = false; // it is not enqueued, and has not failed
};

// The commands of one graph; those before `next` have ended.
template <version V>
struct work_list {
  std::vector<work_item<V>> items;
  std::size_t next = 0;
  std::exception_ptr fault{}; // why the graph has no order: ends the worker

  bool is_empty() const { return next == items.size(); }
  work_item<V>& head() { return items[next]; }
  const work_item<V>& head() const { return items[next]; }
  bool starts_with(command_kind kind) const { return !is_empty() && head().command->get_kind() == kind; }
};

// The command as the class that its kind stands for.
template <class Command>
Command& expect(device_command& command, const char* failure) {
  auto* const found = dynamic_cast<Command*>(&command);
  if (found == nullptr)
    throw std::logic_error(failure);
  return *found;
}

} // namespace oryn::tarva::library::device_ir::opencl
