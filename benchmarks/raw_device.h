// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// OpenCL without the library: one device with its context and queues, and the calls that the library makes for the same
// work. OpenCL is reached as the capability library reaches it.
#pragma once

#include "capability/opencl_functions.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace benchmarks {

// The machine's OpenCL. Ends the process if there is none.
const qv::opencl_functions& opencl();
std::vector<cl_device_id> find_raw_devices();

// Ends the process, with `doing`, if an OpenCL call has failed.
void check(cl_int status, const char* doing);

class raw_device {
public:
  explicit raw_device(cl_device_id device);
  raw_device(const raw_device&) = delete;
  raw_device& operator=(const raw_device&) = delete;

  cl_device_id get_device() const { return device_; }
  cl_context get_context() const { return context_; }
  std::uint64_t get_largest_buffer() const;

  // Builds and asks how it went, as loading a program does.
  cl_program build(const std::string& source) const;
  cl_mem create_buffer(std::size_t bytes) const;

  // Each of these waits for the end and reads how the command ended.
  void write(cl_mem to, const void* from, std::size_t bytes) const;
  void read(cl_mem from, void* to, std::size_t bytes) const;
  void copy(cl_mem from, cl_mem to, std::size_t bytes) const;
  void fill(cl_mem what, std::uint32_t value, std::size_t bytes) const;
  struct argument {
    std::size_t size;
    const void* value;
  };
  void launch(cl_kernel kernel, const std::vector<argument>& arguments) const;
  // On a kernel made for this launch.
  void launch_fresh(cl_program program, const char* name, const std::vector<argument>& arguments) const;

private:
  void finish(cl_event event) const;

  cl_device_id device_;
  cl_context context_;
  cl_command_queue profiling_queue_;
  cl_command_queue queue_;
};

// What every benchmark measures on: the machine's first device.
const raw_device& first_raw_device();

} // namespace benchmarks
