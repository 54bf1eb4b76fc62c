// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Handles from their making to their end, and from exceptions to error objects.
#include "abi/bridge.h"
#include "abi/error_object.h"
#include "memory/library_memory.h"
#include "properties/property.h"
#include "tests/error_of.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace oryn::tarva::library {

struct abi_bridge_test_access {
  static mutex& lock(abi_bridge& bridge) { return bridge.parts_[abi_bridge::part_count - 1].lock; }
};

namespace {

std::shared_ptr<library_memory> make_memory() {
  return std::make_shared<library_memory>(data_type::float_, 4, "label");
}

TEST(bridge, ends_a_handle_once_if_it_is_retained_meanwhile) {
  for (int round = 0; round < 200; ++round) {
    abi_bridge bridge;
    auto* handle = bridge.make_handle<tarva_abi_memory_s>(make_memory());
    std::atomic<int> ends = 0;
    std::barrier gate(2);
    const auto retains = [&] {
      try {
        bridge.retain(handle);
        return true;
      } catch (const std::runtime_error&) {
        return false;
      }
    };
    std::thread other([&] {
      gate.arrive_and_wait();
      while (retains())
        ends += bridge.release(handle) ? 1 : 0;
    });
    gate.arrive_and_wait();
    for (int i = 0; i < 100; ++i) {
      bridge.retain(handle);
      bridge.release(handle);
    }
    ends += bridge.release(handle) ? 1 : 0;
    other.join();
    EXPECT_EQ(1, ends);
  }
}

void tear_down_what_is_in_use() {
  for (const char* setting : {"TARVA_LOG_TARGET=console", "TARVA_LOG_LEVEL=warn"})
    putenv(const_cast<char*>(setting));
  abi_bridge bridge;
  bridge.make_handle<tarva_abi_memory_s>(make_memory());
  const lock_guard guard(abi_bridge_test_access::lock(bridge));
  std::thread([&] { bridge.teardown(); }).join();
  _exit(0);
}

TEST(bridge, teardown_drops_objects_once_and_waits_a_while_for_a_held_lock) {
  EXPECT_EXIT(tear_down_what_is_in_use(), testing::ExitedWithCode(0),
              "\\[critical\\] ABI bridge internal lock is held during destruction.  Please file a bug.\n"
              ".*\\[warning\\] User reference count of memory 0x.* is 1, but expected a count of 0.\n$");
  abi_bridge bridge;
  auto memory = make_memory();
  auto* handle = bridge.make_handle<tarva_abi_memory_s>(memory);
  auto* future = bridge.make_handle<tarva_abi_future_s>(nullptr);
  std::thread brief;
  {
    const lock_guard guard(abi_bridge_test_access::lock(bridge));
    brief = std::thread([&] { bridge.teardown(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  brief.join();
  EXPECT_EQ(1, memory.use_count());
  EXPECT_EQ(TARVA_ABI_OBJECT_MEMORY, handle->kind);
  EXPECT_EQ(error_of<std::runtime_error>([&] { bridge.get_library_object(handle); }),
            "Lookup of internal type map failed.");
  std::free(handle);
  bridge.withdraw_future(future); // which frees it, as leak checkers see
}

struct plain_exception : std::exception {
  const char* what() const noexcept override { return "plain"; }
};

struct nothing_nested : std::runtime_error, std::nested_exception {
  nothing_nested() : std::runtime_error("alone") {}
};

template <class Exception>
std::exception_ptr made(const Exception& exception) {
  return std::make_exception_ptr(exception);
}
std::exception_ptr nest(const std::exception_ptr& cause, const std::string& message) {
  try {
    try {
      std::rethrow_exception(cause);
    } catch (...) {
      std::throw_with_nested(std::invalid_argument(message));
    }
  } catch (...) {
    return std::current_exception();
  }
}

// EXCEPTION_TYPE and EXCEPTION_MESSAGE.
using link = std::pair<std::uint64_t, std::string>;

link describe(error_object& error) {
  const auto type = error.get_property({"ROOT", "EXCEPTION_TYPE"});
  const auto message = error.get_property({"ROOT", "EXCEPTION_MESSAGE"});
  return {*static_cast<const std::uint64_t*>(type->get_data()),
          *static_cast<const char* const*>(message->get_data())};
}

TEST(error_conversion, gives_result_type_and_message_of_the_nearest_class_and_follows_nested_exceptions) {
  const std::tuple<std::exception_ptr, tarva_abi_result, std::vector<link>> cases[] = {
      {made(std::logic_error("a")), -3, {{1, "a"}}},
      {made(std::domain_error("b")), -3, {{1, "b"}}},
      {made(std::invalid_argument("c")), -3, {{2, "c"}}},
      {made(std::length_error("d")), -3, {{3, "d"}}},
      {made(std::out_of_range("e")), -4, {{4, "e"}}},
      {made(std::runtime_error("f")), -4, {{5, "f"}}},
      {made(std::overflow_error("")), -4, {{5, ""}}},
      {made(7), -4, {{6, "Uknown exception"}}},
      {made(plain_exception()), -4, {{7, "plain"}}},
      {made(std::bad_weak_ptr()), -4, {{7, "bad_weak_ptr"}}},
      {made(nothing_nested()), -4, {{5, "alone"}}},
      {nest(nest(made(std::out_of_range("cause")), "inner"), "outer"),
       -3,
       {{2, "outer"}, {2, "inner"}, {4, "cause"}}},
      {nest(made("no class"), "outer"), -3, {{2, "outer"}, {6, "Unknown exception."}}},
      // Inside a chain, lack of memory is an exception like others.
      {nest(made(std::bad_alloc()), "outer"), -3, {{2, "outer"}, {7, "std::bad_alloc"}}},
  };
  for (const auto& [exception, expected_result, expected_links] : cases) {
    auto [result, error] = describe_exception(exception);
    EXPECT_EQ(expected_result, result) << expected_links[0].second;
    std::vector<link> links;
    for (; error; error = error->get_nested_error())
      links.push_back(describe(*error));
    EXPECT_EQ(expected_links, links);
  }
}

TEST(error_conversion, makes_no_object_of_success_and_lack_of_memory) {
  abi_bridge bridge;
  using converted = std::pair<tarva_abi_result, tarva_abi_error_s*>;
  EXPECT_EQ(converted(0, nullptr), convert_exception(bridge, nullptr));
  EXPECT_EQ(converted(-2, nullptr), convert_exception(bridge, made(std::bad_alloc())));
  EXPECT_EQ(converted(-2, nullptr), convert_exception(bridge, made(std::bad_array_new_length())));
}

} // namespace
} // namespace oryn::tarva::library
