#pragma once

#include "access/opencl/opencl_handle.h"

#include <utility>

namespace oryn::skerv::opencl {

template <version V>
class memory_object : public opencl_handle<V, memory_object_kind> {
public:
  // Takes over the reference that the create command returned.
  memory_object(common::call_handle call_handle, void* handle) noexcept
      : opencl_handle<V, memory_object_kind>(std::move(call_handle), handle) {}

  memory_object(memory_object&&) noexcept = default;
  memory_object& operator=(memory_object&&) noexcept = default;
  virtual ~memory_object() = default;
};

extern template class memory_object<version::v1_0>;
extern template class memory_object<version::v1_1>;
extern template class memory_object<version::v1_2>;
extern template class memory_object<version::v2_0>;
extern template class memory_object<version::v2_1>;
extern template class memory_object<version::v2_2>;

} // namespace oryn::skerv::opencl
