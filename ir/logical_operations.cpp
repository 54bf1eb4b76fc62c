#include "ir/logical_operations.h"

#include "memory/library_memory.h"
#include "objects/library_kernel.h"

#include <sstream>
#include <stdexcept>

namespace oryn::tarva::library::logical_ir {

namespace {

std::string text(std::uint64_t number) {
  return std::to_string(number);
}

std::string text(const void* pointer) {
  std::ostringstream stream;
  stream << pointer;
  return stream.str();
}

std::string identifier(const std::shared_ptr<library_memory>& memory) {
  return text(memory->get_unique_identifier());
}

std::uint64_t bytes(const std::shared_ptr<library_memory>& memory, std::uint64_t count) {
  return element_size(memory->get_type()) * count;
}

} // namespace

std::uint64_t allocate_memory::byte_count() const {
  return get_memory()->get_size_in_bytes();
}

std::string allocate_memory::to_string() const {
  return "allocate_memory: {mem_object_id=" + identifier(get_memory()) +
         ", type=" + data_type_name(get_memory()->get_type()) +
         ", count=" + text(get_memory()->get_num_elements()) + "}";
}

std::uint64_t free_memory::byte_count() const {
  return get_memory()->get_size_in_bytes();
}

std::string free_memory::to_string() const {
  return "free_memory: {"
         "memory_object_id=" +
         identifier(get_memory()) + "}";
}

copy_tarva_to_tarva::copy_tarva_to_tarva(std::shared_ptr<library_memory> source,
                                         std::shared_ptr<library_memory> destination,
                                         std::uint64_t source_start, std::uint64_t destination_start,
                                         std::uint64_t count)
    : src_memory_(std::move(source)), dest_memory_(std::move(destination)), src_start_position_(source_start),
      dest_start_position_(destination_start), count_(count) {
  if (src_memory_->get_type() != dest_memory_->get_type())
    throw std::logic_error("Cannot copy between memory objects with different types.");
}

std::vector<std::shared_ptr<library_memory>> copy_tarva_to_tarva::memory_objects() const {
  return {src_memory_, dest_memory_};
}

std::uint64_t copy_tarva_to_tarva::byte_count() const {
  return bytes(src_memory_, count_);
}

std::string copy_tarva_to_tarva::to_string() const {
  return "copy_tarva_to_tarva: {"
         "src_object_id=" +
         identifier(src_memory_) + ", dest_object_id=" + identifier(dest_memory_) +
         ", src_start_position=" + text(src_start_position_) +
         ", dest_start_position=" + text(dest_start_position_) + ", count=" + text(count_) + "}";
}

std::uint64_t copy_tarva_to_user::byte_count() const {
  return bytes(get_memory(), count_);
}

std::string copy_tarva_to_user::to_string() const {
  return "copy_tarva_to_user: {"
         "src_object_id=" +
         identifier(get_memory()) + ", src_start_position=" + text(src_start_position_) +
         ", count=" + text(count_) + ", user_ptr=" + text(user_ptr_) + "}";
}

std::uint64_t copy_user_to_tarva::byte_count() const {
  return bytes(get_memory(), count_);
}

std::string copy_user_to_tarva::to_string() const {
  return "copy_user_to_tarva: {"
         "dest_object_id=" +
         identifier(get_memory()) + ", dest_start_position=" + text(dest_start_position_) +
         ", count=" + text(count_) + ", src_ptr=" + text(src_ptr_) + "}";
}

fill::fill(std::shared_ptr<library_memory> memory, const void* pattern, std::uint64_t start_position,
           std::uint64_t count)
    : concrete_operation(std::move(memory)), start_position_(start_position), count_(count) {
  const auto* first = static_cast<const std::uint8_t*>(pattern);
  value_.assign(first, first + element_size(get_memory()->get_type()));
}

std::uint64_t fill::byte_count() const {
  return bytes(get_memory(), count_);
}

std::string fill::to_string() const {
  return "fill: {"
         "memory_object_id=" +
         identifier(get_memory()) + ", start_position=" + text(start_position_) + ", count=" + text(count_) +
         ", value=<omitted>"
         "}";
}

std::vector<std::shared_ptr<library_memory>> kernel::memory_objects() const {
  const auto objects = arguments_.get_library_memory_arguments();
  return {objects.begin(), objects.end()};
}

std::uint64_t kernel::byte_count() const {
  std::uint64_t total = 0;
  for (const auto& memory : memory_objects())
    total += memory->get_size_in_bytes();
  return total;
}

std::string kernel::to_string() const {
  return "kernel: {" + library::to_string(range_) + "}";
}

} // namespace oryn::tarva::library::logical_ir
