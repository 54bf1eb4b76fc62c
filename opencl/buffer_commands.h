#pragma once

#include "opencl/opencl_device_command.h"
#include "memory/host_memory.h"

#include <vector>

namespace oryn::tarva::library::device_ir::opencl {

// Positions and counts are numbers of elements; the blocks live as long as the command.

template <version V, class Source, class Destination>
class copy_command : public opencl_device_command<V> {
public:
  copy_command(std::shared_ptr<physical_ir::physical_operation> operation, std::shared_ptr<Source> source,
               std::uint64_t source_start, std::shared_ptr<Destination> destination,
               std::uint64_t destination_start, std::uint64_t count)
      : opencl_device_command<V>(std::move(operation)), source_(std::move(source)),
        source_start_(source_start), destination_(std::move(destination)),
        destination_start_(destination_start), count_(count) {}
  bool has_nothing_to_do() const override { return !source_->has_content(); }

protected:
  std::string text(const char* name) const;
  // Refuses what does not fit.
  void check() const;

  std::uint64_t source_offset() const { return element_size(source_->get_type()) * source_start_; }
  std::uint64_t destination_offset() const { return element_size(source_->get_type()) * destination_start_; }
  std::uint64_t bytes() const { return element_size(source_->get_type()) * count_; }

  std::shared_ptr<Source> source_;
  std::uint64_t source_start_;
  std::shared_ptr<Destination> destination_;
  std::uint64_t destination_start_;
  std::uint64_t count_;
};

template <version V>
class copy_device_to_host final : public copy_command<V, device_memory, host_memory> {
public:
  using copy_command<V, device_memory, host_memory>::copy_command;
  std::string to_string() const override { return this->text("copy_device_to_host"); }
  // The read does not block: the dispatcher keeps the host block until the event has been seen.
  skerv::opencl::event<V> enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                  void* const* wait_list) override;
};

template <version V>
class copy_host_to_device final : public copy_command<V, host_memory, device_memory> {
public:
  using copy_command<V, host_memory, device_memory>::copy_command;
  std::string to_string() const override { return this->text("copy_host_to_device"); }
  skerv::opencl::event<V> enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                  void* const* wait_list) override;
};

template <version V>
class copy_same_device final : public copy_command<V, device_memory, device_memory> {
public:
  using copy_command<V, device_memory, device_memory>::copy_command;
  std::string to_string() const override { return this->text("copy_same_device"); }
  skerv::opencl::event<V> enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                  void* const* wait_list) override;
};

template <version V>
requires(version_traits<V>::has_fill_buffer) class fill_on_device final : public opencl_device_command<V> {
public:
  fill_on_device(std::shared_ptr<physical_ir::physical_operation> operation,
                 std::shared_ptr<device_memory> memory, std::vector<std::uint8_t> value, std::uint64_t start,
                 std::uint64_t count)
      : opencl_device_command<V>(std::move(operation)), memory_(std::move(memory)), value_(std::move(value)),
        start_(start), count_(count) {}
  std::string to_string() const override;
  skerv::opencl::event<V> enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                  void* const* wait_list) override;

private:
  std::shared_ptr<device_memory> memory_;
  std::vector<std::uint8_t> value_;
  std::uint64_t start_;
  std::uint64_t count_;
};

} // namespace oryn::tarva::library::device_ir::opencl
