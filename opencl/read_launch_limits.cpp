// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "opencl/read_launch_limits.h"

#include "access/common/call_handle.h"
#include "access/common/errors.h"
#include "opencl/opencl_device.h"

#include <algorithm>
#include <optional>
#include <string>

namespace oryn::tarva::library {

namespace {

// What the device tells. A query or command that it does not know, or a query that it answers wrongly, tells
// nothing; any other failure is one of the moment.
template <class Read>
auto ask(Read read) -> std::optional<decltype(read())> {
  try {
    return read();
  } catch (const skerv::common::runtime_error&) {
    throw;
  } catch (const skerv::common::error&) {
    return std::nullopt;
  } catch (const qv::recoverable_error&) {
    return std::nullopt;
  }
}

// For what a launch can do without: any failure means that it is not told.
template <class Read>
auto try_to_ask(Read read) -> std::optional<decltype(read())> {
  try {
    return read();
  } catch (...) {
    return std::nullopt;
  }
}

// A limit of 0 would forbid everything: a device that gives it tells nothing either.
template <class Read>
auto limit(Read read) -> std::optional<decltype(read())> {
  auto told = ask(read);
  if (told == decltype(read()){})
    told.reset();
  return told;
}

// A device of 2.x has them. One of an earlier version that is used as 2.x has none. In later versions they are
// optional, and the device tells.
template <version V>
bool has_non_uniform_groups(const skerv::opencl::device<V>& device) {
  if constexpr (V < version::v2_0)
    return false;
  const std::string reported =
      ask([&] { return device.template get<skerv::opencl::device_parameter::version>(); }).value_or("");
  if (reported.rfind("OpenCL 1.", 0) == 0)
    return false;
  if (reported.rfind("OpenCL 2.", 0) == 0)
    return true;
  return try_to_ask([&] {
           return device.info().get_bool(
               skerv::opencl::device_parameter::non_uniform_work_group_support.number);
         })
      .value_or(true);
}

// More parameters than a kernel can have: an implementation that tells a larger number has told none.
constexpr std::uint64_t most_parameters = 4096;

// The answer to an argument. A failure of the moment is none, and is thrown.
template <version V>
std::int32_t try_argument(skerv::opencl::kernel<V>& kernel, std::uint32_t index, std::size_t size,
                          const void* value) {
  const std::int32_t status = kernel.try_argument(index, size, value);
  if (skerv::common::is_of_the_moment(status))
    skerv::common::throw_status(status);
  return status;
}

// Ten questions for each parameter, which is why the kernels of one name share the answers.
template <version V>
kernel_parameter ask_parameter(skerv::opencl::kernel<V>& kernel, std::uint32_t index) {
  alignas(128) static constexpr std::uint8_t zeros[128] = {};
  static_assert(all_value_sizes < 2 * sizeof zeros);
  parameter_answers answers;
  for (std::size_t bit = 0; bit < answers.zeros.size(); ++bit)
    answers.zeros[bit] = try_argument(kernel, index, std::size_t{1} << bit, zeros);
  answers.null = try_argument(kernel, index, sizeof(void*), nullptr);
  answers.local = try_argument(kernel, index, local_size_to_try, nullptr);
  return judge(answers);
}

template <version V>
std::vector<kernel_parameter> ask_parameters(skerv::opencl::kernel<V>& kernel, std::uint64_t count) {
  const expected_errors of_these_arguments;
  std::vector<kernel_parameter> parameters;
  parameters.reserve(count);
  for (std::uint32_t index = 0; index < count; ++index)
    parameters.push_back(ask_parameter(kernel, index));
  return parameters;
}

} // namespace

// Each limit is asked for by itself, so that a device that does not know one still tells the others.
template <version V>
launch_limits read_launch_limits(const skerv::opencl::kernel<V>& kernel,
                                 const skerv::opencl::device<V>& device) {
  namespace device_parameter = skerv::opencl::device_parameter;
  launch_limits limits;
  limits.has_global_offset = version_traits<V>::has_global_offset;
  limits.zero_global_size_is_allowed = V >= version::v2_1;
  limits.local_size_must_divide = !has_non_uniform_groups<V>(device);
  limits.argument_count = ask([&] { return std::uint64_t{kernel.get_num_args()}; });
  limits.work_group_size = limit([&] { return kernel.get_work_group_size(device); });
  // A device may allow less than it tells of a kernel, or tell nothing of the kernel.
  if (const auto of_device =
          limit([&] { return device.template get<device_parameter::max_work_group_size>(); }))
    limits.work_group_size = std::min(limits.work_group_size.value_or(*of_device), *of_device);
  limits.compile_work_group_size = ask([&] { return kernel.get_compile_work_group_size(device); });
  if (const auto& fixed = limits.compile_work_group_size; fixed && std::ranges::count(*fixed, 0U) != 0)
    limits.compile_work_group_size.reset();
  limits.work_item_sizes =
      limit([&] { return device.template get<device_parameter::max_work_item_sizes>(); });
  limits.local_memory_bytes = limit([&] { return device.template get<device_parameter::local_mem_size>(); });
  // The kernel's own local variables take room from its arguments.
  const auto own_bytes = try_to_ask([&] { return kernel.get_local_memory_size(device); }).value_or(0);
  if (limits.local_memory_bytes)
    *limits.local_memory_bytes -= std::min(own_bytes, *limits.local_memory_bytes);
  limits.allocation_bytes =
      limit([&] { return device.template get<device_parameter::max_mem_alloc_size>(); });
  limits.address_bits = limit([&] { return device.template get<device_parameter::address_bits>(); });
  return limits;
}

template <version V>
std::shared_ptr<const kernel_signature> learn_signature(skerv::opencl::kernel<V>& kernel,
                                                        const launch_limits& limits) {
  if (limits.argument_count.value_or(UINT64_MAX) > most_parameters)
    return nullptr;
  const auto learnt = std::make_shared<kernel_signature>();
  learnt->parameters = ask_parameters(kernel, *limits.argument_count);
  if constexpr (version_traits<V>::has_kernel_attributes)
    if (!limits.compile_work_group_size)
      learnt->required_group_size = find_required_group_size(
          ask([&] { return kernel.get_attributes(); }).value_or(std::vector<std::string>()));
  return learnt;
}

#define INSTANTIATE(V)                                                                                       \
  template launch_limits read_launch_limits<version::V>(const skerv::opencl::kernel<version::V>&,            \
                                                        const skerv::opencl::device<version::V>&);           \
  template std::shared_ptr<const kernel_signature> learn_signature<version::V>(                              \
      skerv::opencl::kernel<version::V>&, const launch_limits&);
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::tarva::library
