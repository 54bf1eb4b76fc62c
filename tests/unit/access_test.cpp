// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The access layer over the scripted capability library, where a caller of the exported functions does not reach:
// references of every kind, and answers that lie.
#include "access/opencl/version_namespaces.h"
#include "tests/scripted/scripted_qv.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <dlfcn.h>
#include <functional>

using namespace oryn::skerv;
using opencl::version;
using op = qv::operation;

namespace {

// What stands between the layer and the scripted library: it can change the number of root devices.
std::function<std::int32_t(const std::uint64_t* array, std::uint64_t* out_count)> meddle_with_list;

} // namespace

extern "C" int32_t qv_get_root_devices(uint64_t count, uint64_t* array, uint64_t* out_count,
                                       uint64_t reserved) {
  auto* const next =
      reinterpret_cast<decltype(&qv_get_root_devices)>(dlsym(RTLD_NEXT, "qv_get_root_devices"));
  const std::int32_t code = next(count, array, out_count, reserved);
  return meddle_with_list ? meddle_with_list(array, out_count) : code;
}

namespace {

// Every object made is given up as often as it was taken, and no rule of OpenCL is broken.
class access_test : public testing::Test {
protected:
  void SetUp() override {
    scripted::set_devices({{"one", {1, 2, 3, 4, 5, 6}}});
    scripted::forget_calls();
    expected_live = scripted::live_objects();
  }
  void TearDown() override {
    meddle_with_list = nullptr;
    EXPECT_TRUE(scripted::no_failure_left());
    EXPECT_EQ(scripted::live_objects(), expected_live);
    EXPECT_EQ(scripted::misuses(), std::vector<std::string>());
  }
  std::map<std::string, std::int64_t> expected_live;
};

template <version V>
opencl::device<V> the_device() {
  return opencl::find_devices<V>().at(0);
}
template <version V>
opencl::context<V> the_context() {
  return {{}, {the_device<V>()}, nullptr, nullptr};
}

template <version tested>
void count_references() {
  SCOPED_TRACE(static_cast<int>(tested));
  const int counted = tested >= version::v1_2 ? 1 : 0;
  auto device = the_device<tested>();
  {
    auto copy = device;
    EXPECT_EQ(scripted::live_objects()["device"], 2 * counted);
    const auto moved = std::move(copy);
    EXPECT_EQ(copy.get_handle(), nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(moved.get_handle(), device.get_handle());
  }
  EXPECT_EQ(scripted::live_objects()["device"], counted);
  auto context = the_context<tested>();
  {
    auto copy = context;
    copy = the_context<tested>();
    copy = context;
    EXPECT_EQ(scripted::live_objects()["context"], 2);
  }
  scripted::fail_call(op::retain_context, 1, -5);
  EXPECT_THROW(opencl::context<tested>(context).get_handle(), common::out_of_resources);
  if (counted != 0) {
    scripted::fail_call(op::retain_device, 1, -6);
    EXPECT_THROW(opencl::find_devices<tested>(), common::out_of_host_memory);
  }
}

TEST_F(access_test, references_are_counted_of_what_can_be_copied) {
  using enum version;
  count_references<v1_0>(), count_references<v1_1>(), count_references<v1_2>();
  count_references<v2_0>(), count_references<v2_1>(), count_references<v2_2>();
}

TEST_F(access_test, devices_may_vanish_while_they_are_asked_for) {
  scripted::set_devices({{"one", {1}}, {"two", {1, 3}}});
  EXPECT_EQ(opencl_1_0::find_devices().size(), 2u);
  EXPECT_EQ(opencl_1_2::find_devices().size(), 1u);
  meddle_with_list = [](const std::uint64_t* array, std::uint64_t* out_count) {
    *out_count -= array != nullptr ? 1 : 0; // gone by the time they are asked for
    return QV_OK;
  };
  EXPECT_EQ(opencl_1_0::find_devices().size(), 1u);
  meddle_with_list = [](auto, std::uint64_t* out_count) {
    *out_count = std::uint64_t{1} << 61;
    return QV_OK;
  };
  EXPECT_THROW(opencl_1_0::find_devices(), common::bad_implementation);
  scripted::set_devices({});
  int lists_asked = 0;
  meddle_with_list = [&](auto, auto) {
    ++lists_asked;
    return QV_OK;
  };
  EXPECT_TRUE(opencl_2_0::find_devices().empty());
  EXPECT_EQ(lists_asked, 1);
}

// A failing release costs one line in the log, whatever it failed with.
TEST_F(access_test, a_release_that_fails_is_logged) {
  const auto expect_line = [](op release, const std::string& name, auto make) {
    scripted::fail_call(release, 1, -34);
    testing::internal::CaptureStderr();
    { const auto wrapper = make(); }
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(text.substr(std::min(text.find("Exception"), text.size())),
              "Exception caught in " + name + "::~" + name + "().\n");
  };
  auto device = the_device<version::v2_0>();
  auto context = the_context<version::v2_0>();
  const opencl_2_0::host_command_queue queue(context, device, false, false);
  const auto buffer = context.create_buffer(1, 8, nullptr);
  expect_line(op::release_device, "device", [&] { return device; });
  expect_line(op::release_context, "context", [&] { return context; });
  expect_line(op::release_event, "event",
              [&] { return queue.enqueue(opencl_2_0::copy_buffer(buffer, buffer, 0, 4, 4), 0, nullptr); });
  queue.finish();
  expect_line(op::release_command_queue, "device_command_queue",
              [&] { return opencl_2_0::device_command_queue(context, device, false, 0); });
}

const bool logging_is_on = setenv("SKERV_LOG_LEVEL", "error", 1) == 0 &&  // NOLINT(concurrency-mt-unsafe)
                           setenv("SKERV_LOG_TARGET", "console", 1) == 0; // NOLINT(concurrency-mt-unsafe)

} // namespace
