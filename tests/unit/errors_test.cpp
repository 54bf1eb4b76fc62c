// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The exception of each OpenCL status, and answers of OpenCL whose size is asked for first.
#include "access/common/errors.h"
#include "access/common/info_query.h"
#include "tests/error_of.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using namespace oryn::skerv::common;

namespace {

TEST(errors, every_status_throws_the_exception_of_its_kind) {
  // The texts reach users as they are, so they are on record: by their checksum.
  std::string all;
  for (std::int32_t status = -1; status >= -72; --status)
    all += status_message(status);
  EXPECT_EQ(checksum_of(all), 2100602698155534433U) << all;
  const std::set<std::int32_t> of_runtime{-2, -4, -5, -6, -11, -12, -13, -14, -17, -18, -42};
  EXPECT_NO_THROW(check_status(0));
  EXPECT_EQ(status_message(0), "Success.");
  for (std::int32_t status = -1; status >= -80; --status) {
    SCOPED_TRACE(status);
    const bool named = status >= -19 || (status <= -30 && status >= -72);
    EXPECT_EQ(status_message(status) != "Unknown error.", named);
    try {
      check_status(status);
      FAIL() << "nothing was thrown";
    } catch (const opencl_error& fault) {
      EXPECT_TRUE(named);
      EXPECT_EQ(dynamic_cast<const runtime_error*>(&fault) != nullptr, of_runtime.contains(status));
      EXPECT_EQ(dynamic_cast<const logic_error*>(&fault) == nullptr, of_runtime.contains(status));
      EXPECT_EQ(fault.what() + std::to_string(fault.get_status()),
                status_message(status) + std::to_string(status));
    } catch (const unknown_opencl_error& fault) {
      EXPECT_FALSE(named);
      EXPECT_EQ(fault.what(), "Unknown OpenCL Error Code: " + std::to_string(fault.get_status()));
    }
  }
  for (const std::int32_t status : {-1000, 1, 2147483647, -2147483647 - 1})
    EXPECT_THROW(check_status(status), unknown_opencl_error) << status;
}

// Answers the size query and then each further call in turn, filling the buffer with counting bytes.
struct scripted_query {
  std::vector<std::size_t> reports;
  mutable std::vector<std::size_t> asked{};

  void ask(std::size_t size, void* value, std::size_t* reported) const {
    auto* bytes = static_cast<unsigned char*>(value);
    for (std::size_t i = 0; i < size; ++i)
      bytes[i] = static_cast<unsigned char>(i + 1);
    *reported = reports.at(asked.size());
    asked.push_back(size);
  }
  std::size_t ask_size() const {
    std::size_t size = 0;
    ask(0, nullptr, &size);
    return size;
  }
};

TEST(info_forms, what_has_no_size_at_first_counts_if_the_second_report_fits_or_grows_until_it_is_not_filled) {
  using sizes = std::vector<std::size_t>;
  for (const std::size_t first : {4, 0, 17}) {
    const scripted_query query{{first, 4}};
    EXPECT_EQ(get_scalar_info<std::uint32_t>(query), 0x04030201u);
    EXPECT_EQ(query.asked, (sizes{0, first == 0 ? 8u : 4u}));
  }
  EXPECT_THROW(get_string_info(scripted_query{{4, 3}}), bad_implementation);
  const auto read_vector = [](const scripted_query& query) { return get_vector_info<std::uint64_t>(query); };
  for (const sizes& reports : {sizes{16, 8}, sizes{0, 20}})
    EXPECT_THROW(read_vector({reports}), bad_implementation) << reports[1];
  const scripted_query growing{{0, 800, 1600, 2400}};
  const auto values = read_vector(growing);
  EXPECT_EQ(values.size(), 300u);
  EXPECT_EQ(values[1], 0x100f0e0d0c0b0a09u);
  EXPECT_EQ(growing.asked, (sizes{0, 800, 1600, 3200}));
  EXPECT_TRUE(read_vector({{0, 0}}).empty());
  // More than the buffer holds: what was not delivered is zero.
  EXPECT_EQ(read_vector({{0, 1608}}).back(), 0u);
  EXPECT_EQ(
      error_of<bad_implementation>([&] { read_vector({{std::size_t{1} << 40}}); }),
      "OpenCL implementation reported a size of 1099511627776 bytes for a query result, which is more than "
      "any such result takes.");
  EXPECT_THROW(get_string_info(scripted_query{{~std::size_t{7}}}), bad_implementation);
}

} // namespace
