#pragma once

#include "ir/concrete_operation.h"
#include "ir/logical_operation.h"
#include "ir/nd_range.h"
#include "objects/kernel_arguments.h"

namespace oryn::tarva::library {

class library_kernel;

namespace logical_ir {

// The seven requests. Positions and counts are numbers of elements of the memory object's type.

// A request on one memory object.
class memory_operation : public logical_operation {
public:
  explicit memory_operation(std::shared_ptr<library_memory> memory) : memory_(std::move(memory)) {}

  const std::shared_ptr<library_memory>& get_memory() const { return memory_; }
  std::vector<std::shared_ptr<library_memory>> memory_objects() const override { return {memory_}; }

private:
  std::shared_ptr<library_memory> memory_;
};

class allocate_memory final : public concrete_operation<allocate_memory, memory_operation> {
public:
  using concrete_operation::concrete_operation;
  std::uint64_t byte_count() const override;
  std::string to_string() const override;
};

class free_memory final : public concrete_operation<free_memory, memory_operation> {
public:
  using concrete_operation::concrete_operation;
  std::uint64_t byte_count() const override;
  std::string to_string() const override;
};

class copy_tarva_to_tarva final : public concrete_operation<copy_tarva_to_tarva, logical_operation> {
public:
  // The two objects must have the same type.
  copy_tarva_to_tarva(std::shared_ptr<library_memory> source, std::shared_ptr<library_memory> destination,
                      std::uint64_t source_start, std::uint64_t destination_start, std::uint64_t count);

  const std::shared_ptr<library_memory>& get_src_memory() const { return src_memory_; }
  const std::shared_ptr<library_memory>& get_dest_memory() const { return dest_memory_; }
  std::uint64_t get_src_start_position() const { return src_start_position_; }
  std::uint64_t get_dest_start_position() const { return dest_start_position_; }
  std::uint64_t get_count() const { return count_; }

  std::vector<std::shared_ptr<library_memory>> memory_objects() const override;
  std::uint64_t byte_count() const override;
  std::string to_string() const override;

private:
  std::shared_ptr<library_memory> src_memory_;
  std::shared_ptr<library_memory> dest_memory_;
  std::uint64_t src_start_position_;
  std::uint64_t dest_start_position_;
  std::uint64_t count_;
};

class copy_tarva_to_user final : public concrete_operation<copy_tarva_to_user, memory_operation> {
public:
  copy_tarva_to_user(std::shared_ptr<library_memory> memory, std::uint64_t source_start, std::uint64_t count,
                     void* user_ptr)
      : concrete_operation(std::move(memory)), src_start_position_(source_start), count_(count),
        user_ptr_(user_ptr) {}

  std::uint64_t get_src_start_position() const { return src_start_position_; }
  std::uint64_t get_count() const { return count_; }
  void* get_user_ptr() const { return user_ptr_; }

  std::uint64_t byte_count() const override;
  std::string to_string() const override;

private:
  std::uint64_t src_start_position_;
  std::uint64_t count_;
  void* user_ptr_; // the user's destination; not owned
};

class copy_user_to_tarva final : public concrete_operation<copy_user_to_tarva, memory_operation> {
public:
  copy_user_to_tarva(std::shared_ptr<library_memory> memory, std::uint64_t destination_start,
                     std::uint64_t count, const void* src_ptr)
      : concrete_operation(std::move(memory)), dest_start_position_(destination_start), count_(count),
        src_ptr_(src_ptr) {}

  std::uint64_t get_dest_start_position() const { return dest_start_position_; }
  std::uint64_t get_count() const { return count_; }
  const void* get_src_ptr() const { return src_ptr_; }

  std::uint64_t byte_count() const override;
  std::string to_string() const override;

private:
  std::uint64_t dest_start_position_;
  std::uint64_t count_;
  const void* src_ptr_; // the user's source; not owned
};

class fill final : public concrete_operation<fill, memory_operation> {
public:
  // Copies one element of the memory's type from `pattern`.
  fill(std::shared_ptr<library_memory> memory, const void* pattern, std::uint64_t start_position,
       std::uint64_t count);

  const std::vector<std::uint8_t>& get_value() const { return value_; }
  std::uint64_t get_start_position() const { return start_position_; }
  std::uint64_t get_count() const { return count_; }

  std::uint64_t byte_count() const override;
  std::string to_string() const override;

private:
  std::vector<std::uint8_t> value_;
  std::uint64_t start_position_;
  std::uint64_t count_;
};

class kernel final : public concrete_operation<kernel, logical_operation> {
public:
  kernel(std::shared_ptr<library_kernel> kernel_object, kernel_argument_capture arguments,
         const nd_range& range)
      : kernel_object_(std::move(kernel_object)), arguments_(std::move(arguments)), range_(range) {}

  const std::shared_ptr<library_kernel>& get_kernel_object() const { return kernel_object_; }
  const kernel_argument_capture& get_arguments() const { return arguments_; }
  const nd_range& get_range() const { return range_; }

  std::vector<std::shared_ptr<library_memory>> memory_objects() const override;
  std::uint64_t byte_count() const override;
  std::string to_string() const override;

private:
  std::shared_ptr<library_kernel> kernel_object_;
  kernel_argument_capture arguments_;
  nd_range range_;
};

} // namespace logical_ir
} // namespace oryn::tarva::library
