#include "abi/bridge.h"
#include "abi/error_conversion.h"
#include "abi/error_object.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace oryn::tarva::library {
namespace {

struct plain_exception : std::exception {
  const char* what() const noexcept override { return "plain"; }
};

struct conversion_case {
  const char* name;
  std::exception_ptr exception;
  tarva_abi_result result;
  std::uint64_t type;
  const char* message;
};

class conversion : public testing::TestWithParam<conversion_case> {};

TEST_P(conversion, gives_result_type_and_message_of_the_nearest_class) {
  const auto [result, error] = describe_exception(GetParam().exception);
  EXPECT_EQ(GetParam().result, result);
  ASSERT_TRUE(error);
  EXPECT_EQ(GetParam().type, error->get_exception_type());
  EXPECT_EQ(GetParam().message, error->get_message());
  EXPECT_FALSE(error->get_nested_error());
}

INSTANTIATE_TEST_SUITE_P(
    all, conversion,
    testing::Values(
        conversion_case{"logic_error", std::make_exception_ptr(std::logic_error("a")), -3, 1, "a"},
        conversion_case{"domain_error", std::make_exception_ptr(std::domain_error("b")), -3, 1, "b"},
        conversion_case{"invalid_argument", std::make_exception_ptr(std::invalid_argument("c")), -3, 2, "c"},
        conversion_case{"length_error", std::make_exception_ptr(std::length_error("d")), -3, 3, "d"},
        conversion_case{"out_of_range", std::make_exception_ptr(std::out_of_range("e")), -4, 4, "e"},
        conversion_case{"runtime_error", std::make_exception_ptr(std::runtime_error("f")), -4, 5, "f"},
        conversion_case{"overflow_error", std::make_exception_ptr(std::overflow_error("")), -4, 5, ""},
        conversion_case{"no_exception_class", std::make_exception_ptr(7), -4, 6, "Uknown exception"},
        conversion_case{"other_exception", std::make_exception_ptr(plain_exception()), -4, 7, "plain"},
        conversion_case{"bad_weak_ptr", std::make_exception_ptr(std::bad_weak_ptr()), -4, 7, "bad_weak_ptr"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(error_conversion, makes_no_object_of_success_and_lack_of_memory) {
  abi_bridge bridge;
  const std::pair<tarva_abi_result, tarva_abi_error_s*> success(0, nullptr);
  const std::pair<tarva_abi_result, tarva_abi_error_s*> no_memory(-2, nullptr);
  EXPECT_EQ(success, convert_exception(bridge, nullptr));
  EXPECT_EQ(no_memory, convert_exception(bridge, std::make_exception_ptr(std::bad_alloc())));
  EXPECT_EQ(no_memory, convert_exception(bridge, std::make_exception_ptr(std::bad_array_new_length())));
}

TEST(error_conversion, gives_a_handle_that_the_bridge_knows) {
  abi_bridge bridge;
  const auto [result, handle] =
      convert_exception(bridge, std::make_exception_ptr(std::runtime_error("words")));
  EXPECT_EQ(-4, result);
  EXPECT_EQ("words", bridge.get_library_object(handle)->get_message());
  bridge.release_error(handle);
}

// Throws the innermost cause first, and each further message around what came before.
std::exception_ptr nest(const std::exception_ptr& cause, const std::vector<std::string>& messages) {
  std::exception_ptr current = cause;
  for (const std::string& message : messages) {
    try {
      try {
        std::rethrow_exception(current);
      } catch (...) {
        std::throw_with_nested(std::invalid_argument(message));
      }
    } catch (...) {
      current = std::current_exception();
    }
  }
  return current;
}

TEST(error_conversion, follows_nested_exceptions_inward) {
  struct expected_link {
    std::uint64_t type;
    std::string message;
  };
  struct chain_case {
    std::exception_ptr exception;
    std::vector<expected_link> links;
  };
  const chain_case chains[] = {
      {nest(std::make_exception_ptr(std::out_of_range("cause")), {"inner", "outer"}),
       {{2, "outer"}, {2, "inner"}, {4, "cause"}}},
      {nest(std::make_exception_ptr("no class"), {"outer"}), {{2, "outer"}, {6, "Unknown exception."}}},
      // Inside a chain, lack of memory is an exception like others.
      {nest(std::make_exception_ptr(std::bad_alloc()), {"outer"}), {{2, "outer"}, {7, "std::bad_alloc"}}},
  };
  for (const chain_case& chain : chains) {
    auto [result, error] = describe_exception(chain.exception);
    EXPECT_EQ(-3, result);
    for (const expected_link& link : chain.links) {
      ASSERT_TRUE(error);
      EXPECT_EQ(link.type, error->get_exception_type());
      EXPECT_EQ(link.message, error->get_message());
      error = error->get_nested_error();
    }
    EXPECT_FALSE(error);
  }
}

struct nothing_nested : std::runtime_error, std::nested_exception {
  nothing_nested() : std::runtime_error("alone") {}
};

TEST(error_conversion, ends_at_a_nested_exception_that_nests_nothing) {
  const auto [result, error] = describe_exception(std::make_exception_ptr(nothing_nested()));
  EXPECT_EQ(-4, result);
  EXPECT_EQ("alone", error->get_message());
  EXPECT_FALSE(error->get_nested_error());
}

} // namespace
} // namespace oryn::tarva::library
