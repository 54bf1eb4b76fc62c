// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The exported function that launches a kernel.
#include "abi/entry_point.h"
#include "ir/logical_operation.h"
#include "ir/nd_range.h"
#include "memory/library_memory.h"
#include "objects/kernel_arguments.h"
#include "objects/library_program.h"

#include <algorithm>
#include <memory>

using namespace oryn::tarva::library;

namespace {

static_assert(has_words<tarva_abi_kernel_argument_s>(3));
static_assert(TARVA_ABI_ARGUMENT_LOCAL_MEMORY == 3);
static_assert(has_words<tarva_abi_launch_range_s>(11));
static_assert(offsetof(tarva_abi_launch_range_s, words) == 1 * word);
static_assert(TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED == 6);

// A product that wrapped around would launch something else than was asked for.
std::uint64_t multiply(std::uint64_t first, std::uint64_t second) {
  std::uint64_t product = 0;
  if (__builtin_mul_overflow(first, second, &product))
    throw std::invalid_argument("tarva_abi_kernel_call: The global size " + std::to_string(first) +
                                " times " + std::to_string(second) + " does not fit into 64 bits.");
  return product;
}

size_triple three_words(const std::uint64_t* words) {
  return {words[0], words[1], words[2]};
}

// Groups of `local_size`, `groups` of them in each dimension. What lies beyond `work_dim` does not count.
nd_range sized_groups(std::uint64_t work_dim, std::uint64_t groups, const size_triple& local_size) {
  nd_range range{work_dim, {}, {}, local_size};
  for (std::size_t dimension = 0; dimension < 3; ++dimension) {
    const std::uint64_t length = local_size[dimension];
    range.global_size[dimension] = dimension < work_dim ? multiply(groups, length) : groups * length;
  }
  return range;
}

// `groups` groups in one dimension, of the size that the kernel prefers.
nd_range preferred_groups(library_kernel& kernel, std::uint64_t groups) {
  const std::uint64_t length = kernel.get_preferred_work_group_size(1)[0];
  return {1, {}, {multiply(length, groups), 1, 1}, {length, 1, 1}};
}

// The same number of groups for each compute unit of the device.
nd_range preferred_groups_per_unit(library_kernel& kernel, std::uint64_t groups) {
  nd_range range = preferred_groups(kernel, groups);
  range.global_size[0] = multiply(range.global_size[0], kernel.get_max_compute_units());
  return range;
}

// The wanted number of work-items, but a whole group at least.
nd_range wanted_global_size(library_kernel& kernel, std::uint64_t work_dim, const size_triple& wanted) {
  const size_triple preferred = kernel.get_preferred_work_group_size(work_dim);
  nd_range range{work_dim, {}, {}, preferred};
  for (std::size_t dimension = 0; dimension < 3; ++dimension)
    range.global_size[dimension] = std::max(wanted[dimension], preferred[dimension]);
  return range;
}

// The extent of a launch, worked out for the kernel. No more of the record is read than its type needs.
nd_range make_range(library_kernel& kernel, const tarva_abi_launch_range_s& launch_range) {
  const std::uint64_t* words = launch_range.words;
  switch (launch_range.type) {
  case TARVA_ABI_LAUNCH_EXPLICIT:
    return {words[0], three_words(words + 1), three_words(words + 4), three_words(words + 7)};
  case TARVA_ABI_LAUNCH_GLOBAL_SIZE:
    return wanted_global_size(kernel, words[0], three_words(words + 1));
  case TARVA_ABI_LAUNCH_GROUPS:
    return preferred_groups(kernel, words[0]);
  case TARVA_ABI_LAUNCH_GROUPS_SIZED:
    return sized_groups(words[0], words[1], three_words(words + 2));
  case TARVA_ABI_LAUNCH_GROUPS_PER_UNIT:
    return preferred_groups_per_unit(kernel, words[0]);
  case TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED:
    return sized_groups(words[0], kernel.get_max_compute_units(), three_words(words + 2));
  default:
    throw std::invalid_argument(
        "tarva_abi_kernel_call: Unknown launch type provided in the launch range argument.");
  }
}

// Words of the records hold pointers as numbers.
template <class Pointee>
Pointee* pointer_in(std::uint64_t word) {
  return reinterpret_cast<Pointee*>(static_cast<std::uintptr_t>(word)); // NOLINT(performance-no-int-to-ptr)
}

void add_argument(kernel_argument_capture& captured, const abi_bridge& bridge,
                  const tarva_abi_kernel_argument_s& argument) {
  switch (argument.kind) {
  case TARVA_ABI_ARGUMENT_NULL:
    captured.arguments.emplace_back(kernel_argument_nullptr());
    break;
  case TARVA_ABI_ARGUMENT_VALUE:
    captured.add_value(pointer_in<const void>(argument.second), to_data_type(argument.first));
    break;
  case TARVA_ABI_ARGUMENT_MEMORY:
    captured.arguments.emplace_back(
        bridge.get_library_object(pointer_in<const tarva_abi_memory_s>(argument.first)));
    break;
  case TARVA_ABI_ARGUMENT_LOCAL_MEMORY:
    captured.arguments.emplace_back(
        kernel_argument_local_memory{to_data_type(argument.first), argument.second});
    break;
  default:
    throw std::runtime_error("Unsupported argument type.");
  }
}

// Values are copied, memory objects are kept alive by the capture.
kernel_argument_capture make_arguments(const abi_bridge& bridge, const tarva_abi_kernel_argument_s* arguments,
                                       std::uint64_t count) {
  require_countable<tarva_abi_kernel_argument_s>(count, "kernel arguments");
  kernel_argument_capture captured;
  captured.arguments.reserve(count);
  for (std::uint64_t index = 0; index < count; ++index)
    add_argument(captured, bridge, arguments[index]);
  return captured;
}

} // namespace

// Checks in this order: the array, the range, the kernel, the launch type, the arguments. What is wrong with sizes and with
// the number of arguments is found by the operation.
tarva_abi_result tarva_abi_kernel_call(void*, tarva_abi_kernel_s* kernel,
                                       const tarva_abi_kernel_argument_s* arguments, uint64_t argument_count,
                                       const tarva_abi_launch_range_s* launch_range,
                                       tarva_abi_error_s** out_error) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    if (!arguments && argument_count != 0)
      throw std::invalid_argument(
          "tarva_abi_kernel_call: argument array is NULL but number of arguments is not zero.");
    require(launch_range,
            "tarva_abi_kernel_call: launch range is NULL, so there is no way to execute the kernel.");
    auto library_kernel = library.bridge.get_library_object(kernel);
    const nd_range range = make_range(*library_kernel, *launch_range);
    auto captured = make_arguments(library.bridge, arguments, argument_count);
    const use_of_compiler use; // some compile a kernel for a device or a local size when it is launched
    library.submit_without_future(
        logical_ir::kernel::create(std::move(library_kernel), std::move(captured), range));
  });
}
