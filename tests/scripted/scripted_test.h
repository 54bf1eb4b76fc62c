// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the suites on the scripted machine share: its devices, its kernels, and the check that a test leaves
// nothing behind.
#pragma once

#include "tests/device/caller.h"
#include "tests/scripted/scripted_qv.h"

#include <chrono>
#include <gtest/gtest.h>
#include <numeric>

namespace scripted {

// Three devices a version: two little-endian ones and a big-endian one. They stand in the library's list and
// in the script in the same order.
enum class role : std::size_t { first, second, big_endian };
constexpr std::uint32_t version_count = std::size(version_texts);

inline std::size_t device_index(std::uint32_t version, role which) {
  return (version - 1) * 3 + static_cast<std::size_t>(which);
}

// What a machine of those devices is set up from.
std::vector<device_options> standard_devices();
// The bodies of the kernels of the source.
void register_kernels();

inline const std::string source = R"(
  kernel void add(global int* data, int amount) {}
  kernel void sum(global int* out, global const int* a, global const int* b) {}
  kernel void observe(global short* data, local float* scratch, short4 values, global int* nothing) {}
  kernel void flag(global int* data) {}
  kernel __attribute__((reqd_work_group_size(8, 4, 2))) void fixed(global int* data) {}
  kernel void empty() {}
)";

inline std::vector<call_record> only(std::vector<call_record> calls, qv::operation operation) {
  std::erase_if(calls, [&](const call_record& one) { return one.operation != operation; });
  return calls;
}
inline std::size_t count(const std::vector<call_record>& calls, qv::operation operation) {
  return only(calls, operation).size();
}

// Brings the objects to the device of the kernel, which is an "add".
inline void bring(const caller::kernel& to, std::initializer_list<const caller::memory*> objects) {
  const std::int32_t nothing = 0;
  for (const caller::memory* one : objects)
    caller::must(caller::launch(to, {caller::argument(*one), caller::argument(nothing)}, caller::line(4)));
}

class scripted_test : public ::testing::Test {
protected:
  void SetUp() override {
    devices = caller::devices();
    ASSERT_EQ(devices.size(), 3 * version_count);
    before_ = live_objects();
    forget_calls();
  }
  void TearDown() override {
    EXPECT_TRUE(no_failure_left()) << "a planned failure did not happen";
    EXPECT_EQ(misuses(), std::vector<std::string>());
    // The last event of an operation is released just after its owner has been woken.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (live_objects() != before_ && std::chrono::steady_clock::now() < deadline)
      std::this_thread::yield();
    EXPECT_EQ(live_objects(), before_);
  }

  const caller::device& device(std::uint32_t version, role which = role::first) const {
    return devices.at(device_index(version, which));
  }
  caller::kernel kernel(std::uint32_t version, const char* name, role which = role::first) const {
    return caller::find_kernel(caller::compile(device(version, which), source), name);
  }

  std::vector<caller::device> devices;

private:
  std::map<std::string, std::int64_t> before_;
};

class each_version : public scripted_test, public ::testing::WithParamInterface<std::uint32_t> {
protected:
  std::uint32_t version() const { return GetParam(); }
};

inline std::string version_name(const ::testing::TestParamInfo<std::uint32_t>& info) {
  std::string text = version_texts[info.param - 1];
  text[1] = '_';
  return "opencl_" + text;
}

inline std::vector<std::int32_t> counted(std::size_t size, std::int32_t first = 1) {
  std::vector<std::int32_t> result(size);
  std::iota(result.begin(), result.end(), first);
  return result;
}

} // namespace scripted
