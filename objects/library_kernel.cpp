#include "objects/library_kernel.h"

#include "base/unique_identifier.h"
#include "objects/library_program.h"

namespace oryn::tarva::library {

library_kernel::library_kernel(std::shared_ptr<library_program> program, std::string name)
    : unique_identifier_(library::get_unique_identifier()), program_(std::move(program)),
      name_(std::move(name)) {}

library_kernel::~library_kernel() = default;

// Bit by bit, from the highest power of four on.
std::uint64_t integer_square_root(std::uint64_t value) {
  std::uint64_t root = 0;
  for (std::uint64_t bit = 0x4000000000000000; bit != 0; bit >>= 2) {
    if (value >= root + bit) {
      value -= root + bit;
      root = (root >> 1) + bit;
    } else {
      root >>= 1;
    }
  }
  return root;
}

// Three bits of the value give one bit of the root.
std::uint64_t integer_cube_root(std::uint64_t value) {
  std::uint64_t root = 0;
  for (int shift = 63; shift >= 0; shift -= 3) {
    root *= 2;
    const std::uint64_t step = 3 * root * (root + 1) + 1;
    const std::uint64_t shifted = step << shift;
    if (shifted >> shift == step && shifted <= value) {
      value -= shifted;
      ++root;
    }
  }
  return root;
}

} // namespace oryn::tarva::library
