#include "abi/launch_range.h"

#include "objects/library_kernel.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace oryn::tarva::library {

namespace {

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

// `groups` groups in one dimension, of the size that the kernel prefers; or as many for each compute unit.
nd_range preferred_groups(library_kernel& kernel, std::uint64_t groups, bool for_each_unit) {
  const std::uint64_t length = kernel.get_preferred_work_group_size(1)[0];
  const std::uint64_t units = for_each_unit ? kernel.get_max_compute_units() : 1;
  return {1, {}, {multiply(multiply(length, groups), units), 1, 1}, {length, 1, 1}};
}

nd_range wanted_global_size(library_kernel& kernel, std::uint64_t work_dim, const size_triple& wanted) {
  const size_triple preferred = kernel.get_preferred_work_group_size(work_dim);
  nd_range range{work_dim, {}, {}, preferred};
  for (std::size_t dimension = 0; dimension < 3; ++dimension)
    range.global_size[dimension] = std::max(wanted[dimension], preferred[dimension]);
  return range;
}

} // namespace

void test_launch_type(tarva_abi_launch_type type) {
  if (type < TARVA_ABI_LAUNCH_EXPLICIT || type > TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED)
    throw std::invalid_argument(
        "tarva_abi_kernel_call: Unknown launch type provided in the launch range argument.");
}

nd_range make_range(library_kernel& kernel, const tarva_abi_launch_range_s& launch_range) {
  test_launch_type(launch_range.type);
  const std::uint64_t* words = launch_range.words;
  switch (launch_range.type) {
  case TARVA_ABI_LAUNCH_EXPLICIT:
    return {words[0], three_words(words + 1), three_words(words + 4), three_words(words + 7)};
  case TARVA_ABI_LAUNCH_GLOBAL_SIZE:
    return wanted_global_size(kernel, words[0], three_words(words + 1));
  case TARVA_ABI_LAUNCH_GROUPS:
    return preferred_groups(kernel, words[0], false);
  case TARVA_ABI_LAUNCH_GROUPS_SIZED:
    return sized_groups(words[0], words[1], three_words(words + 2));
  case TARVA_ABI_LAUNCH_GROUPS_PER_UNIT:
    return preferred_groups(kernel, words[0], true);
  default:
    return sized_groups(words[0], kernel.get_max_compute_units(), three_words(words + 2));
  }
}

} // namespace oryn::tarva::library
