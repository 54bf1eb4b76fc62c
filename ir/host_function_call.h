#pragma once

#include "ir/device_command.h"

#include <functional>

namespace oryn::tarva::library::device_ir {

// A step on the host: allocation, freeing, host copies and fills.
class host_function_call final : public device_command,
                                 public std::enable_shared_from_this<host_function_call> {
public:
  using function = std::function<void(const std::shared_ptr<device_command>&)>;

  host_function_call(std::shared_ptr<physical_ir::physical_operation> operation, function step)
      : device_command(command_kind::host_function_call, std::move(operation)), function_(std::move(step)) {}
  static std::shared_ptr<host_function_call>
  create(std::shared_ptr<physical_ir::physical_operation> operation, function step) {
    return std::make_shared<host_function_call>(std::move(operation), std::move(step));
  }

  std::string to_string() const override { return "host_function_call: { }"; }

  // A failure of the function ends this command and does not leave.
  void run();

private:
  function function_;
};

} // namespace oryn::tarva::library::device_ir
