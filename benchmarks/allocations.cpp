// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Memory objects that come and go without being used. They begin on the host, so the other side is plain storage.
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/sizes.h"
#include "benchmarks/tarva_device.h"
#include "benchmarks/worker.h"

#include <memory>

namespace benchmarks {

namespace {

void compare_allocations(benchmark::State& state, std::uint64_t bytes) {
  const raw_device& device = first_raw_device();
  std::unique_ptr<std::uint8_t[]> block;
  const std::function<void()> take = [&] {
    block.reset(new std::uint8_t[bytes]);
    benchmark::DoNotOptimize(block.get());
  };
  const std::function<void()> give = [&] { block.reset(); };
  worker thread;
  compare(state, std::vector<subject>{
                     {"tarva", [&] { const tarva::memory<std::uint8_t> object(bytes); }},
                     // Of OpenCL itself.
                     {"raw",
                      [&] {
                        check(opencl().release_mem_object(device.create_buffer(bytes)), "Releasing a buffer");
                      }},
                     // One way there and back for the allocation, and one for the release.
                     {"floor",
                      [&] {
                        thread.do_and_wait(take);
                        thread.do_and_wait(give);
                      }},
                 });
  state.counters["bytes"] = static_cast<double>(bytes);
}

} // namespace

void add_allocations() {
  for (const auto& [bytes, rounds] : sizes)
    add("allocate_and_release/bytes:" + std::to_string(bytes), 2000,
        [bytes = bytes](benchmark::State& state) { compare_allocations(state, bytes); });
}

} // namespace benchmarks
