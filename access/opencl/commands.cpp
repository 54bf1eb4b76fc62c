#include "access/opencl/commands.h"

#include "access/common/info_query.h"
#include "access/common/opencl_constants.h"

namespace oryn::skerv::opencl {
// Positive values are stages of a command that goes well; a negative one is the status that it failed with.
template <version V>
void event<V>::check_execution_status() const {
  const auto status = common::get_scalar_info<std::int32_t>(
      this->template query<qv::operation::get_event_info>(common::cl::event_command_execution_status));
  if (status < 0)
    common::check_status(status);
}

template <version V>
std::uint64_t event<V>::get_profiling_start() const {
  return get_profiling(common::cl::profiling_command_start);
}

template <version V>
std::uint64_t event<V>::get_profiling_end() const {
  return get_profiling(common::cl::profiling_command_end);
}

template <version V>
std::uint64_t event<V>::get_profiling(std::uint32_t parameter) const {
  return common::get_scalar_info<std::uint64_t>(
      this->template query<qv::operation::get_event_profiling_info>(parameter));
}

#define INSTANTIATE(v) template class event<version::v>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::skerv::opencl
