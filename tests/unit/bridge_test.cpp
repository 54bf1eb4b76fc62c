#include "abi/bridge.h"
#include "abi/call_gate.h"
#include "abi/error_object.h"
#include "base/unique_identifier.h"
#include "memory/library_memory.h"
#include "objects/library_future.h"
#include "properties/property_base.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace oryn::tarva::library {

struct abi_bridge_test_access {
  static void set_count(abi_bridge& bridge, const tarva_abi_memory_s* handle, std::uint64_t count) {
    std::get<handle_table<tarva_abi_memory_s>>(bridge.tables_).set_count(handle, count);
  }
  static std::mutex& lock(abi_bridge& bridge) { return bridge.lock_; }
};

namespace {

std::shared_ptr<library_memory> make_memory() {
  return std::make_shared<library_memory>(data_type::float_, 4, "label");
}

template <typename action>
void expect_failure(const char* message, action&& act) {
  try {
    act();
    FAIL() << "expected: " << message;
  } catch (const std::runtime_error& failure) {
    EXPECT_STREQ(message, failure.what());
  }
}

constexpr const char* UNKNOWN_AT_LOOKUP = "Lookup of internal type map failed.";
constexpr const char* UNKNOWN_AT_COUNT = "ABI type argument is not found.";
constexpr const char* UNKNOWN_AT_END =
    "ABI type argument is not found.  Is this a double-delete or an invalid entry?";
constexpr const char* UNKNOWN_PROPERTY =
    "Property is not found.  Is this a double-delete or an invalid entry?";

template <typename record>
class counted_kinds : public testing::Test {
protected:
  static std::string message(const char* tail) {
    static const char* const names[] = {"", "device", "program", "kernel", "memory"};
    const std::string name = names[handle_traits<record>::kind];
    return "ABI " + name + " argument is " + tail + (*tail == 'n' && tail[1] == 'o' ? name + " object." : "");
  }
  abi_bridge bridge;
};

using counted_records =
    testing::Types<tarva_abi_device_s, tarva_abi_program_s, tarva_abi_kernel_s, tarva_abi_memory_s>;
TYPED_TEST_SUITE(counted_kinds, counted_records);

TYPED_TEST(counted_kinds, refuse_null_other_kinds_and_unknown_addresses_in_three_ways) {
  const std::string null = this->message("nullptr and this was not expected.");
  const std::string wrong = this->message("not actually a ");
  auto* error =
      this->bridge.template make_handle<tarva_abi_error_s>(std::make_shared<error_object>(1, "text"));
  auto* other = reinterpret_cast<TypeParam*>(error);
  // An address that cannot be read proves that unknown handles are not followed.
  auto* unknown = reinterpret_cast<TypeParam*>(16);

  struct refusal {
    TypeParam* handle;
    std::string message;
  };
  for (const refusal& each :
       {refusal{nullptr, null}, refusal{other, wrong}, refusal{unknown, UNKNOWN_AT_COUNT}}) {
    expect_failure(each.message.c_str(), [&] { this->bridge.retain(each.handle); });
    expect_failure(each.message.c_str(), [&] { this->bridge.release(each.handle); });
    expect_failure(UNKNOWN_AT_LOOKUP, [&] { this->bridge.get_library_object(each.handle); });
  }
  EXPECT_EQ("text", this->bridge.get_library_object(error)->get_message());
  this->bridge.release_error(error);
}

TYPED_TEST(counted_kinds, end_with_the_release_that_matches_creation_and_retains) {
  auto* handle = this->bridge.template make_handle<TypeParam>(nullptr);
  EXPECT_EQ(handle_traits<TypeParam>::kind, handle->kind);
  this->bridge.retain(handle);
  this->bridge.retain(handle);
  EXPECT_FALSE(this->bridge.release(handle));
  EXPECT_FALSE(this->bridge.release(handle));
  EXPECT_TRUE(this->bridge.release(handle));
  expect_failure(UNKNOWN_AT_COUNT, [&] { this->bridge.release(handle); });
}

TEST(bridge, keeps_objects_alive_while_handles_live_and_no_longer) {
  abi_bridge bridge;
  auto memory = make_memory();
  const std::weak_ptr<library_memory> watch = memory;
  auto* first = bridge.make_handle<tarva_abi_memory_s>(memory);
  auto* second = bridge.make_handle<tarva_abi_memory_s>(memory);
  memory.reset();

  ASSERT_NE(first, second);
  EXPECT_EQ(bridge.get_library_object(first), bridge.get_library_object(second));
  EXPECT_TRUE(bridge.release(first));
  EXPECT_FALSE(watch.expired());
  EXPECT_EQ(4U, bridge.get_library_object(second)->get_num_elements());
  EXPECT_TRUE(bridge.release(second));
  EXPECT_TRUE(watch.expired());
}

TEST(bridge, refuses_impossible_counts_and_leaves_them_as_they_are) {
  abi_bridge bridge;
  auto* handle = bridge.make_handle<tarva_abi_memory_s>(make_memory());
  abi_bridge_test_access::set_count(bridge, handle, std::numeric_limits<std::uint64_t>::max() - 1);
  bridge.retain(handle);
  for (int attempt = 0; attempt < 2; ++attempt)
    expect_failure("Reference count increment would overflow.  This should be impossible.",
                   [&] { bridge.retain(handle); });
  EXPECT_FALSE(bridge.release(handle));

  abi_bridge_test_access::set_count(bridge, handle, 0);
  expect_failure("Reference count is zero. This should be impossible.", [&] { bridge.release(handle); });
  abi_bridge_test_access::set_count(bridge, handle, 1);
  EXPECT_TRUE(bridge.release(handle));
}

TEST(bridge, ends_futures_and_errors_once) {
  abi_bridge bridge;
  auto* future = bridge.make_handle<tarva_abi_future_s>(std::make_shared<library_future>(nullptr));
  auto* error = bridge.make_handle<tarva_abi_error_s>(std::make_shared<error_object>(1, ""));
  auto* memory = bridge.make_handle<tarva_abi_memory_s>(make_memory());

  expect_failure("ABI future argument is nullptr and this was not expected.",
                 [&] { bridge.release_future(nullptr); });
  expect_failure("ABI future argument is not actually an future object.",
                 [&] { bridge.release_future(reinterpret_cast<tarva_abi_future_s*>(error)); });
  expect_failure("ABI error argument is not actually an error object.",
                 [&] { bridge.release_error(reinterpret_cast<tarva_abi_error_s*>(memory)); });
  EXPECT_NO_THROW(bridge.release_error(nullptr));

  bridge.release_future(future);
  expect_failure(UNKNOWN_AT_END, [&] { bridge.release_future(future); });
  bridge.release_error(error);
  expect_failure(UNKNOWN_AT_END, [&] { bridge.release_error(error); });
  bridge.release(memory);
}

TEST(bridge, describes_properties_and_keeps_their_owners) {
  abi_bridge bridge;
  auto owner = std::make_shared<error_object>(5, "words");
  const std::weak_ptr<error_object> watch = owner;
  auto* with_value = bridge.make_property_handle(owner->get_property({"ROOT", "EXCEPTION_MESSAGE"}), owner);
  auto* without = bridge.make_property_handle(owner->get_property({"ROOT"}), owner);
  expect_failure("Expected properties to be non-NULL. This is an internal error, and you should file a bug.",
                 [&] { bridge.make_property_handle(nullptr, owner); });
  expect_failure("Expected properties to be non-NULL. This is an internal error, and you should file a bug.",
                 [&] { bridge.make_property_handle(owner->get_property({"ROOT"}), nullptr); });
  owner.reset();

  EXPECT_EQ(TARVA_ABI_OBJECT_PROPERTY, with_value->kind);
  EXPECT_STREQ("EXCEPTION_MESSAGE", with_value->name);
  EXPECT_EQ(1U, with_value->has_data);
  EXPECT_EQ(TARVA_ABI_TYPE_STRING, with_value->data_type);
  EXPECT_EQ(1U, with_value->element_count);
  EXPECT_STREQ("words", *static_cast<const char* const*>(with_value->data));
  EXPECT_EQ(0U, without->has_data);
  EXPECT_EQ(std::numeric_limits<std::uint64_t>::max(), without->data_type);
  EXPECT_EQ(0U, without->element_count);
  EXPECT_EQ(nullptr, without->data);
  EXPECT_EQ(watch.lock(), bridge.get_property_and_owner(without).owner);

  bridge.release_property(nullptr);
  bridge.release_property(without);
  expect_failure(UNKNOWN_PROPERTY, [&] { bridge.release_property(without); });
  EXPECT_FALSE(watch.expired());
  bridge.release_property(with_value);
  EXPECT_TRUE(watch.expired());
}

TEST(bridge, makes_arrays_whose_handles_outlive_them) {
  abi_bridge bridge;
  auto* devices = bridge.make_device_array({nullptr, nullptr});
  ASSERT_EQ(2U, devices->count);
  EXPECT_NE(devices->devices[0], devices->devices[1]);
  for (std::uint64_t index = 0; index < devices->count; ++index)
    EXPECT_TRUE(bridge.release(devices->devices[index]));
  std::free(devices->devices);
  std::free(devices);

  auto* none = bridge.make_property_array({});
  EXPECT_EQ(0U, none->count);
  EXPECT_EQ(nullptr, none->properties);
  std::free(none);

  // The second handle cannot be made, so the first is taken back.
  auto owner = std::make_shared<error_object>(5, "words");
  auto* broken = bridge.make_property_array({{owner->get_property({"ROOT"}), owner}, {nullptr, owner}});
  ASSERT_EQ(2U, broken->count);
  EXPECT_EQ(nullptr, broken->properties[0]);
  EXPECT_EQ(nullptr, broken->properties[1]);
  EXPECT_EQ(1, owner.use_count());
  std::free(broken->properties);
  std::free(broken);
}

TEST(bridge, takes_enumerators_in_range_only) {
  for (const std::uint64_t type : {1U, 68U})
    EXPECT_EQ(type, static_cast<std::uint64_t>(to_data_type(type)));
  for (const std::uint64_t type : {std::uint64_t{0}, std::uint64_t{69}, ~std::uint64_t{0}})
    expect_failure("Unknown data type.", [&] { to_data_type(type); });
  for (const std::uint64_t type : {1U, 9U})
    EXPECT_EQ(type, to_ir_type(type));
  for (const std::uint64_t type : {std::uint64_t{0}, std::uint64_t{10}, ~std::uint64_t{0}})
    expect_failure("Unknown IR type.", [&] { to_ir_type(type); });
}

// An object whose end asks the bridge, as one that ran under the bridge's lock could not.
class visitor_at_the_end final : public error_object {
public:
  explicit visitor_at_the_end(abi_bridge& bridge) : error_object(1, ""), bridge_(bridge) {}
  ~visitor_at_the_end() override { bridge_.release(bridge_.make_handle<tarva_abi_memory_s>(nullptr)); }

private:
  abi_bridge& bridge_;
};

TEST(bridge, destroys_objects_outside_its_lock) {
  abi_bridge bridge;
  bridge.release_error(bridge.make_handle<tarva_abi_error_s>(std::make_shared<visitor_at_the_end>(bridge)));
  auto* leaked = bridge.make_handle<tarva_abi_error_s>(std::make_shared<visitor_at_the_end>(bridge));
  bridge.teardown();
  std::free(leaked);
}

TEST(bridge, teardown_drops_objects_once_and_survives_a_held_lock) {
  abi_bridge bridge;
  auto memory = make_memory();
  auto* handle = bridge.make_handle<tarva_abi_memory_s>(memory);
  {
    const std::lock_guard guard(abi_bridge_test_access::lock(bridge));
    std::thread([&] { bridge.teardown(); }).join();
  }
  EXPECT_EQ(memory, bridge.get_library_object(handle));
  bridge.teardown();
  EXPECT_EQ(1, memory.use_count());
  EXPECT_EQ(TARVA_ABI_OBJECT_MEMORY, handle->kind);
  expect_failure(UNKNOWN_AT_LOOKUP, [&] { bridge.get_library_object(handle); });
  std::free(handle);
}

TEST(bridge, serves_many_threads_at_once) {
  abi_bridge bridge;
  auto memory = make_memory();
  auto* shared = bridge.make_handle<tarva_abi_memory_s>(memory);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread)
    threads.emplace_back([&] {
      for (int round = 0; round < 5000; ++round) {
        bridge.retain(shared);
        auto* own = bridge.make_handle<tarva_abi_memory_s>(bridge.get_library_object(shared));
        EXPECT_TRUE(bridge.release(own));
        EXPECT_FALSE(bridge.release(shared));
      }
    });
  for (auto& thread : threads)
    thread.join();
  EXPECT_TRUE(bridge.release(shared));
  EXPECT_EQ(1, memory.use_count());
}

TEST(call_gate, lets_none_in_once_closed_and_waits_for_those_inside) {
  using namespace std::chrono_literals;
  call_gate gate;
  std::atomic<bool> inside = false;
  std::atomic<bool> leave = false;
  std::thread caller([&] {
    const call_gate::permit permit(gate);
    inside = permit.is_granted();
    while (!leave)
      std::this_thread::yield();
  });
  while (!inside)
    std::this_thread::yield();

  gate.close();
  EXPECT_FALSE(call_gate::permit(gate).is_granted());
  EXPECT_FALSE(gate.wait_for_other_threads(5ms));
  EXPECT_FALSE(gate.is_idle());
  leave = true;
  EXPECT_TRUE(gate.wait_for_other_threads(10s));
  caller.join();

  // A call that itself ends the process is not waited for, but is inside.
  const call_gate::permit own(gate);
  EXPECT_TRUE(gate.wait_for_other_threads(0ms));
  EXPECT_FALSE(gate.is_idle());
}

} // namespace
} // namespace oryn::tarva::library
