#pragma once

#include "access/common/call_handle.h"
#include "access/opencl/version.h"

#include <utility>

namespace oryn::skerv::opencl {

// The platform of a device. It is not counted.
template <version V>
class platform {
  static_assert(version_traits<V>::has_platform);

public:
  platform(common::call_handle call_handle, void* handle) noexcept
      : call_handle_(std::move(call_handle)), handle_(handle) {}

  const common::call_handle& get_call_handle() const noexcept { return call_handle_; }
  void* get_handle() const noexcept { return handle_; }

private:
  common::call_handle call_handle_;
  void* handle_;
};

} // namespace oryn::skerv::opencl
