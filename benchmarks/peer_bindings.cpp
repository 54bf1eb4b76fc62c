// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The C++ bindings of OpenCL as a peer.
#include "benchmarks/peer.h"

#define CL_HPP_TARGET_OPENCL_VERSION 120
#define CL_HPP_MINIMUM_OPENCL_VERSION 120
#define CL_HPP_ENABLE_EXCEPTIONS
#include <CL/opencl.hpp>

namespace {

class bindings_peer final : public benchmarks::peer {
public:
  bindings_peer(cl_context context, cl_device_id device)
      : context_(context, true), device_(device, true), queue_(context_, device_) {}

  void prepare_launch(const std::string& source, const std::string& kernel, int arguments) override {
    const cl::Program program(context_, source);
    program.build({device_}, ""); // some implementations want both told
    kernel_ = cl::Kernel(program, kernel.c_str());
    argument_count_ = static_cast<cl_uint>(arguments);
    buffer_ = cl::Buffer(context_, CL_MEM_READ_WRITE, sizeof(cl_int));
  }

  void launch() override {
    for (cl_uint i = 0; i < argument_count_; ++i)
      if (i % 2 == 0)
        kernel_.setArg(i, buffer_);
      else
        kernel_.setArg(i, cl_int{7});
    cl::Event event;
    queue_.enqueueNDRangeKernel(kernel_, cl::NullRange, cl::NDRange(1), cl::NDRange(1), nullptr, &event);
    event.wait();
  }

  void prepare_buffers(std::size_t bytes) override {
    buffer_ = cl::Buffer(context_, CL_MEM_READ_WRITE, bytes);
    other_buffer_ = cl::Buffer(context_, CL_MEM_READ_WRITE, bytes);
  }
  void write(const void* from, std::size_t bytes) override {
    queue_.enqueueWriteBuffer(buffer_, CL_TRUE, 0, bytes, from);
  }
  void read(void* to, std::size_t bytes) override {
    queue_.enqueueReadBuffer(buffer_, CL_TRUE, 0, bytes, to);
  }
  void copy(std::size_t bytes) override {
    cl::Event event;
    queue_.enqueueCopyBuffer(buffer_, other_buffer_, 0, 0, bytes, nullptr, &event);
    event.wait();
  }
  void fill(std::uint32_t value, std::size_t bytes) override {
    cl::Event event;
    queue_.enqueueFillBuffer(buffer_, value, 0, bytes, nullptr, &event);
    event.wait();
  }

private:
  cl::Context context_;
  cl::Device device_;
  cl::CommandQueue queue_;
  cl::Kernel kernel_;
  cl_uint argument_count_ = 0;
  cl::Buffer buffer_;
  cl::Buffer other_buffer_;
};

} // namespace

extern "C" __attribute__((visibility("default"))) benchmarks::peer* make_bindings(cl_context context,
                                                                                  cl_device_id device) {
  return new bindings_peer(context, device);
}
