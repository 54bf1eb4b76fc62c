#include "objects/kernel_arguments.h"

#include "objects/element_bytes.h"

#include <algorithm>
#include <stdexcept>

namespace oryn::tarva::library {

std::shared_ptr<kernel_argument_base> kernel_argument_nullptr::clone() const {
  return std::make_shared<kernel_argument_nullptr>(*this);
}

kernel_argument_pod_value::kernel_argument_pod_value(const void* pointer, data_type type)
    : type_(type), raw_data_(copy_element_bytes(pointer, type)) {}

std::shared_ptr<kernel_argument_base> kernel_argument_pod_value::clone() const {
  return std::make_shared<kernel_argument_pod_value>(*this);
}

std::shared_ptr<kernel_argument_base> kernel_argument_local_memory::clone() const {
  return std::make_shared<kernel_argument_local_memory>(*this);
}

std::shared_ptr<kernel_argument_base> kernel_argument_typed_library_memory_array::clone() const {
  return std::make_shared<kernel_argument_typed_library_memory_array>(*this);
}

std::shared_ptr<kernel_argument_base> kernel_argument_typed_device_memory_array::clone() const {
  return std::make_shared<kernel_argument_typed_device_memory_array>(*this);
}

kernel_argument_capture::kernel_argument_capture(const kernel_argument_capture& other) {
  arguments_.reserve(other.arguments_.size());
  for (const auto& argument : other.arguments_)
    arguments_.push_back(argument->clone());
}

const std::shared_ptr<kernel_argument_base>&
kernel_argument_capture::get_argument(std::uint64_t index) const {
  if (index >= arguments_.size())
    throw std::logic_error(
        "Accessing argument index from the kernel argument capture that is out-of-bounds.");
  return arguments_[index];
}

namespace {

template <class Argument, class Memory>
std::vector<std::shared_ptr<Memory>>
memory_of(const std::vector<std::shared_ptr<kernel_argument_base>>& arguments) {
  std::vector<std::shared_ptr<Memory>> result;
  for (const auto& argument : arguments)
    if (const auto* typed = dynamic_cast<const Argument*>(argument.get()))
      result.push_back(typed->get_memory());
  return result;
}

} // namespace

std::vector<std::shared_ptr<library_memory>> kernel_argument_capture::get_library_memory_arguments() const {
  return memory_of<kernel_argument_typed_library_memory_array, library_memory>(arguments_);
}

bool kernel_argument_capture::has_library_memory_arguments() const {
  return std::any_of(arguments_.begin(), arguments_.end(), [](const auto& argument) {
    return dynamic_cast<const kernel_argument_typed_library_memory_array*>(argument.get()) != nullptr;
  });
}

std::vector<std::shared_ptr<device_memory>> kernel_argument_capture::get_device_memory_arguments() const {
  return memory_of<kernel_argument_typed_device_memory_array, device_memory>(arguments_);
}

void kernel_argument_capture::replace_library_memory(const replacement_table& replacements) {
  auto present = get_library_memory_arguments();
  std::sort(present.begin(), present.end());
  present.erase(std::unique(present.begin(), present.end()), present.end());

  std::vector<std::shared_ptr<library_memory>> keys;
  keys.reserve(replacements.size());
  for (const auto& entry : replacements)
    keys.push_back(entry.first);
  std::sort(keys.begin(), keys.end());

  if (present != keys)
    throw std::logic_error("Attempting to replace library memory objects with device memory arguments within "
                           "the argument list capture, but there is not a one-to-one matching.");
  if (!get_device_memory_arguments().empty())
    throw std::logic_error(
        "Attempting to replace library memory objects with device memory arguments within the argument list "
        "capture, but there are already device memory arguments in the capture.");

  for (auto& argument : arguments_) {
    const auto* typed = dynamic_cast<const kernel_argument_typed_library_memory_array*>(argument.get());
    if (typed == nullptr)
      continue;
    const auto found = replacements.find(typed->get_memory());
    if (found == replacements.end())
      throw std::logic_error("Expected to find replacement key inside the replacement table.");
    argument = std::make_shared<kernel_argument_typed_device_memory_array>(found->second);
  }
}

} // namespace oryn::tarva::library
