// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A launch on one device with an object that is on another. Needs two devices.
#include "benchmarks/comparison.h"
#include "benchmarks/kernels.h"
#include "benchmarks/measures.h"
#include "benchmarks/raw_device.h"
#include "benchmarks/sizes.h"
#include "benchmarks/tarva_device.h"
#include "benchmarks/worker.h"

#include <array>
#include <memory>

namespace benchmarks {

namespace {

// One device's part of the raw side.
struct stop {
  explicit stop(cl_device_id id) : device(id), program(device.build(kernel_source(1))) {
    cl_int status = CL_SUCCESS;
    kernel = opencl().create_kernel(program, kernel_name(1).c_str(), &status);
    check(status, "Making a kernel");
  }
  raw_device device;
  cl_program program;
  cl_kernel kernel;
  worker thread;
};

// To and fro between two devices, through a block on the host.
class raw_shuttle {
public:
  explicit raw_shuttle(std::uint64_t bytes) : bytes_(bytes) {
    const auto ids = find_raw_devices();
    for (std::size_t i = 0; i < stops_.size(); ++i)
      stops_[i] = std::make_unique<stop>(ids.at(i));
    buffer_ = stops_[0]->device.create_buffer(bytes_);
    stops_[0]->device.fill(buffer_, 2, bytes_);
  }
  raw_shuttle(const raw_shuttle&) = delete;
  raw_shuttle& operator=(const raw_shuttle&) = delete;
  ~raw_shuttle() { check(opencl().release_mem_object(buffer_), "Releasing a buffer"); }

  void move() {
    leave();
    arrive();
    here_ = 1 - here_;
  }

  // Each device's part on a thread of its own.
  void move_by_threads() {
    const std::function<void()> arriving = [this] {
      arrive();
      arrived_.open();
    };
    const std::function<void()> leaving = [&] {
      leave();
      stops_[1 - here_]->thread.post(&arriving);
    };
    stops_[here_]->thread.post(&leaving);
    arrived_.wait();
    here_ = 1 - here_;
  }

private:
  void leave() {
    staging_.reset(new std::uint8_t[bytes_]);
    stops_[here_]->device.read(buffer_, staging_.get(), bytes_);
    check(opencl().release_mem_object(buffer_), "Releasing a buffer");
  }
  void arrive() {
    const stop& there = *stops_[1 - here_];
    buffer_ = there.device.create_buffer(bytes_);
    there.device.write(buffer_, staging_.get(), bytes_);
    staging_.reset();
    there.device.launch(there.kernel, {{sizeof(cl_mem), &buffer_}});
  }

  std::uint64_t bytes_;
  std::array<std::unique_ptr<stop>, 2> stops_;
  std::size_t here_ = 0;
  cl_mem buffer_ = nullptr;
  std::unique_ptr<std::uint8_t[]> staging_;
  latch arrived_;
};

void compare_movements(benchmark::State& state, std::uint64_t bytes) {
  if (tarva_devices().size() < 2) {
    state.SkipWithError("needs two devices");
    return;
  }
  std::array<tarva::kernel, 2> kernels;
  for (std::size_t i = 0; i < kernels.size(); ++i)
    kernels[i] = tarva_devices()[i].build(kernel_source(1)).kernel(kernel_name(1));
  const numbers memory = make_resident(0, bytes / sizeof(std::uint32_t));
  std::size_t here = 0;

  raw_shuttle raw(bytes);
  raw_shuttle by_threads(bytes);
  compare(state, std::vector<subject>{{"tarva",
                                       [&] {
                                         here = 1 - here;
                                         launch(kernels[here], {tarva::argument(memory)});
                                       }},
                                      {"raw", [&] { raw.move(); }},
                                      {"floor", [&] { by_threads.move_by_threads(); }}});
  state.counters["bytes"] = static_cast<double>(bytes);
}

} // namespace

void add_movements() {
  for (const auto& [bytes, rounds] : sizes)
    add("move/bytes:" + std::to_string(bytes), rounds,
        [bytes = bytes](benchmark::State& state) { compare_movements(state, bytes); });
}

} // namespace benchmarks
