// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// How often each byte occurs. Each work-group counts in local memory, and adds that up at the end:
//   histogram [file for the result]
// histogram.py is the same in Python.
#include "result.h"

#include <tarva.hpp>

namespace {

constexpr unsigned bins = 256;

const char* const source = R"(
  kernel void count_bytes(global const uchar* bytes, uint count, global uint* counts, local uint* part) {
    const uint id = get_local_id(0), size = get_local_size(0);
    for (uint i = id; i < 256; i += size)
      part[i] = 0;
    barrier(CLK_LOCAL_MEM_FENCE);
    for (uint i = get_global_id(0); i < count; i += get_global_size(0))
      atomic_inc(&part[bytes[i]]);
    barrier(CLK_LOCAL_MEM_FENCE);
    for (uint i = id; i < 256; i += size)
      atomic_add(&counts[i], part[i]);
  })";

} // namespace

int main(int argc, char** argv) try {
  std::vector<std::uint8_t> bytes(1'000'003);
  std::vector<std::uint32_t> expected(bins);
  for (std::uint32_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(i * 2654435761U >> 20);
    ++expected[bytes[i]];
  }

  using counters = tarva::memory<std::uint32_t>;
  const auto program = tarva::best_device().build(source);
  const auto count_bytes =
      program.kernel<tarva::memory<std::uint8_t>, std::uint32_t, counters, tarva::local<std::uint32_t>>(
          "count_bytes");
  const counters counts(bins);
  counts.fill(0);
  count_bytes(tarva::range::groups_of(16, 64), tarva::memory<std::uint8_t>(bytes), bytes.size(), counts,
              tarva::local<std::uint32_t>(bins));

  const std::vector<std::uint32_t> result = counts.read();
  return finish(argc, argv, result, result == expected);
} catch (const std::exception& caught) {
  std::cerr << caught.what() << '\n';
  return 1;
}
