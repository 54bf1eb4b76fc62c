#include "objects/kernel_arguments.h"

#include "properties/data_type.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace oryn::tarva::library {

namespace {

void require(bool holds, const char* message) {
  if (!holds)
    throw std::logic_error(message);
}

// Whether the replacements are those of these objects.
bool matches(std::span<const std::shared_ptr<library_memory>> objects,
             const std::vector<kernel_argument_capture::replacement>& replacements) {
  return std::equal(objects.begin(), objects.end(), replacements.begin(), replacements.end(),
                    [](const auto& object, const auto& each) { return object.get() == each.object; });
}

} // namespace

// The values stand in units of 16 bytes, so each is aligned for the widest type whatever came before it.
void kernel_argument_list::add_value(const void* pointer, data_type type) {
  const std::uint64_t size = check_element(pointer, type);
  if (values_.empty())
    values_.reserve(expected_more());
  const std::size_t position = values_.size();
  if (size <= sizeof(value_piece))
    values_.emplace_back();
  else
    values_.resize(position + (size + sizeof(value_piece) - 1) / sizeof(value_piece));
  std::memcpy(values_.data() + position, pointer, size);
  add(kind::value, type, position);
}

void kernel_argument_list::add_memory(const std::shared_ptr<library_memory>& memory) {
  if (memory_.empty())
    memory_.reserve(expected_more());
  add(kind::memory, data_type{}, memory_.size());
  memory_.push_back(memory);
}

void kernel_argument_capture::refuse_index() {
  throw std::logic_error("Accessing argument index from the kernel argument capture that is out-of-bounds.");
}

void kernel_argument_capture::refuse_kind() {
  throw std::logic_error("Unexpected kernel argument type.");
}

std::span<const std::shared_ptr<library_memory>>
kernel_argument_capture::get_library_memory_arguments() const {
  if (replacements_)
    return {};
  return list_->memory_;
}

std::span<const kernel_argument_capture::replacement>
kernel_argument_capture::get_device_memory_arguments() const {
  if (!replacements_)
    return {};
  return *replacements_;
}

// Only the blocks are new. The list of the arguments stays shared with the capture that this one was copied from.
void kernel_argument_capture::replace_library_memory(std::vector<replacement> replacements) {
  const auto objects = get_library_memory_arguments();
  require(
      matches(objects, replacements),
      "Attempting to replace library memory objects with device memory arguments within the argument list "
      "capture, but there is not a one-to-one matching.");
  require(
      get_device_memory_arguments().empty(),
      "Attempting to replace library memory objects with device memory arguments within the argument list "
      "capture, but there are already device memory arguments in the capture.");
  if (objects.empty())
    return;

  for (const replacement& each : replacements) // the object is the key, and the list the table
    require(each.block != nullptr, "Expected to find replacement key inside the replacement table.");
  replacements_ = std::make_shared<const std::vector<replacement>>(std::move(replacements));
}

} // namespace oryn::tarva::library
