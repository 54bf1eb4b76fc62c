// The bodies of buffer_commands.h, compiled once for each version.
#pragma once

#include "access/opencl/copy_buffer.h"
#include "access/opencl/fill_buffer_bytes.h"
#include "access/opencl/transfer_buffer.h"
#include "opencl/buffer_commands.h"
#include "memory/range_checks.h"
#include "memory/swap_endianness.h"

namespace oryn::tarva::library::device_ir::opencl {

template <version V, class Source, class Destination>
std::string copy_command<V, Source, Destination>::text(const char* name) const {
  return class_text<V>(name) + "src_object_id=" + std::to_string(source_->get_unique_identifier()) +
         ", dest_object_id=" + std::to_string(destination_->get_unique_identifier()) +
         ", src_start_pos=" + std::to_string(source_start_) +
         ", dest_start_pos=" + std::to_string(destination_start_) + ", count=" + std::to_string(count_) + "}";
}

template <version V, class Source, class Destination>
void copy_command<V, Source, Destination>::check() const {
  check_device_copy({source_->get_type(), source_->get_size()}, source_start_,
                    {destination_->get_type(), destination_->get_size()}, destination_start_, count_);
}

template <version V>
skerv::opencl::event<V> copy_device_to_host<V>::enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                                        void* const* wait_list) {
  this->check();
  const skerv::opencl::read_buffer<V> command(
      buffer_of<V>(*this->source_), false, this->source_offset(), this->bytes(),
      this->destination_->get_write_pointer(this->destination_start_));
  return this->submit(queue, command, wait_count, wait_list);
}

template <version V>
skerv::opencl::event<V> copy_host_to_device<V>::enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                                        void* const* wait_list) {
  this->check();
  this->destination_->note_content();
  const skerv::opencl::write_buffer<V> command(buffer_of<V>(*this->destination_), false,
                                               this->destination_offset(), this->bytes(),
                                               this->source_->get_read_pointer(this->source_start_));
  return this->submit(queue, command, wait_count, wait_list);
}

template <version V>
skerv::opencl::event<V> copy_same_device<V>::enqueue(dispatch_queue<V>& queue, std::uint32_t wait_count,
                                                     void* const* wait_list) {
  if (this->source_->get_device() != this->destination_->get_device())
    throw std::logic_error("Source and destination memory must be on the same device.");
  if (this->get_physical_operation()->get_device() != this->source_->get_device())
    throw std::logic_error("Memory arguments are associated with the wrong device.");
  this->check();
  this->destination_->note_content();
  const skerv::opencl::copy_buffer<V> command(buffer_of<V>(*this->source_), buffer_of<V>(*this->destination_),
                                              this->source_offset(), this->destination_offset(),
                                              this->bytes());
  return this->submit(queue, command, wait_count, wait_list);
}

template <version V>
requires(version_traits<V>::has_fill_buffer) std::string fill_on_device<V>::to_string()
const {
  return class_text<V>("fill_on_device") +
         "mem_object_id=" + std::to_string(memory_->get_unique_identifier()) +
         ", start_pos=" + std::to_string(start_) + ", count=" + std::to_string(count_) + "}";
}

template <version V>
requires(version_traits<V>::has_fill_buffer) skerv::opencl::event<V> fill_on_device<V>::enqueue(
    dispatch_queue<V>& queue, std::uint32_t wait_count, void* const* wait_list) {
  const data_type type = memory_->get_type();
  check_fill(value_, start_, count_, {type, memory_->get_size()});
  if (!this->get_device().is_little_endian())
    swap_endianness(value_.data(), type, 0, 1);
  memory_->note_content();
  const skerv::opencl::fill_buffer_bytes<V> command(buffer_of<V>(*memory_), std::move(value_),
                                                    element_size(type) * start_, count_);
  return this->submit(queue, command, wait_count, wait_list);
}

} // namespace oryn::tarva::library::device_ir::opencl
