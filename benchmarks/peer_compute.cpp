// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Boost.Compute as a peer.
#include "benchmarks/peer.h"

#include <boost/compute/core.hpp>

#include <optional>

namespace {

namespace compute = boost::compute;

class compute_peer final : public benchmarks::peer {
public:
  compute_peer(cl_context context, cl_device_id device)
      : context_(context), device_(device), queue_(context_, device_) {}

  void prepare_launch(const std::string& source, const std::string& kernel, int arguments) override {
    kernel_ = compute::program::build_with_source(source, context_).create_kernel(kernel);
    argument_count_ = static_cast<std::size_t>(arguments);
    buffer_ = compute::buffer(context_, sizeof(cl_int));
  }

  void launch() override {
    for (std::size_t i = 0; i < argument_count_; ++i)
      if (i % 2 == 0)
        kernel_.set_arg(i, buffer_);
      else
        kernel_.set_arg(i, cl_int{7});
    queue_.enqueue_1d_range_kernel(kernel_, 0, 1, 1).wait();
  }

  void prepare_buffers(std::size_t bytes) override {
    buffer_ = compute::buffer(context_, bytes);
    other_buffer_ = compute::buffer(context_, bytes);
  }
  void write(const void* from, std::size_t bytes) override {
    queue_.enqueue_write_buffer(buffer_, 0, bytes, from);
  }
  void read(void* to, std::size_t bytes) override { queue_.enqueue_read_buffer(buffer_, 0, bytes, to); }
  void copy(std::size_t bytes) override {
    queue_.enqueue_copy_buffer(buffer_, other_buffer_, 0, 0, bytes).wait();
  }
  void fill(std::uint32_t value, std::size_t bytes) override {
    queue_.enqueue_fill_buffer(buffer_, &value, sizeof(value), 0, bytes).wait();
  }

private:
  compute::context context_;
  compute::device device_;
  compute::command_queue queue_;
  compute::kernel kernel_;
  std::size_t argument_count_ = 0;
  compute::buffer buffer_;
  compute::buffer other_buffer_;
};

} // namespace

extern "C" __attribute__((visibility("default"))) benchmarks::peer* make_compute(cl_context context,
                                                                                 cl_device_id device) {
  return new compute_peer(context, device);
}
