// Objects of the pipeline that have no OpenCL behind them.
#pragma once

#include "ir/device_command.h"
#include "ir/dag.h"
#include "memory/device_memory.h"
#include "objects/library_device.h"
#include "objects/library_program.h"

#include <stdexcept>

namespace oryn::tarva::library {

class fake_device final : public library_device {
public:
  explicit fake_device(bool little_endian = true) : little_endian_(little_endian) {}

  std::shared_ptr<property_base> get_property(property_path) override { return {}; }
  std::vector<std::string> get_child_names(const property_path&) override { return {}; }
  void initialize() override {}
  void release() override {}
  bool is_ir_supported(const std::shared_ptr<const ir_header>&, std::uint64_t,
                       const std::vector<std::uint8_t>&, const std::string&) override {
    return false;
  }
  build_result load_ir(const std::shared_ptr<const ir_header>&, std::uint64_t,
                       const std::vector<std::uint8_t>&, const std::string&, const std::string&) override {
    return {false, nullptr, {}};
  }
  std::shared_ptr<library_program> get_builtin_program() override { return {}; }
  bool is_little_endian() override { return little_endian_; }
  std::string get_friendly_short_description() override { return "fake"; }
  std::string get_friendly_summary() override { return "fake"; }
  std::unique_ptr<device_memory_allocation> allocate_memory(data_type, std::uint64_t) override { return {}; }
  void free_memory(std::unique_ptr<device_memory_allocation>&) override {}

private:
  const bool little_endian_;
};

class fake_kernel final : public library_kernel {
public:
  explicit fake_kernel(const std::shared_ptr<library_device>& device)
      : library_kernel(std::make_shared<empty_program>(false, device, "fake"), "fake") {}

  std::shared_ptr<property_base> get_property(property_path) override { return {}; }
  std::vector<std::string> get_child_names(const property_path&) override { return {}; }
  size_triple get_preferred_work_group_size(std::uint64_t) override { return {1, 1, 1}; }
  size_triple get_compile_work_group_size() override { return {}; }
  std::uint32_t get_max_compute_units() override { return 1; }
  size_triple get_max_global_size() override { return {1, 1, 1}; }
  const launch_limits& get_launch_limits() const override { return limits_; }

private:
  launch_limits limits_;
};

template <class Action>
std::string message_of(Action action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return {};
}

} // namespace oryn::tarva::library
