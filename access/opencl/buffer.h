// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Device memory.
#pragma once

#include "access/opencl/opencl_handle.h"

#include <utility>

namespace oryn::skerv::opencl {

struct memory_object_kind {
  static constexpr qv::operation release = qv::operation::release_mem_object;
  static constexpr const char* destructor_fault = "Exception caught in memory_object::~memory_object().";
};

// Names a buffer of OpenCL, a cl_mem that was made under version V, without holding it: the buffer must outlive what is done with
// its name. The commands and the kernel arguments take it, so that a caller that keeps only the handle of a buffer need not keep
// its class.
template <version V>
struct buffer_reference {
  void* handle;
};

// A buffer of OpenCL, made by context<V>::create_buffer. It is moved, never copied; its memory goes with it.
template <version V>
class buffer : public opencl_handle<V, memory_object_kind> {
public:
  // Takes over the reference that the create command returned.
  buffer(common::call_handle call_handle, void* handle) noexcept
      : opencl_handle<V, memory_object_kind>(std::move(call_handle), handle) {}

  operator buffer_reference<V>() const noexcept { return {this->object_}; } // implicit on purpose
};

// Buffers are the only memory objects of OpenCL that this layer makes.
template <version V>
using memory_object = buffer<V>;

} // namespace oryn::skerv::opencl
