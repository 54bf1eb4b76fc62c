// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The device commands of the six OpenCL versions, which copy, fill and launch, and the queues on which they enqueue.
#pragma once

#include "access/opencl/buffer.h"
#include "access/opencl/command_queue.h"
#include "access/opencl/commands.h"
#include "access/opencl/context.h"
#include "access/opencl/device.h"
#include "access/opencl/kernel.h"
#include "memory/device_memory.h"
#include "memory/host_memory.h"
#include "opencl/opencl_device_command.h"
#include "opencl/opencl_version.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

// The queues of a device of one version. Made while the device is initialised and kept by its dispatcher. The threads that start
// operations make commands with it, which changes nothing in it; the worker alone enqueues and finishes.
template <version V>
class opencl_version_queues final : public opencl_queues {
public:
  using queue = skerv::opencl::host_queue<V>;

  opencl_version_queues(const skerv::opencl::context<V>& context, const skerv::opencl::device<V>& device)
      : plain_(context, device, false, false), profiling_(context, device, false, true) {}

  queue& get(bool profiling) { return profiling ? profiling_ : plain_; }
  void finish(bool profiling) override { get(profiling).finish(); }

  command_pointer make_copy(const operation_pointer& operation, device_to_host_copy copy) override;
  command_pointer make_copy(const operation_pointer& operation, host_to_device_copy copy) override;
  command_pointer make_copy(const operation_pointer& operation, device_copy copy) override;
  command_pointer make_fill(const operation_pointer& operation, device_fill fill) override;

private:
  queue plain_;
  queue profiling_;
};

// What the commands of one version share: the way to a queue, and the event that comes back. Like all device commands it is driven
// by the worker alone once it is handed over.
template <version V>
class opencl_version_command : public opencl_device_command {
public:
  opencl_version_command(std::shared_ptr<physical_ir::physical_operation> physical_operation,
                         opencl_version_queues<V>& queues)
      : opencl_device_command(std::move(physical_operation)), queues_(queues) {}

  void release_event() final { event_.reset(); }
  void take_result() final {
    const std::optional<skerv::opencl::event<V>> taken = std::exchange(event_, std::nullopt);
    if (!taken) // there was nothing to ask of OpenCL
      return;
    taken->check_execution_status();
    if (this->is_profiling_enabled())
      this->set_elapsed_time(taken->get_profiling_end() - taken->get_profiling_start());
  }

protected:
  // If the enqueue throws, there is no event and the command is not submitted. From then on OpenCL has the work.
  template <class Command>
  bool submit(const Command& command) {
    event_.emplace(queues_.get(is_profiling_enabled()).enqueue(command, 0, nullptr));
    set_submitted();
    return true;
  }

  // The OpenCL buffer behind a block, which must be on the device of this command.
  skerv::opencl::buffer_reference<V> buffer_of(const device_memory& memory) const {
    if (memory.get_device() != physical_operation->device)
      refuse_device();
    return {memory.get_allocation().opencl_buffer};
  }

  // "opencl_1_2::name: {"
  static std::string class_text(const char* name) {
    return std::string("opencl_") + version_traits<V>::name + "::" + name + ": {";
  }

private:
  [[noreturn]] static void refuse_device() {
    throw std::logic_error("Memory arguments are associated with the wrong device.");
  }

  opencl_version_queues<V>& queues_;
  std::optional<skerv::opencl::event<V>> event_;
};

// What the three copies share: one range, checked once more on the worker, since what cannot fit must never reach OpenCL. A
// source without content has nothing to copy. That is asked when the turn of the command has come, since commands before it may
// have given the source its content.
template <version V, class Source, class Destination>
class copy_command : public opencl_version_command<V> {
public:
  copy_command(std::shared_ptr<physical_ir::physical_operation> physical_operation,
               opencl_version_queues<V>& queues, block_copy<Source, Destination> copy)
      : opencl_version_command<V>(std::move(physical_operation), queues), copy_(std::move(copy)) {}
  bool enqueue() final {
    if (copy_.source->has_content())
      return enqueue_copy();
    this->set_submitted();
    return false;
  }

protected:
  virtual bool enqueue_copy() = 0;
  std::string text(const char* name) const;
  void check() const; // refuses what does not fit

  std::uint64_t in_bytes(std::uint64_t count) const { return element_size(copy_.source->get_type()) * count; }

  block_copy<Source, Destination> copy_;

private:
  void leave_memory_to_device() noexcept final {
    leave_to_device(*copy_.source);
    leave_to_device(*copy_.destination);
  }
  static void leave_to_device(host_memory& block) noexcept { block.leave_to_device(); }
  static void leave_to_device(const device_memory&) noexcept {} // OpenCL keeps buffers for its commands
};

template <version V>
class copy_device_to_host final : public copy_command<V, device_memory, host_memory> {
public:
  using copy_command<V, device_memory, host_memory>::copy_command;
  std::string to_string() const override { return this->text("copy_device_to_host"); }
  // The read does not block: the host block is kept by this command until the event has been seen.
  bool enqueue_copy() override;
};

// Does not block either. The destination has content from the enqueue on, as a failure may leave it half written.
template <version V>
class copy_host_to_device final : public copy_command<V, host_memory, device_memory> {
public:
  using copy_command<V, host_memory, device_memory>::copy_command;
  std::string to_string() const override { return this->text("copy_host_to_device"); }
  bool enqueue_copy() override;
};

// Both blocks are on the device of the command. Ranges of one block do not overlap; the lowering has seen to that.
template <version V>
class copy_same_device final : public copy_command<V, device_memory, device_memory> {
public:
  using copy_command<V, device_memory, device_memory>::copy_command;
  std::string to_string() const override { return this->text("copy_same_device"); }
  bool enqueue_copy() override;
};

// Only where the version has the command; elsewhere a fill goes through the host.
template <version V>
requires(version_traits<V>::has_fill_buffer) class fill_on_device final : public opencl_version_command<V> {
public:
  fill_on_device(std::shared_ptr<physical_ir::physical_operation> physical_operation,
                 opencl_version_queues<V>& queues, device_fill fill)
      : opencl_version_command<V>(std::move(physical_operation), queues), fill_(std::move(fill)) {}
  std::string to_string() const override {
    return this->class_text("fill_on_device") +
           "mem_object_id=" + std::to_string(fill_.memory->get_unique_identifier()) +
           ", start_pos=" + std::to_string(fill_.start) + ", count=" + std::to_string(fill_.count) + "}";
  }
  bool enqueue() override;

private:
  device_fill fill_;
};

// The arguments are set on an OpenCL kernel of this command alone, so that launches of one kernel never share any.
template <version V>
class nd_range_kernel final : public opencl_version_command<V> {
public:
  // `launch` is of the class physical_ir::kernel. It keeps the kernel, and the blocks of its arguments stay where they are until
  // the logical operation has ended.
  nd_range_kernel(const std::shared_ptr<physical_ir::physical_operation>& launch,
                  opencl_version_queues<V>& queues, const skerv::opencl::kernel<V>& kernel)
      : opencl_version_command<V>(launch, queues), launch_(static_cast<const physical_ir::kernel&>(*launch)),
        kernel_(kernel) {}
  std::string to_string() const override {
    return this->class_text("nd_range_kernel") + library::to_string(launch_.range) + "}";
  }
  bool enqueue() override;

private:
  void set_arguments(skerv::opencl::kernel<V>& kernel) const;

  const physical_ir::kernel& launch_;
  const skerv::opencl::kernel<V>& kernel_; // to be cloned
};

} // namespace oryn::tarva::library::device_ir::opencl
