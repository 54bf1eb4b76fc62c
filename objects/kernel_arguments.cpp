#include "objects/kernel_arguments.h"

#include <cstring>

namespace oryn::tarva::library {

// Each value begins a piece of its own, and so is aligned for the widest type whatever came before it.
void kernel_argument_capture::add_value(const void* pointer, data_type type) {
  const std::uint64_t size = check_element(pointer, type);
  if (values.empty())
    values.reserve(arguments.capacity() - arguments.size());
  const std::size_t position = values.size();
  values.resize(position + (size + sizeof(value_piece) - 1) / sizeof(value_piece));
  std::memcpy(values.data() + position, pointer, size);
  arguments.emplace_back(kernel_argument_pod_value{type, position});
}

} // namespace oryn::tarva::library
