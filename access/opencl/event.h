#pragma once

#include "access/common/opencl_constants.h"
#include "access/opencl/opencl_handle.h"

#include <cstdint>
#include <utility>

namespace oryn::skerv::opencl {

// Reports on one enqueued command.
template <version V>
class event : public opencl_handle<V, event_kind> {
public:
  // Takes over the reference that the enqueue command returned.
  event(common::call_handle call_handle, void* handle) noexcept
      : opencl_handle<V, event_kind>(std::move(call_handle), handle) {}

  // Throws what the command failed with, if it has.
  void check_execution_status() const;

  // In nanoseconds of the device's clock.
  std::uint64_t get_profiling_start() const { return get_profiling(common::cl::profiling_command_start); }
  std::uint64_t get_profiling_end() const { return get_profiling(common::cl::profiling_command_end); }

private:
  std::uint64_t get_profiling(std::uint32_t parameter) const;
};

template <version V>
void event<V>::check_execution_status() const {
  const auto status = common::get_scalar_info<std::int32_t>(
      this->template query<qv::operation::get_event_info>(common::cl::event_command_execution_status));
  if (status < 0)
    common::check_status(status);
}

template <version V>
std::uint64_t event<V>::get_profiling(std::uint32_t parameter) const {
  return common::get_scalar_info<std::uint64_t>(
      this->template query<qv::operation::get_event_profiling_info>(parameter));
}

extern template class event<version::v1_0>;
extern template class event<version::v1_1>;
extern template class event<version::v1_2>;
extern template class event<version::v2_0>;
extern template class event<version::v2_1>;
extern template class event<version::v2_2>;

} // namespace oryn::skerv::opencl
