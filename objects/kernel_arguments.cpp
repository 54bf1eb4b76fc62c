#include "objects/kernel_arguments.h"

#include "objects/element_bytes.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace oryn::tarva::library {

namespace {

using library_argument = kernel_argument_typed_library_memory_array;
using device_argument = kernel_argument_typed_device_memory_array;

template <class Argument, class Memory>
std::vector<std::shared_ptr<Memory>> memory_of(const std::vector<kernel_argument>& arguments) {
  std::vector<std::shared_ptr<Memory>> result;
  for (const kernel_argument& argument : arguments)
    if (const auto* typed = std::get_if<Argument>(&argument))
      result.push_back(typed->get_memory());
  return result;
}

template <class Argument>
bool has(const std::vector<kernel_argument>& arguments) {
  return std::any_of(arguments.begin(), arguments.end(), [](const kernel_argument& argument) {
    return std::holds_alternative<Argument>(argument);
  });
}

void require(bool holds, const char* message) {
  if (!holds)
    throw std::logic_error(message);
}

// Whether the table's keys are the memory objects among the arguments.
bool matches(const std::vector<kernel_argument>& arguments,
             kernel_argument_capture::replacement_table& replacements) {
  std::size_t used = 0;
  for (const kernel_argument& argument : arguments)
    if (const auto* typed = std::get_if<library_argument>(&argument)) {
      auto* found = replacements.find(typed->get_memory().get());
      if (found == nullptr)
        return false;
      used += found->is_used ? 0 : 1;
      found->is_used = true;
    }
  return used == replacements.size();
}

} // namespace

kernel_argument_pod_value::kernel_argument_pod_value(const void* pointer, data_type type) : type_(type) {
  const std::uint64_t size = check_element(pointer, type);
  if (size <= small_.size())
    std::memcpy(small_.data(), pointer, size);
  else
    large_ = std::make_shared<const std::vector<std::uint8_t>>(copy_element_bytes(pointer, type));
}

const kernel_argument& kernel_argument_capture::get_argument(std::uint64_t index) const {
  require(index < arguments_->size(),
          "Accessing argument index from the kernel argument capture that is out-of-bounds.");
  return (*arguments_)[index];
}

std::vector<std::shared_ptr<library_memory>> kernel_argument_capture::get_library_memory_arguments() const {
  return memory_of<library_argument, library_memory>(*arguments_);
}

bool kernel_argument_capture::has_library_memory_arguments() const {
  return has<library_argument>(*arguments_);
}

std::vector<std::shared_ptr<device_memory>> kernel_argument_capture::get_device_memory_arguments() const {
  return memory_of<device_argument, device_memory>(*arguments_);
}

void kernel_argument_capture::replace_library_memory(replacement_table replacements) {
  require(
      matches(*arguments_, replacements),
      "Attempting to replace library memory objects with device memory arguments within the argument list "
      "capture, but there is not a one-to-one matching.");
  require(
      !has<device_argument>(*arguments_),
      "Attempting to replace library memory objects with device memory arguments within the argument list "
      "capture, but there are already device memory arguments in the capture.");
  if (replacements.size() == 0)
    return;

  std::vector<kernel_argument> replaced;
  replaced.reserve(arguments_->size());
  for (const kernel_argument& argument : *arguments_) {
    const auto* typed = std::get_if<library_argument>(&argument);
    if (typed == nullptr) {
      replaced.push_back(argument);
      continue;
    }
    const replacement* found = replacements.find(typed->get_memory().get());
    require(found != nullptr, "Expected to find replacement key inside the replacement table.");
    replaced.emplace_back(std::in_place_type<device_argument>, found->block);
  }
  arguments_ = std::make_shared<const std::vector<kernel_argument>>(std::move(replaced));
}

} // namespace oryn::tarva::library
