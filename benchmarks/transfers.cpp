// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Writes, reads, fills and copies of memory that is on the device.
#include "benchmarks/comparison.h"
#include "benchmarks/measures.h"
#include "benchmarks/peer.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/sizes.h"
#include "benchmarks/tarva_device.h"
#include "benchmarks/worker.h"

namespace benchmarks {

namespace {

// Both sides of one size: two objects on the device each, and a block of the caller's.
struct transfer_set {
  explicit transfer_set(std::uint64_t size)
      : bytes(size), count(size / sizeof(std::uint32_t)), block(count, 3), first(make_resident(0, count)),
        second(make_resident(0, count)), raw_first(device.create_buffer(size)),
        raw_second(device.create_buffer(size)) {
    device.fill(raw_first, 2, bytes);
    device.fill(raw_second, 2, bytes);
  }
  transfer_set(const transfer_set&) = delete;
  transfer_set& operator=(const transfer_set&) = delete;
  ~transfer_set() {
    check(opencl().release_mem_object(raw_first), "Releasing a buffer");
    check(opencl().release_mem_object(raw_second), "Releasing a buffer");
  }

  const raw_device& device = first_raw_device();
  std::uint64_t bytes;
  std::uint64_t count;
  std::vector<std::uint32_t> block;
  numbers first;
  numbers second;
  cl_mem raw_first;
  cl_mem raw_second;
};

struct direction {
  const char* name;
  void (*tarva)(transfer_set&);
  void (*raw)(transfer_set&);
  void (*peer_call)(transfer_set&, peer&);
};

constexpr direction directions[] = {
    {"write", [](transfer_set& set) { write(set.first, set.block.data(), set.count); },
     [](transfer_set& set) { set.device.write(set.raw_first, set.block.data(), set.bytes); },
     [](transfer_set& set, peer& by) { by.write(set.block.data(), set.bytes); }},
    {"read", [](transfer_set& set) { read(set.first, set.block.data(), set.count); },
     [](transfer_set& set) { set.device.read(set.raw_first, set.block.data(), set.bytes); },
     [](transfer_set& set, peer& by) { by.read(set.block.data(), set.bytes); }},
    {"copy", [](transfer_set& set) { copy(set.first, set.second, set.count); },
     [](transfer_set& set) { set.device.copy(set.raw_first, set.raw_second, set.bytes); },
     [](transfer_set& set, peer& by) { by.copy(set.bytes); }},
    {"fill", [](transfer_set& set) { fill(set.first, 5, set.count); },
     [](transfer_set& set) { set.device.fill(set.raw_first, 5, set.bytes); },
     [](transfer_set& set, peer& by) { by.fill(5, set.bytes); }},
};

void compare_transfers(benchmark::State& state, const direction& which, std::uint64_t bytes) {
  transfer_set set(bytes);
  worker thread;
  const std::function<void()> raw = [&] { which.raw(set); };
  std::vector<subject> subjects{
      {"tarva", [&] { which.tarva(set); }}, {"raw", raw}, {"floor", [&] { thread.do_and_wait(raw); }}};
  const auto peers = make_peers(set.device.get_context(), set.device.get_device());
  for (const named_peer& each : peers) {
    each.implementation->prepare_buffers(bytes);
    each.implementation->fill(2, bytes);
    each.implementation->copy(bytes);
    subjects.push_back({each.name, [&] { which.peer_call(set, *each.implementation); }});
  }
  compare(state, subjects);
  state.counters["bytes"] = static_cast<double>(bytes);
}

} // namespace

void add_transfers() {
  for (const direction& which : directions)
    for (const auto& [bytes, rounds] : sizes)
      add(std::string(which.name) + "/bytes:" + std::to_string(bytes), rounds,
          [&which, bytes = bytes](benchmark::State& state) { compare_transfers(state, which, bytes); });
}

} // namespace benchmarks
