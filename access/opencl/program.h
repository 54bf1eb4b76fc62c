// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A program of OpenCL: its build, its forms, and the kernels that it gives out.
#pragma once

#include "access/common/opencl_constants.h"
#include "access/opencl/device.h"
#include "access/opencl/kernel.h"
#include "access/opencl/opencl_handle.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace oryn::skerv::opencl {

struct program_kind {
  static constexpr qv::operation release = qv::operation::release_program;
  static constexpr qv::operation retain = qv::operation::retain_program;
  static constexpr const char* destructor_fault = "Exception caught in program::~program().";
};

// A program as compiled for one device.
template <version V>
struct device_binary {
  opencl::device<V> device;
  std::vector<std::uint8_t> binary;
};

// A program, made by one of the creators of context<V>. It is built by the thread that loads it; after that, it only
// changes in specialization constants, which count for the next build. Any thread may ask it and make kernels of it.
template <version V>
class program : public opencl_handle<V, program_kind> {
public:
  // Takes over the reference that the create command returned.
  program(common::call_handle call_handle, void* handle) noexcept
      : opencl_handle<V, program_kind>(std::move(call_handle), handle) {}

  program(common::call_handle call_handle, void* handle, from_query_t)
      : opencl_handle<V, program_kind>(std::move(call_handle), handle, from_query) {}

  // A program that does not compile is no exception: get_build_status tells. With a `pfn_notify`, OpenCL may return
  // before the end and call it on any thread.
  void build(const std::vector<device<V>>& devices, const std::string& options,
             qv::program_callback pfn_notify, void* user_data);
  // 0 after a build that went well, negative after one that did not.
  std::int32_t get_build_status(const device<V>& device) const;
  std::string get_build_log(const device<V>& device) const;

  std::string get_source() const;
  std::vector<device<V>> get_devices() const;
  // One for each device of the program; empty for a device that it was not built for.
  std::vector<device_binary<V>> get_binaries() const;
  template <version W = V>
  std::vector<std::uint8_t> get_il() const requires(version_traits<W>::has_il) {
    return get_bytes(common::cl::program_il);
  }

  template <version W = V>
  std::vector<std::string> get_kernel_names() const requires(version_traits<W>::has_kernel_names) {
    return get_names(common::cl::program_kernel_names);
  }
  // Throws if the program has no kernel of that name, or was not built.
  kernel<V> create_kernel(const std::string& name) const;
  // One for each kernel of the program.
  template <version W = V>
  std::vector<kernel<V>> create_kernels() const requires(version_traits<W>::has_create_kernels);

  // For the next build. Throws if the program has no constant of that number, or of another size.
  template <version W = V>
  void
  set_specialization_constant(std::uint32_t id, std::size_t size,
                              const void* value) requires(version_traits<W>::has_specialization_constants);
  template <version W = V>
  void set_specialization_constant(std::uint32_t id,
                                   bool flag) requires(version_traits<W>::has_specialization_constants) {
    const std::uint8_t value = flag ? 1 : 0;
    set_specialization_constant(id, sizeof(value), &value);
  }

private:
  std::vector<std::uint8_t> get_bytes(std::uint32_t parameter) const;
  std::vector<std::string> get_names(std::uint32_t parameter) const;
};

} // namespace oryn::skerv::opencl
