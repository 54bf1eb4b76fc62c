// Handles from their making to their end.
#include "abi/bridge.h"
#include "abi/error_object.h"
#include "memory/library_memory.h"
#include "tests/error_of.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <thread>

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
}

} // namespace
} // namespace oryn::tarva::library
