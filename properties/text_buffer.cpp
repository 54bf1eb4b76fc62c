#include "properties/text_buffer.h"

#include <algorithm>
#include <limits>

namespace oryn::tarva::library {

// At least doubled, so that a text is copied a few times at most; the first room takes most trees.
void text_buffer::reserve(std::size_t count) {
  constexpr std::size_t first_capacity = 4096;
  if (count > std::numeric_limits<std::size_t>::max() / 2 - size_)
    throw std::bad_alloc();
  const std::size_t capacity = std::max({first_capacity, 2 * capacity_, size_ + count});
  auto* data = static_cast<char*>(std::realloc(data_, capacity));
  if (data == nullptr)
    throw std::bad_alloc();
  data_ = data;
  capacity_ = capacity;
}

} // namespace oryn::tarva::library
