// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The sum of many numbers. Each work-group adds its part up in local memory and writes one number; the same kernel
// then runs over those, until one is left.
#include <iostream>
#include <numeric>
#include <tarva.hpp>

namespace {

constexpr std::uint64_t group = 64; // a power of two that every device can run

const char* const source = R"(
  kernel void add_up(global const uint* from, uint count, global uint* to, local uint* part) {
    const uint global_id = get_global_id(0), id = get_local_id(0);
    part[id] = global_id < count ? from[global_id] : 0;
    for (uint half_size = get_local_size(0) / 2; half_size > 0; half_size /= 2) {
      barrier(CLK_LOCAL_MEM_FENCE);
      if (id < half_size)
        part[id] += part[id + half_size];
    }
    if (id == 0)
      to[get_group_id(0)] = part[0];
  }
)";

} // namespace

int main() try {
  using numbers = tarva::memory<std::uint32_t>;
  const auto program = tarva::best_device().build(source);
  const auto add_up = program.kernel<numbers, std::uint32_t, numbers, tarva::local<std::uint32_t>>("add_up");

  std::vector<std::uint32_t> input(1'000'003);
  std::iota(input.begin(), input.end(), 7U);
  const std::uint32_t expected = std::accumulate(input.begin(), input.end(), 0U);

  numbers from(input), to((input.size() + group - 1) / group);
  std::uint64_t count = input.size();
  while (count > 1) {
    const std::uint64_t groups = (count + group - 1) / group;
    add_up(tarva::range::groups_of(groups, group), from, count, to, tarva::local<std::uint32_t>(group));
    count = groups;
    std::swap(from, to);
  }
  std::uint32_t sum[1];
  from.part(0, 1).read(sum);
  std::cout << "The sum of " << input.size() << " numbers is " << sum[0] << " (modulo 2^32), "
            << (sum[0] == expected ? "as on the host.\n" : "which is WRONG.\n");
  return sum[0] == expected ? 0 : 1;
} catch (const std::exception& caught) {
  std::cerr << caught.what() << '\n';
  return 1;
}
