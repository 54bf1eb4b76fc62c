#pragma once

#include "access/opencl/memory_object.h"

namespace oryn::skerv::opencl {

template <version V>
class buffer : public memory_object<V> {
public:
  using memory_object<V>::memory_object;
};

// Names a buffer of OpenCL without holding it: the buffer must outlive what is done with its name. The commands and
// the kernel arguments take it, so that a caller that keeps only the handle of a buffer need not keep its class.
template <version V>
class buffer_reference {
public:
  buffer_reference(const buffer<V>& buffer) noexcept : handle_(buffer.get_handle()) {} // implicit on purpose
  // `handle` is a cl_mem that was made under version V.
  explicit buffer_reference(void* handle) noexcept : handle_(handle) {}

  void* get_handle() const noexcept { return handle_; }

private:
  void* handle_;
};

} // namespace oryn::skerv::opencl
