// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The physical operations that copy and fill ranges of elements.
#pragma once

#include "ir/physical_operation.h"

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

// The ranges that physical operations and their device commands work on: the same numbers go from the one to the other as they
// are. Positions and counts are numbers of elements.
// They share the blocks, so that these live for as long as anyone works on them.

template <class Source, class Destination>
struct block_copy {
  std::shared_ptr<Source> source;
  std::uint64_t source_start;
  std::shared_ptr<Destination> destination;
  std::uint64_t destination_start;
  std::uint64_t count;
};

using device_to_host_copy = block_copy<device_memory, host_memory>;
using host_to_device_copy = block_copy<host_memory, device_memory>;
using device_copy = block_copy<device_memory, device_memory>;
using host_copy = block_copy<host_memory, host_memory>;

template <class Memory>
struct block_fill {
  std::shared_ptr<Memory> memory;
  std::vector<std::uint8_t> value; // the bytes of one element
  std::uint64_t start;
  std::uint64_t count;
};

using device_fill = block_fill<device_memory>;
using host_fill = block_fill<host_memory>;

namespace physical_ir {

// From one block to another. The four kinds differ in where the blocks are, and so in what carries the copy out.
template <class Source, class Destination>
class copy_operation : public physical_operation {
public:
  const block_copy<Source, Destination>& get_copy() const { return copy_; }
  const std::shared_ptr<Source>& get_src_memory() const { return copy_.source; }
  const std::shared_ptr<Destination>& get_dest_memory() const { return copy_.destination; }
  std::uint64_t get_src_start_position() const { return copy_.source_start; }
  std::uint64_t get_dest_start_position() const { return copy_.destination_start; }
  std::uint64_t get_count() const { return copy_.count; }
  std::string to_string() const override {
    return std::string(head_) + "src_object_id=" + std::to_string(copy_.source->get_unique_identifier()) +
           ", dest_object_id=" + std::to_string(copy_.destination->get_unique_identifier()) +
           ", src_start_position=" + std::to_string(copy_.source_start) +
           ", dest_start_position=" + std::to_string(copy_.destination_start) +
           ", count=" + std::to_string(copy_.count) + "}";
  }

protected:
  copy_operation(operation_kind kind, const char* head, logical_pointer operation, device_pointer device,
                 block_copy<Source, Destination> copy)
      : physical_operation(kind, std::move(operation), std::move(device)), head_(head),
        copy_(std::move(copy)) {}
  // On the device of the block that is on one.
  copy_operation(operation_kind kind, const char* head, logical_pointer operation,
                 block_copy<Source, Destination> copy)
      : physical_operation(kind, std::move(operation), device_of(copy)), head_(head), copy_(std::move(copy)) {
  }

private:
  static const device_pointer& device_of(const block_copy<Source, Destination>& copy) {
    if constexpr (std::is_same_v<Source, device_memory>)
      return copy.source->get_device();
    else
      return copy.destination->get_device();
  }

  const char* head_; // the text form up to the fields
  block_copy<Source, Destination> copy_;
};

// A read by the user, or the way into staging.
class copy_device_to_host final : public copy_operation<device_memory, host_memory>,
                                  public made_shared<copy_device_to_host> {
public:
  copy_device_to_host(logical_pointer operation, device_to_host_copy copy)
      : copy_operation(operation_kind::copy_device_to_host, "copy_device_to_host: {", std::move(operation),
                       std::move(copy)) {}
};

// A write by the user, or the arrival of content on the device of a launch.
class copy_host_to_device final : public copy_operation<host_memory, device_memory>,
                                  public made_shared<copy_host_to_device> {
public:
  copy_host_to_device(logical_pointer operation, host_to_device_copy copy)
      : copy_operation(operation_kind::copy_host_to_device, "copy_host_to_device: {", std::move(operation),
                       std::move(copy)) {}
};

// Between two blocks of one device, or within one.
class copy_same_device final : public copy_operation<device_memory, device_memory>,
                               public made_shared<copy_same_device> {
public:
  copy_same_device(logical_pointer operation, device_copy copy)
      : copy_operation(operation_kind::copy_same_device, "copy_same_device: {", std::move(operation),
                       std::move(copy)) {}
};

// Without OpenCL: the device only lends its thread.
class copy_host_to_host final : public copy_operation<host_memory, host_memory>,
                                public made_shared<copy_host_to_host> {
public:
  copy_host_to_host(logical_pointer operation, device_pointer device, host_copy copy)
      : copy_operation(operation_kind::copy_host_to_host, "copy_host_to_host: {", std::move(operation),
                       std::move(device), std::move(copy)) {}
};

// Writes one element's bytes into a range of a block, again and again. On the host the bytes have the order of the block; for a
// device they have the host's until they are enqueued.
template <class Memory>
class fill_operation : public physical_operation {
public:
  const block_fill<Memory>& get_fill() const { return fill_; }
  const std::shared_ptr<Memory>& get_memory() const { return fill_.memory; }
  const std::vector<std::uint8_t>& get_value() const { return fill_.value; }
  std::uint64_t get_start_position() const { return fill_.start; }
  std::uint64_t get_count() const { return fill_.count; }
  std::string to_string() const override {
    return std::string(head_) + "memory_object_id=" + std::to_string(fill_.memory->get_unique_identifier()) +
           ", value=<omitted>, start_position=" + std::to_string(fill_.start) +
           ", count=" + std::to_string(fill_.count) + "}";
  }

protected:
  fill_operation(operation_kind kind, const char* head, logical_pointer operation, device_pointer device,
                 block_fill<Memory> fill)
      : physical_operation(kind, std::move(operation), std::move(device)), head_(head),
        fill_(std::move(fill)) {}
  fill_operation(operation_kind kind, const char* head, logical_pointer operation, block_fill<Memory> fill)
      : physical_operation(kind, std::move(operation), fill.memory->get_device()), head_(head),
        fill_(std::move(fill)) {}

private:
  const char* head_; // the text form up to the fields
  block_fill<Memory> fill_;
};

class fill_on_device final : public fill_operation<device_memory>, public made_shared<fill_on_device> {
public:
  fill_on_device(logical_pointer operation, device_fill fill)
      : fill_operation(operation_kind::fill_on_device, "fill_on_device: {", std::move(operation),
                       std::move(fill)) {}
};

class fill_on_host final : public fill_operation<host_memory>, public made_shared<fill_on_host> {
public:
  fill_on_host(logical_pointer operation, device_pointer device, host_fill fill)
      : fill_operation(operation_kind::fill_on_host, "fill_on_host: {", std::move(operation),
                       std::move(device), std::move(fill)) {}
};

} // namespace physical_ir
} // namespace oryn::tarva::library
