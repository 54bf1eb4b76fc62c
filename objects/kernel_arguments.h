// The arguments of a launch.
#pragma once

#include "properties/data_type.h"

#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace oryn::tarva::library {

class device_memory;
class library_memory;

// The five kinds of argument of a kernel launch. Each is a view of what its capture holds, made for one call of a visitor
// and not to be kept.

// A null buffer.
class kernel_argument_nullptr {};

// A value passed by copy, its bytes in host byte order.
class kernel_argument_pod_value {
public:
  kernel_argument_pod_value(data_type type, const std::uint8_t* bytes) : type_(type), bytes_(bytes) {}

  data_type get_type() const { return type_; }
  std::span<const std::uint8_t> get_raw_data() const { return {bytes_, element_size(type_)}; }

private:
  data_type type_;
  const std::uint8_t* bytes_;
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
  explicit kernel_argument_typed_library_memory_array(const std::shared_ptr<library_memory>& memory)
      : memory_(memory) {}

  const std::shared_ptr<library_memory>& get_memory() const { return memory_; }

private:
  const std::shared_ptr<library_memory>& memory_;
};

// The device block that stands in for a memory object in one launch.
class kernel_argument_typed_device_memory_array {
public:
  explicit kernel_argument_typed_device_memory_array(device_memory& memory) : memory_(memory) {}

  device_memory& get_memory() const { return memory_; }

private:
  device_memory& memory_;
};

// The arguments of a launch in the making, in the order of the kernel's parameters. What they hold stands together by
// kind, so that many arguments take few and small allocations. Filled by one thread, the caller's, and then given to a
// capture.
class kernel_argument_list {
public:
  explicit kernel_argument_list(std::uint64_t expected_count = 0) { arguments_.reserve(expected_count); }

  void add_null() { add(kind::null, data_type{}, 0); }
  // Copies one element of `type` from `pointer`.
  void add_value(const void* pointer, data_type type);
  void add_local_memory(data_type type, std::uint64_t count) { add(kind::local_memory, type, count); }
  void add_memory(const std::shared_ptr<library_memory>& memory);

private:
  friend class kernel_argument_capture;

  enum class kind : std::uint8_t { null, value, local_memory, memory };
  struct argument {
    kind of;
    std::uint8_t type;    // every data type fits
    std::uint64_t number; // of elements; or where the value, or the memory object, stands below
  };

  void add(kind of, data_type type, std::uint64_t number) {
    arguments_.push_back({of, static_cast<std::uint8_t>(type), number});
  }
  std::uint64_t expected_more() const { return arguments_.capacity() - arguments_.size(); }

  // Aligned for every type. Most values take one; a large one takes several in a row.
  struct alignas(16) value_piece {
    std::uint8_t bytes[16];
  };

  std::vector<argument> arguments_;
  std::vector<value_piece> values_;
  std::vector<std::shared_ptr<library_memory>> memory_;
};

// The arguments of one launch. The logical operation has a capture with memory objects, the physical operation one with the
// blocks that stand in for them; both share what they hold, which never changes. So any thread may visit them.
class kernel_argument_capture {
public:
  // A memory object among the arguments, and the block that is to stand in for it. Plain pointers: the scheduler keeps both
  // until the launch has ended, and counting their users would make a launch with 64 arguments 4% slower.
  struct replacement {
    const library_memory* object;
    device_memory* block;
  };

  kernel_argument_capture() : kernel_argument_capture(kernel_argument_list()) {}
  explicit kernel_argument_capture(kernel_argument_list list)
      : list_(std::make_shared<const kernel_argument_list>(std::move(list))) {}

  std::uint64_t get_argument_count() const { return list_->arguments_.size(); }
  // Calls `visit` with the argument as what it is. Inlined, since a launch visits each argument twice.
  template <class Visitor>
  [[gnu::always_inline]] void visit_argument(std::uint64_t index, Visitor&& visit) const {
    if (index >= get_argument_count())
      refuse_index();
    using kind = kernel_argument_list::kind;
    const kernel_argument_list::argument& found = list_->arguments_[index];
    const auto type = static_cast<data_type>(found.type);
    switch (found.of) {
    case kind::null:
      return visit(kernel_argument_nullptr());
    case kind::value:
      return visit(kernel_argument_pod_value(type, list_->values_[found.number].bytes));
    case kind::local_memory:
      return visit(kernel_argument_local_memory(type, found.number));
    case kind::memory:
      if (replacements_)
        return visit(kernel_argument_typed_device_memory_array(*(*replacements_)[found.number].block));
      return visit(kernel_argument_typed_library_memory_array(list_->memory_[found.number]));
    }
    refuse_kind();
  }
  // In argument order, with repeats.
  std::span<const std::shared_ptr<library_memory>> get_library_memory_arguments() const;
  std::span<const replacement> get_device_memory_arguments() const;

  // Puts a device block in the place of every memory object. The replacements are in argument order, with repeats.
  void replace_library_memory(std::vector<replacement> replacements);

private:
  [[noreturn]] static void refuse_index();
  [[noreturn]] static void refuse_kind();

  std::shared_ptr<const kernel_argument_list> list_;
  std::shared_ptr<const std::vector<replacement>> replacements_; // one for each memory object, or none yet
};

} // namespace oryn::tarva::library
