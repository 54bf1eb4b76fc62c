// The body of generate_device_command_sequence.h, compiled once for each version.
#pragma once

#include "ir/host_function_call.h"
#include "opencl/buffer_commands.h"
#include "opencl/generate_device_command_sequence.h"
#include "opencl/nd_range_kernel.h"
#include "ir/synchronization.h"
#include "ir/physical_operations.h"
#include "memory/swap_endianness.h"

#include <stdexcept>

namespace oryn::tarva::library::device_ir::opencl {

template <version V>
class command_generator final : public physical_ir::operation_visitor {
public:
  using sequence = std::vector<std::shared_ptr<device_command>>;

  explicit command_generator(const std::shared_ptr<physical_ir::physical_operation>& operation)
      : operation_(operation) {}

  sequence take() { return std::move(sequence_); }

  void visit(const physical_ir::allocate_device_memory& step) override { allocate(step.get_memory()); }
  void visit(const physical_ir::allocate_host_memory& step) override { allocate(step.get_memory()); }
  void visit(const physical_ir::free_device_memory&) override { free<physical_ir::free_device_memory>(); }
  void visit(const physical_ir::free_host_memory&) override { free<physical_ir::free_host_memory>(); }

  void visit(const physical_ir::fill_on_device& step) override {
    if constexpr (version_traits<V>::has_fill_buffer)
      add<fill_on_device<V>>(step.get_memory(), step.get_value(), step.get_start_position(),
                             step.get_count());
    else
      stage_fill(step);
  }
  void visit(const physical_ir::fill_on_host& step) override {
    host_step([memory = step.get_memory(), value = step.get_value(), start = step.get_start_position(),
               count = step.get_count()](const auto&) { memory->fill(value, start, count); });
  }

  void visit(const physical_ir::kernel& step) override { add<nd_range_kernel<V>>(step); }

  void visit(const physical_ir::copy_same_device& step) override { copy<copy_same_device<V>>(step); }
  void visit(const physical_ir::copy_host_to_device& step) override { copy<copy_host_to_device<V>>(step); }
  void visit(const physical_ir::copy_device_to_host& step) override { copy<copy_device_to_host<V>>(step); }
  void visit(const physical_ir::copy_host_to_host& step) override {
    host_step([source = step.get_src_memory(), destination = step.get_dest_memory(),
               source_start = step.get_src_start_position(),
               destination_start = step.get_dest_start_position(), count = step.get_count()](const auto&) {
      source->copy_to(destination, source_start, destination_start, count);
    });
  }

  void visit(const physical_ir::convert_endianness_host& step) override {
    host_step([memory = step.get_memory()](const auto&) { memory->convert_endianness(); });
  }
  void visit(const physical_ir::convert_endianness_device& step) override { stage_conversion(step); }

  void visit(const physical_ir::synchronize_device_to_device_release& step) override {
    add<synchronization_release>(step.get_release_device(), step.get_acquire_device(), step.get_sync_id());
  }
  void visit(const physical_ir::synchronize_device_to_device_acquire& step) override {
    add<synchronization_acquire>(step.get_release_device(), step.get_acquire_device(), step.get_sync_id());
  }

  void visit_unknown() override { throw std::logic_error("Unknown physical IR node type."); }

private:
  template <class Command, class... Arguments>
  void add(Arguments&&... arguments) {
    sequence_.push_back(std::make_shared<Command>(operation_, std::forward<Arguments>(arguments)...));
  }

  void host_step(host_function_call::function step) { add<host_function_call>(std::move(step)); }

  template <class Memory>
  void allocate(const std::shared_ptr<Memory>& memory) {
    host_step([memory](const auto&) { memory->allocate(); });
  }

  // A block whose content has not arrived elsewhere is kept: it still holds what the user has.
  template <class Step>
  void free() {
    host_step([step = std::static_pointer_cast<const Step>(operation_)](const auto&) {
      if (!step->content_is_needed())
        step->get_memory()->free();
    });
  }

  template <class Command, class Step>
  void copy(const Step& step) {
    add<Command>(step.get_src_memory(), step.get_src_start_position(), step.get_dest_memory(),
                 step.get_dest_start_position(), step.get_count());
  }

  // A version without a fill command fills a block on the host and copies it.
  void stage_fill(const physical_ir::fill_on_device& step) {
    auto staging = std::make_shared<host_memory>();
    staging->set_allocation(step.get_memory()->get_type(), step.get_count());
    host_step([staging, value = step.get_value(), count = step.get_count()](const auto& command) {
      staging->allocate();
      std::vector<std::uint8_t> bytes = value;
      const auto& device = command->get_physical_operation()->get_device();
      if (!device)
        throw std::logic_error(
            "No device associated with a device command that requires a device. This is an "
            "error.");
      if (!device->is_little_endian())
        swap_endianness(bytes.data(), staging->get_type(), 0, 1);
      staging->fill(bytes, 0, count);
    });
    add<copy_host_to_device<V>>(staging, 0, step.get_memory(), step.get_start_position(), step.get_count());
    free_staging(staging);
  }

  void stage_conversion(const physical_ir::convert_endianness_device& step) {
    const auto& memory = step.get_memory();
    const std::uint64_t size = memory->get_size();
    auto staging = std::make_shared<host_memory>();
    staging->set_allocation(memory->get_type(), size);
    allocate(staging);
    add<copy_device_to_host<V>>(memory, 0, staging, 0, size);
    host_step([staging](const auto&) { staging->convert_endianness(); });
    add<copy_host_to_device<V>>(staging, 0, memory, 0, size);
    free_staging(staging);
  }

  void free_staging(const std::shared_ptr<host_memory>& staging) {
    host_step([staging](const auto&) { staging->free(); });
  }

  const std::shared_ptr<physical_ir::physical_operation>& operation_; // the caller's
  sequence sequence_;
};

template <version V>
std::vector<std::shared_ptr<device_command>>
generate_device_command_sequence(const std::shared_ptr<physical_ir::physical_operation>& operation) {
  command_generator<V> generator(operation);
  if (operation)
    operation->accept(generator);
  else
    generator.visit_unknown();
  return generator.take();
}

} // namespace oryn::tarva::library::device_ir::opencl
