// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A kernel of a program: what it tells about itself, and its arguments.
#pragma once

#include "access/common/opencl_constants.h"
#include "access/opencl/buffer.h"
#include "access/opencl/device.h"
#include "access/opencl/opencl_handle.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace oryn::skerv::opencl {

template <version V>
class program;

struct kernel_kind {
  static constexpr qv::operation release = qv::operation::release_kernel;
  static constexpr const char* destructor_fault = "Exception caught in kernel::~kernel().";
};

// A kernel of OpenCL. It is moved, never copied: arguments belong to one kernel of OpenCL, so each launch has a clone
// of its own, which the worker thread of the device makes, sets and gives up. Any thread may ask a kernel about
// itself.
template <version V>
class kernel : public opencl_handle<V, kernel_kind> {
public:
  // Takes over the reference that the create command returned.
  kernel(common::call_handle call_handle, void* handle) noexcept
      : opencl_handle<V, kernel_kind>(std::move(call_handle), handle) {}

  std::string get_function_name() const;
  std::uint32_t get_num_args() const;
  template <version W = V>
  std::vector<std::string> get_attributes() const requires(version_traits<W>::has_kernel_attributes) {
    return get_words(common::cl::kernel_attributes);
  }

  // To use the result include access/opencl/program.h.
  program<V> get_program() const;

  std::uint64_t get_work_group_size(const device<V>& device) const {
    return get_number(common::cl::kernel_work_group_size, device);
  }
  // Bytes of local memory that the kernel's own variables take.
  std::uint64_t get_local_memory_size(const device<V>& device) const {
    return get_number(common::cl::kernel_local_mem_size, device);
  }
  template <version W = V>
  std::uint64_t get_preferred_work_group_size_multiple(const device<V>& device) const
      requires(version_traits<W>::has_work_group_size_multiple) {
    return get_number(common::cl::kernel_preferred_work_group_size_multiple, device);
  }
  std::array<std::uint64_t, 3> get_compile_work_group_size(const device<V>& device) const {
    return get_sizes(common::cl::kernel_compile_work_group_size, device);
  }
  template <version W = V>
  std::array<std::uint64_t, 3> get_global_work_size(const device<V>& device) const
      requires(version_traits<W>::has_kernel_global_work_size) {
    return get_sizes(common::cl::kernel_global_work_size, device);
  }

  // A fresh kernel of the same program and name. The arguments do not carry over.
  kernel clone() const;

  // The status that OpenCL gives an argument, for who wants to know rather than to set it.
  std::int32_t try_argument(std::uint32_t index, std::size_t size, const void* value) {
    qv::set_kernel_arg_record record{};
    record.kernel = this->object_;
    record.arg_index = index;
    record.arg_size = size;
    record.arg_value = value;
    common::send(this->call_handle_.get(), command_of<V, qv::operation::set_kernel_arg>, &record);
    return record.status;
  }

  // The four kinds of argument. Each of these throws if OpenCL refuses; the argument then is what it was.
  // A memory argument without memory.
  void set_null_argument(std::uint32_t index) { set_value_argument(index, sizeof(void*), nullptr); }
  // Local memory of `size` bytes.
  void set_local_argument(std::uint32_t index, std::size_t size) { set_value_argument(index, size, nullptr); }
  void set_memory_argument(std::uint32_t index, buffer_reference<V> memory) {
    set_value_argument(index, sizeof(memory.handle), &memory.handle);
  }
  void set_value_argument(std::uint32_t index, std::size_t size, const void* value) {
    common::check_status(try_argument(index, size, value));
  }

private:
  std::vector<std::string> get_words(std::uint32_t parameter) const;
  std::uint64_t get_number(std::uint32_t parameter, const device<V>& device) const;
  std::array<std::uint64_t, 3> get_sizes(std::uint32_t parameter, const device<V>& device) const;
};

} // namespace oryn::skerv::opencl
