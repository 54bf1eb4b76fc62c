// The conversion of a failure into an error object when memory runs out on the way.
#include "abi/bridge.h"
#include "abi/error_conversion.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>

namespace {

constexpr std::size_t NEVER = std::numeric_limits<std::size_t>::max();
// How many allocations of this process still succeed.
std::size_t allocations_left = NEVER;

} // namespace

// Inlined, the pair of operators looks to g++ like malloc and free used on each other.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (allocations_left == 0)
    throw std::bad_alloc();
  if (allocations_left != NEVER)
    --allocations_left;
  if (void* const memory = std::malloc(size != 0 ? size : 1))
    return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace oryn::tarva::library {
namespace {

std::exception_ptr nested_failure() {
  try {
    try {
      throw std::out_of_range("a cause that is too long for the room inside a string");
    } catch (...) {
      std::throw_with_nested(std::runtime_error("a failure that is too long for it, too, in any event"));
    }
  } catch (...) {
    return std::current_exception();
  }
}

TEST(error_conversion, gives_minus_one_and_no_object_when_memory_runs_out_at_any_point) {
  const std::exception_ptr failure = nested_failure();
  std::size_t points = 0;
  for (tarva_abi_error_s* handle = nullptr; !handle; ++points) {
    abi_bridge bridge;
    allocations_left = points;
    const auto [result, error] = convert_exception(bridge, failure);
    allocations_left = NEVER;
    handle = error;
    EXPECT_EQ(result, handle ? TARVA_ABI_RUNTIME_FAILURE : TARVA_ABI_UNKNOWN_FAILURE) << points;
    if (handle)
      bridge.release_error(handle);
    ASSERT_LT(points, 100U);
  }
  EXPECT_GT(points, 4U) << "two messages, two objects and an entry in the table at least";
}

} // namespace
} // namespace oryn::tarva::library
