// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A context of OpenCL, which makes buffers, programs and queues for its devices.
#pragma once

#include "access/opencl/buffer.h"
#include "access/opencl/device.h"
#include "access/opencl/opencl_handle.h"
#include "access/opencl/program.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace oryn::skerv::opencl {

struct context_kind {
  static constexpr qv::operation release = qv::operation::release_context;
  static constexpr qv::operation retain = qv::operation::retain_context;
  static constexpr const char* destructor_fault = "Exception caught in context::~context().";
};

// A device of the library has one context for as long as it is started, and any thread may make things in it. What it
// makes holds OpenCL's context by itself, and shares the call handle. Queues are made by their constructors
// (access/opencl/command_queue.h).
template <version V>
class context : public opencl_handle<V, context_kind> {
public:
  // The call handle of the first device serves the whole context. `pfn_notify` may be called on any thread, for as
  // long as the OpenCL context lives. std::logic_error without devices.
  context(const std::vector<std::uint64_t>& properties, const std::vector<device<V>>& devices,
          qv::context_callback pfn_notify, void* user_data);

  std::vector<device<V>> get_devices() const;
  template <version W = V>
  platform<V> get_platform() const requires(version_traits<W>::has_platform);

  // `size` is in bytes, and `flags` are those of OpenCL. `host_ptr` is null unless a flag wants it.
  buffer<V> create_buffer(std::uint64_t flags, std::size_t size, void* host_ptr) const;

  // `text` ends in a zero byte.
  program<V> create_program_with_source(const char* text) const;
  // std::logic_error without binaries.
  program<V> create_program_with_binaries(const std::vector<device_binary<V>>& binaries) const;
  template <version W = V>
  program<V> create_program_with_builtin_kernels(const std::vector<device<V>>& devices,
                                                 const std::vector<std::string>& kernel_names) const
      requires(version_traits<W>::has_builtin_kernels);
  template <version W = V>
  program<V> create_program_with_il(const std::vector<std::uint8_t>& il) const
      requires(version_traits<W>::has_il);
  // Needs the extension cl_khr_il_program, and throws std::logic_error if there is no function for it.
  template <version W = V>
  program<V> create_program_with_il(const void* il, std::size_t length) const
      requires(version_traits<W>::has_il_extension);

private:
  // Performs a create command with this context as its context.
  template <qv::operation Op>
  void* create_object(qv::record<Op>& record) const;
};

} // namespace oryn::skerv::opencl
