// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "benchmarks/raw_device.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace benchmarks {

namespace {

[[noreturn]] void give_up(const char* doing, int status) {
  std::fprintf(stderr, "%s failed with status %d.\n", doing, status);
  std::exit(1);
}

// Asks for the size first, as the library does.
template <class Value, class Query>
Value ask(Query query) {
  std::size_t size = 0;
  check(query(0, nullptr, &size), "A query of a size");
  Value value{};
  // NOLINTNEXTLINE(bugprone-sizeof-expression): a handle is asked for, too
  check(query(sizeof(Value), &value, &size), "A query of a number");
  return value;
}

template <class Query>
std::string ask_text(Query query) {
  std::size_t size = 0;
  check(query(0, nullptr, &size), "A query of a size");
  std::string text(size, '\0');
  check(query(size, text.data(), &size), "A query of a text");
  return text;
}

} // namespace

void check(cl_int status, const char* doing) {
  if (status != CL_SUCCESS)
    give_up(doing, status);
}

const qv::opencl_functions& opencl() {
  static const auto functions = qv::load_opencl_functions(qv::opencl_loader_name);
  if (!functions)
    give_up("Loading OpenCL", 0);
  return *functions;
}

std::vector<cl_device_id> find_raw_devices() {
  cl_uint platform_count = 0;
  check(opencl().get_platform_ids(0, nullptr, &platform_count), "Looking for platforms");
  std::vector<cl_platform_id> platforms(platform_count);
  check(opencl().get_platform_ids(platform_count, platforms.data(), nullptr), "Looking for platforms");
  std::vector<cl_device_id> devices;
  for (cl_platform_id platform : platforms) {
    cl_uint count = 0;
    if (opencl().get_device_ids(platform, CL_DEVICE_TYPE_ALL, 0, nullptr, &count) != CL_SUCCESS)
      continue;
    const std::size_t before = devices.size();
    devices.resize(before + count);
    check(opencl().get_device_ids(platform, CL_DEVICE_TYPE_ALL, count, devices.data() + before, nullptr),
          "Looking for devices");
  }
  return devices;
}

raw_device::raw_device(cl_device_id device) : device_(device) {
  cl_int status = CL_SUCCESS;
  context_ = opencl().create_context(nullptr, 1, &device_, nullptr, nullptr, &status);
  check(status, "Making a context");
  queue_ = opencl().create_command_queue(context_, device_, 0, &status);
  check(status, "Making a queue");
  profiling_queue_ = opencl().create_command_queue(context_, device_, CL_QUEUE_PROFILING_ENABLE, &status);
  check(status, "Making a queue");
}

std::uint64_t raw_device::get_largest_buffer() const {
  return ask<cl_ulong>([this](std::size_t size, void* value, std::size_t* reported) {
    return opencl().get_device_info(device_, CL_DEVICE_MAX_MEM_ALLOC_SIZE, size, value, reported);
  });
}

cl_program raw_device::build(const std::string& source) const {
  cl_int status = CL_SUCCESS;
  const char* text = source.c_str();
  cl_program program = opencl().create_program_with_source(context_, 1, &text, nullptr, &status);
  check(status, "Making a program");
  check(opencl().build_program(program, 1, &device_, "", nullptr, nullptr), "Building a program");
  const auto about = [&](cl_uint parameter) {
    return [this, program, parameter](std::size_t size, void* value, std::size_t* reported) {
      return opencl().get_program_build_info(program, device_, parameter, size, value, reported);
    };
  };
  check(ask<cl_int>(about(CL_PROGRAM_BUILD_STATUS)), "The build of a program");
  ask_text(about(CL_PROGRAM_BUILD_LOG));
  return program;
}

cl_mem raw_device::create_buffer(std::size_t bytes) const {
  cl_int status = CL_SUCCESS;
  cl_mem buffer = opencl().create_buffer(context_, CL_MEM_READ_WRITE, bytes, nullptr, &status);
  check(status, "Making a buffer");
  return buffer;
}

void raw_device::finish(cl_event event) const {
  check(opencl().finish(profiling_queue_), "Waiting for a queue");
  check(opencl().finish(queue_), "Waiting for a queue");
  const auto status = ask<cl_int>([event](std::size_t size, void* value, std::size_t* reported) {
    return opencl().get_event_info(event, CL_EVENT_COMMAND_EXECUTION_STATUS, size, value, reported);
  });
  check(status, "A command");
  check(opencl().release_event(event), "Releasing an event");
}

void raw_device::write(cl_mem to, const void* from, std::size_t bytes) const {
  cl_event event = nullptr;
  check(opencl().enqueue_write_buffer(queue_, to, CL_FALSE, 0, bytes, from, 0, nullptr, &event), "A write");
  finish(event);
}

void raw_device::read(cl_mem from, void* to, std::size_t bytes) const {
  cl_event event = nullptr;
  check(opencl().enqueue_read_buffer(queue_, from, CL_FALSE, 0, bytes, to, 0, nullptr, &event), "A read");
  finish(event);
}

void raw_device::copy(cl_mem from, cl_mem to, std::size_t bytes) const {
  cl_event event = nullptr;
  check(opencl().enqueue_copy_buffer(queue_, from, to, 0, 0, bytes, 0, nullptr, &event), "A copy");
  finish(event);
}

void raw_device::fill(cl_mem what, std::uint32_t value, std::size_t bytes) const {
  cl_event event = nullptr;
  check(opencl().enqueue_fill_buffer(queue_, what, &value, sizeof(value), 0, bytes, 0, nullptr, &event),
        "A fill");
  finish(event);
}

void raw_device::launch(cl_kernel kernel, const std::vector<argument>& arguments) const {
  for (cl_uint index = 0; index < arguments.size(); ++index)
    check(opencl().set_kernel_arg(kernel, index, arguments[index].size, arguments[index].value),
          "Setting an argument");
  const std::array<std::size_t, 3> one{1, 1, 1};
  const std::array<std::size_t, 3> zero{};
  cl_event event = nullptr;
  check(opencl().enqueue_nd_range_kernel(queue_, kernel, 1, zero.data(), one.data(), one.data(), 0, nullptr,
                                         &event),
        "A launch");
  finish(event);
}

void raw_device::launch_fresh(cl_program program, const char* name,
                              const std::vector<argument>& arguments) const {
  cl_int status = CL_SUCCESS;
  cl_kernel kernel = opencl().create_kernel(program, name, &status);
  check(status, "Making a kernel");
  launch(kernel, arguments);
  check(opencl().release_kernel(kernel), "Releasing a kernel");
}

const raw_device& first_raw_device() {
  static const raw_device* device = [] {
    const auto devices = find_raw_devices();
    if (devices.empty())
      give_up("Looking for an OpenCL device", 0);
    return new raw_device(devices.front());
  }();
  return *device;
}

} // namespace benchmarks
