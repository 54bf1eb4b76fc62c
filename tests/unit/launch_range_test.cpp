#include "abi/launch_range.h"
#include "ir/launch_checks.h"
#include "objects/library_kernel.h"
#include "properties/property_base.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace oryn::tarva::library {
namespace {

// Prefers groups of (16 * work_dim, 2, 1) and has 5 compute units.
class kernel_stand_in final : public library_kernel {
public:
  kernel_stand_in() : library_kernel(nullptr) {}

  std::shared_ptr<property_base> get_property(const property_path&) override { return nullptr; }
  std::vector<std::string> get_child_names(const property_path&) override { return {}; }
  size_triple get_preferred_work_group_size(std::uint64_t work_dim) override { return {16 * work_dim, 2, 1}; }
  size_triple get_compile_work_group_size() override { return {}; }
  std::uint32_t get_max_compute_units() override { return 5; }
  size_triple get_max_global_size() override { return {}; }
  const launch_limits& get_launch_limits() const override { return limits_; }

private:
  launch_limits limits_;
};

// A record that ends where readable memory ends, so that reading one word too many is a fault.
class record_at_the_edge {
public:
  explicit record_at_the_edge(const std::vector<std::uint64_t>& words)
      : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    memory_ = static_cast<char*>(
        mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(memory_ + page_, page_, PROT_NONE);
    const std::size_t size = words.size() * sizeof(std::uint64_t);
    record_ = memory_ + page_ - size;
    std::memcpy(record_, words.data(), size);
  }
  record_at_the_edge(const record_at_the_edge&) = delete;
  record_at_the_edge& operator=(const record_at_the_edge&) = delete;
  ~record_at_the_edge() { munmap(memory_, 2 * page_); }

  const tarva_abi_launch_range_s& get() const {
    return *reinterpret_cast<const tarva_abi_launch_range_s*>(record_);
  }

private:
  const std::size_t page_;
  char* memory_;
  char* record_;
};

nd_range range_of(const std::vector<std::uint64_t>& words) {
  kernel_stand_in kernel;
  return make_range(kernel, record_at_the_edge(words).get());
}

constexpr std::uint64_t LARGEST = std::numeric_limits<std::uint64_t>::max();

TEST(launch_range, is_worked_out_from_the_words_of_its_type) {
  struct range_case {
    std::vector<std::uint64_t> words; // the launch type first
    nd_range expected;
  };
  const range_case cases[] = {
      {{1, 3, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {3, {1, 2, 3}, {4, 5, 6}, {7, 8, 9}}},
      {{2, 2, 8, 100, 0}, {2, {0, 0, 0}, {32, 100, 1}, {32, 2, 1}}},
      {{3, 7}, {1, {0, 0, 0}, {112, 1, 1}, {16, 1, 1}}},
      {{4, 2, 3, 8, 4, 1}, {2, {0, 0, 0}, {24, 12, 3}, {8, 4, 1}}},
      {{5, 3}, {1, {0, 0, 0}, {240, 1, 1}, {16, 1, 1}}},
      {{6, 3, LARGEST, 8, 4, 2}, {3, {0, 0, 0}, {40, 20, 10}, {8, 4, 2}}},
      // What lies beyond the dimensions does not count, however large it is.
      {{4, 1, 3, 8, LARGEST, LARGEST}, {1, {0, 0, 0}, {24, LARGEST - 2, LARGEST - 2}, {8, LARGEST, LARGEST}}},
  };
  for (const range_case& each : cases)
    EXPECT_EQ(to_string(each.expected), to_string(range_of(each.words))) << each.words[0];
}

TEST(launch_range, refuses_unknown_types_and_sizes_that_would_wrap_around) {
  for (const std::uint64_t type : {std::uint64_t{0}, std::uint64_t{7}, LARGEST})
    EXPECT_THROW(range_of({type}), std::invalid_argument) << type;
  EXPECT_THROW(range_of({3, LARGEST / 16 + 1}), std::invalid_argument);
  EXPECT_NO_THROW(range_of({3, LARGEST / 16}));
  EXPECT_THROW(range_of({5, LARGEST / 80 + 1}), std::invalid_argument);
  EXPECT_THROW(range_of({4, 2, LARGEST, 1, 2, 1}), std::invalid_argument);
  EXPECT_THROW(range_of({6, 3, 0, 1, 1, LARGEST / 5 + 1}), std::invalid_argument);
}

TEST(launch_range, ids_have_to_fit_the_addresses_of_the_device) {
  launch_limits limits;
  EXPECT_NO_THROW(check_sizes({1, {LARGEST - 1, 0, 0}, {1, 1, 1}, {}}, limits));
  EXPECT_THROW(check_sizes({1, {LARGEST, 0, 0}, {1, 1, 1}, {}}, limits), std::logic_error);
  limits.address_bits = 32;
  EXPECT_THROW(check_sizes({1, {LARGEST >> 32, 0, 0}, {1, 1, 1}, {}}, limits), std::logic_error);
}

} // namespace
} // namespace oryn::tarva::library
