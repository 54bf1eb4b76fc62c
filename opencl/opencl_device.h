// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The devices of the six OpenCL versions: one class, written once.
#pragma once

#include "access/opencl/command_queue.h"
#include "access/opencl/context.h"
#include "access/opencl/device.h"
#include "memory/device_memory.h"
#include "objects/library_device.h"
#include "opencl/opencl_version.h"
#include "properties/catalogue.h"
#include "properties/device_catalogue.h"

#include <memory>
#include <string>
#include <vector>

namespace oryn::tarva::library {

namespace device_ir::opencl {
template <version V>
class opencl_version_queues;
}

// All devices that the capability library offers, those of 1.0 first. Makes no OpenCL object: each device still has to be
// initialised.
std::vector<std::shared_ptr<library_device>> detect_devices();

// What the devices of all versions share: the properties of the device catalogue.
class opencl_device : public catalogue_owner<library_device, get_device_catalogue> {
protected:
  // What `info` asks about must live as long as this.
  explicit opencl_device(skerv::opencl::device_info info) : info_(info) {}

private:
  bool read_value(const device_catalogue::row& wanted, property_value& value) final;
  void read_text(const device_source& source, property_value& value);

  const skerv::opencl::device_info info_;
};

// A device of one OpenCL version. Initialised and released by the thread that starts and stops the library; what any thread
// may call in between changes nothing in it.
//
// It is here, in the program and in the kernel that the version is known. What they hand to the levels above and below
// (allocations, commands, queues) already does the right thing.
template <version V>
class opencl_version_device final : public opencl_device {
public:
  using access_device = skerv::opencl::device<V>;
  using queues = device_ir::opencl::opencl_version_queues<V>;

  // Makes no OpenCL object; see initialize().
  explicit opencl_version_device(const access_device& device);
  ~opencl_version_device() override;

  void initialize() override;
  void release() override;

  bool is_ir_supported(const std::shared_ptr<const ir_header>& header, std::uint64_t ir_type,
                       const std::vector<std::uint8_t>& data, const std::string& options) override;
  build_result load_ir(const std::shared_ptr<const ir_header>& header, std::uint64_t ir_type,
                       const std::vector<std::uint8_t>& data, const std::string& options,
                       const std::string& user_label) override;
  std::shared_ptr<library_program> get_builtin_program() override { return builtin_program_; }

  bool is_little_endian() override { return little_endian_; }
  std::string get_friendly_short_description() override;
  std::string get_friendly_summary() override;

  std::unique_ptr<device_memory_allocation> allocate_memory(data_type type, std::uint64_t size) override;
  void free_memory(std::unique_ptr<device_memory_allocation>& allocation) override;

  std::vector<std::shared_ptr<device_ir::device_command>>
  generate_commands(const std::shared_ptr<physical_ir::physical_operation>& operation) override;

  const access_device& get_access_device() const { return *device_; }
  // From initialize() on, for as long as the device lives.
  queues& get_queues() const { return *queues_; }

private:
  version_number get_catalogue_version() const override { return static_cast<version_number>(V); }

  // The default queue to which kernels enqueue, where the version has one; nothing elsewhere.
  struct no_queue {};
  template <version W, bool HasQueue = version_traits<W>::has_device_queue>
  struct default_queue {
    using type = no_queue;
  };
  template <version W>
  struct default_queue<W, true> {
    using type = std::unique_ptr<skerv::opencl::device_command_queue<W>>;
  };

  std::string get_name() const;
  // For OpenCL functions that take several devices. A list in braces would copy the device twice.
  std::vector<access_device> list_of_this() const { return std::vector<access_device>(1, *device_); }
  std::shared_ptr<library_program> make_builtin_program();
  void make_default_device_queue();

  // None of these changes after initialize(), so no lock guards them.
  std::unique_ptr<access_device> device_;
  std::unique_ptr<skerv::opencl::context<V>> context_;
  [[no_unique_address]] typename default_queue<V>::type default_device_queue_;
  std::shared_ptr<library_program> builtin_program_;
  queues* queues_ = nullptr; // the dispatcher's
  bool little_endian_ = false;
};

// Device storage that is one OpenCL buffer, which is released with it, on whatever thread that is: mostly the worker's. `Buffer` is
// the buffer class of one OpenCL version.
template <class Buffer>
class opencl_buffer_allocation final : public device_memory_allocation {
public:
  opencl_buffer_allocation(std::shared_ptr<library_device> device, data_type type, std::uint64_t size,
                           Buffer buffer)
      : device_memory_allocation(std::move(device), type, size, buffer.get_handle()),
        buffer_(std::move(buffer)) {}

private:
  Buffer buffer_; // known to all others by its handle
};

// While one lives, this thread tries arguments that may not fit. If the implementation tells the context of the errors, no line
// of the log does.
class expected_errors {
public:
  expected_errors() noexcept;
  ~expected_errors();
  expected_errors(const expected_errors&) = delete;
  expected_errors& operator=(const expected_errors&) = delete;

  static bool on_this_thread() noexcept;
};

} // namespace oryn::tarva::library
