#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

class device_memory;
class library_memory;

// One argument of a kernel launch. Immutable.
class kernel_argument_base {
public:
  virtual ~kernel_argument_base() = default;
  virtual std::shared_ptr<kernel_argument_base> clone() const = 0;
};

// A null buffer.
class kernel_argument_nullptr final : public kernel_argument_base {
public:
  std::shared_ptr<kernel_argument_base> clone() const override;
};

// A value passed by copy, its bytes in host byte order.
class kernel_argument_pod_value final : public kernel_argument_base {
public:
  // Copies one element of `type` from `pointer`.
  kernel_argument_pod_value(const void* pointer, data_type type);
  std::shared_ptr<kernel_argument_base> clone() const override;

  data_type get_type() const { return type_; }
  std::vector<std::uint8_t> get_raw_data() const { return raw_data_; }

private:
  data_type type_;
  std::vector<std::uint8_t> raw_data_;
};

// Room in the device's local memory, without data.
class kernel_argument_local_memory final : public kernel_argument_base {
public:
  kernel_argument_local_memory(data_type type, std::uint64_t count) : type_(type), count_(count) {}
  std::shared_ptr<kernel_argument_base> clone() const override;

  data_type get_type() const { return type_; }
  std::uint64_t get_num_elements() const { return count_; }

private:
  data_type type_;
  std::uint64_t count_;
};

// A memory object as the user named it.
class kernel_argument_typed_library_memory_array final : public kernel_argument_base {
public:
  explicit kernel_argument_typed_library_memory_array(std::shared_ptr<library_memory> memory)
      : memory_(std::move(memory)) {}
  std::shared_ptr<kernel_argument_base> clone() const override;

  const std::shared_ptr<library_memory>& get_memory() const { return memory_; }

private:
  std::shared_ptr<library_memory> memory_;
};

// The device block that stands in for a memory object in one launch.
class kernel_argument_typed_device_memory_array final : public kernel_argument_base {
public:
  explicit kernel_argument_typed_device_memory_array(std::shared_ptr<device_memory> memory)
      : memory_(std::move(memory)) {}
  std::shared_ptr<kernel_argument_base> clone() const override;

  const std::shared_ptr<device_memory>& get_memory() const { return memory_; }

private:
  std::shared_ptr<device_memory> memory_;
};

// The arguments of one launch in the order of the kernel's parameters. Copies are deep; memory objects stay
// shared.
class kernel_argument_capture {
public:
  using replacement_table =
      std::unordered_map<std::shared_ptr<library_memory>, std::shared_ptr<device_memory>>;

  kernel_argument_capture() = default;
  explicit kernel_argument_capture(std::vector<std::shared_ptr<kernel_argument_base>> arguments)
      : arguments_(std::move(arguments)) {}
  kernel_argument_capture(const kernel_argument_capture& other);
  kernel_argument_capture(kernel_argument_capture&& other) noexcept = default;
  kernel_argument_capture& operator=(const kernel_argument_capture&) = delete;
  kernel_argument_capture& operator=(kernel_argument_capture&&) noexcept = default;
  ~kernel_argument_capture() = default;

  std::uint64_t get_argument_count() const { return arguments_.size(); }
  const std::shared_ptr<kernel_argument_base>& get_argument(std::uint64_t index) const;
  // In argument order, with repeats.
  std::vector<std::shared_ptr<library_memory>> get_library_memory_arguments() const;
  bool has_library_memory_arguments() const;
  std::vector<std::shared_ptr<device_memory>> get_device_memory_arguments() const;

  // Puts the mapped device block in the place of every memory object; the keys must be exactly the capture's
  // objects.
  void replace_library_memory(const replacement_table& replacements);

private:
  std::vector<std::shared_ptr<kernel_argument_base>> arguments_;
};

} // namespace oryn::tarva::library
