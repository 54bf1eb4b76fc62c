// How the signature of a kernel is learnt, compiled once for each version.
#pragma once

#include "access/common/errors.h"
#include "access/opencl/kernel.h"
#include "objects/kernel_signature.h"
#include "opencl/expected_errors.h"
#include "opencl/opencl_version.h"

namespace oryn::tarva::library::detail {

// More than a device can pass to a kernel: a count above it is no count.
inline constexpr std::uint64_t most_parameters = 4096;

// The answer to an argument. A failure of the moment is none, and is thrown.
template <version V>
std::int32_t try_argument(skerv::opencl::kernel<V>& kernel, std::uint32_t index, std::size_t size,
                          const void* value) {
  const std::int32_t status = kernel.try_argument(index, size, value);
  if (skerv::common::is_of_the_moment(status))
    skerv::common::throw_status(status);
  return status;
}

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

} // namespace oryn::tarva::library::detail
