#pragma once

#include "base/address_map.h"
#include "properties/data_type.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <variant>
#include <vector>

namespace oryn::tarva::library {

class device_memory;
class library_memory;

// The five kinds of argument of a kernel launch. None ever changes.

// A null buffer.
class kernel_argument_nullptr {};

// A value passed by copy, its bytes in host byte order.
class kernel_argument_pod_value {
public:
  // Copies one element of `type` from `pointer`.
  kernel_argument_pod_value(const void* pointer, data_type type);

  data_type get_type() const { return type_; }
  std::span<const std::uint8_t> get_raw_data() const {
    return {large_ ? large_->data() : small_.data(), element_size(type_)};
  }

private:
  data_type type_;
  // Most values are small and need no storage of their own; copies share a large one.
  std::array<std::uint8_t, 16> small_{};
  std::shared_ptr<const std::vector<std::uint8_t>> large_;
};

// Room in the device's local memory, without data.
class kernel_argument_local_memory {
public:
  kernel_argument_local_memory(data_type type, std::uint64_t count) : type_(type), count_(count) {}

  data_type get_type() const { return type_; }
  std::uint64_t get_num_elements() const { return count_; }

private:
  data_type type_;
  std::uint64_t count_;
};

// A memory object as the user named it.
class kernel_argument_typed_library_memory_array {
public:
  explicit kernel_argument_typed_library_memory_array(std::shared_ptr<library_memory> memory)
      : memory_(std::move(memory)) {}

  const std::shared_ptr<library_memory>& get_memory() const { return memory_; }

private:
  std::shared_ptr<library_memory> memory_;
};

// The device block that stands in for a memory object in one launch.
class kernel_argument_typed_device_memory_array {
public:
  explicit kernel_argument_typed_device_memory_array(std::shared_ptr<device_memory> memory)
      : memory_(std::move(memory)) {}

  const std::shared_ptr<device_memory>& get_memory() const { return memory_; }

private:
  std::shared_ptr<device_memory> memory_;
};

using kernel_argument =
    std::variant<kernel_argument_nullptr, kernel_argument_pod_value, kernel_argument_local_memory,
                 kernel_argument_typed_library_memory_array, kernel_argument_typed_device_memory_array>;

// The arguments of one launch in the order of the kernel's parameters. Each level of the pipeline has a copy of its
// own; copies share the list until one of them replaces its memory objects.
class kernel_argument_capture {
public:
  struct replacement {
    std::shared_ptr<device_memory> block;
    bool is_used = false;
  };
  // By the address of the memory object that is replaced.
  using replacement_table = address_map<replacement>;

  kernel_argument_capture() : kernel_argument_capture(std::vector<kernel_argument>()) {}
  explicit kernel_argument_capture(std::vector<kernel_argument> arguments)
      : arguments_(std::make_shared<const std::vector<kernel_argument>>(std::move(arguments))) {}

  std::uint64_t get_argument_count() const { return arguments_->size(); }
  const kernel_argument& get_argument(std::uint64_t index) const;
  const std::vector<kernel_argument>& get_arguments() const { return *arguments_; }
  // In argument order, with repeats.
  std::vector<std::shared_ptr<library_memory>> get_library_memory_arguments() const;
  bool has_library_memory_arguments() const;
  std::vector<std::shared_ptr<device_memory>> get_device_memory_arguments() const;

  // Puts the mapped device block in the place of every memory object; the keys must be exactly the capture's
  // objects.
  void replace_library_memory(replacement_table replacements);

private:
  std::shared_ptr<const std::vector<kernel_argument>> arguments_;
};

} // namespace oryn::tarva::library
