// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// libqv.so.0 itself, called by its six functions, over the scripted OpenCL.
#pragma once

#include "capability/qv.h"
#include "tests/scripted/scripted_qv.h"

#define CL_TARGET_OPENCL_VERSION 300
#include <CL/cl.h>
#include <cstdlib>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace capability_test {

using namespace scripted;
using op = qv::operation;

// It looks at the machine once, so each machine has a library of its own, which has gone before the next.
class library {
public:
  explicit library(const std::string& versions = "1.0,1.1,1.2,2.0,2.1,2.2") {
    setenv("QV_OPENCL_VERSIONS", versions.c_str(), 1);
    file_ = dlopen(QV_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    find(get_root_devices, "qv_get_root_devices");
    find(find_capability_nodes, "qv_find_capability_nodes");
    find(create_call_handle, "qv_create_call_handle");
    find(close_call_handle, "qv_close_call_handle");
    find(call_capability, "qv_call_capability");
  }
  library(const library&) = delete;
  library& operator=(const library&) = delete;
  ~library() {
    for (qv_call_handle* const each : opened_)
      EXPECT_EQ(close_call_handle(each), QV_OK);
    dlclose(file_);
  }

  std::uint64_t count() const {
    std::uint64_t found = 0;
    EXPECT_EQ(get_root_devices(0, nullptr, &found, 0), QV_OK);
    return found;
  }
  std::uint64_t root(std::size_t index) const {
    std::vector<std::uint64_t> roots(index + 1);
    std::uint64_t found = 0;
    EXPECT_EQ(get_root_devices(roots.size(), roots.data(), &found, 0), QV_OK);
    return roots.at(index);
  }
  std::uint64_t node(std::uint64_t root, std::uint64_t capability) const {
    std::uint64_t node = 0, found = 0;
    EXPECT_EQ(find_capability_nodes(root, capability, 1, &node, &found, 0), QV_OK);
    return found == 0 ? 0 : node;
  }
  // One digit each.
  std::string capabilities(std::size_t index = 0) const {
    std::string all;
    for (std::uint64_t capability = 1; capability <= qv::capability_count; ++capability)
      if (node(root(index), capability) != 0)
        all += std::to_string(capability);
    return all;
  }
  // Closed with the library.
  qv_call_handle* open(std::size_t index, std::uint64_t capability) {
    qv_call_handle* handle = nullptr;
    EXPECT_EQ(create_call_handle(root(index), node(root(index), capability), &handle, 0), QV_OK);
    return opened_.emplace_back(handle);
  }

  decltype(&qv_get_root_devices) get_root_devices;
  decltype(&qv_find_capability_nodes) find_capability_nodes;
  decltype(&qv_create_call_handle) create_call_handle;
  decltype(&qv_close_call_handle) close_call_handle;
  decltype(&qv_call_capability) call_capability;

private:
  template <class Function>
  void find(Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(dlsym(file_, name));
  }
  void* file_ = nullptr;
  std::vector<qv_call_handle*> opened_;
};

inline std::size_t count_calls(op operation) {
  std::size_t count = 0;
  for (const call_record& one : take_calls())
    count += one.operation == operation ? 1 : 0;
  return count;
}

// A device with a context, a queue, a program of source and a buffer, for commands under one capability.
class user {
public:
  static constexpr const char* source =
      "kernel void k(global image_like* a, long b, local int* c, image2d_t d, sampler_t e, queue_t f) {}"
      "kernel void plain(global int* data) {}";

  explicit user(library& from, std::size_t index = 0, std::uint32_t capability = 6,
                std::string* told = nullptr)
      : from_(from), capability_(capability), handle_(from.open(index, capability)) {
    device = ask<op::device_of_handle>({}).result;
    context = ask<op::create_context>(
                  {nullptr, 1, &device, told != nullptr ? note_error : nullptr, told, nullptr, 77})
                  .result;
    queue = make_queue();
    program = make_program(source);
    buffer = make_buffer();
    forget_calls();
  }
  user(const user&) = delete;
  user& operator=(const user&) = delete;
  ~user() {
    finish();
    release<op::release_mem_object>(buffer);
    release<op::release_program>(program);
    release<op::release_command_queue>(queue);
    release<op::release_context>(context);
  }

  // The record as the command left it.
  template <op Op>
  qv::record<Op> ask(qv::record<Op> record) const {
    EXPECT_EQ(from_.call_capability(handle_, qv::command_number(Op, capability_), &record, 0), QV_OK);
    return record;
  }
  template <op Op>
  void release(void* object) const {
    EXPECT_EQ(object == nullptr ? CL_SUCCESS : ask<Op>({object, 77}).status, CL_SUCCESS);
  }
  // How the command ends. It reaches OpenCL, or it fails; what is refused of work that is enqueued is told by its event.
  template <op Op>
  cl_int status_of(qv::record<Op> record) const {
    forget_calls();
    void* event = nullptr;
    if constexpr (requires { record.event; })
      record.event = &event;
    record = ask<Op>(record);
    cl_int status = record.status;
    const bool has_arrived = count_calls(Op) != 0;
    if (event != nullptr) {
      EXPECT_EQ(status, CL_SUCCESS);
      status = std::min(status_of_event(event), 0);
      release<op::release_event>(event);
      finish();
    }
    if constexpr (requires { record.result; }) {
      EXPECT_EQ(record.result != nullptr, status == CL_SUCCESS);
      release<Op == op::create_context  ? op::release_context
              : Op == op::create_kernel ? op::release_kernel
                                        : op::release_program>(record.result);
    }
    EXPECT_TRUE(has_arrived || status != CL_SUCCESS);
    return has_arrived ? CL_SUCCESS : status; // what OpenCL itself says to it is another matter
  }
  cl_int status_of_event(void* event) const {
    cl_int status = 77;
    ask<op::get_event_info>({event, sizeof status, &status, nullptr, 77, CL_EVENT_COMMAND_EXECUTION_STATUS});
    return status;
  }
  cl_int build(void* which, const char* options) const {
    return ask<op::build_program>({which, &device, options, nullptr, nullptr, 77, 1}).status;
  }
  void* make_queue() const {
    const std::uint64_t none[] = {0};
    return capability_ < 4
               ? ask<op::create_command_queue>({context, device, 0, 77, nullptr}).result
               : ask<op::create_command_queue_with_properties>({device, context, none, nullptr, 77}).result;
  }
  void* make_buffer() const { return ask<op::create_buffer>({1, context, 64, nullptr, nullptr, 77}).result; }
  void* make_program(const std::string& text) const {
    const char* const all = text.c_str();
    void* const made = ask<op::create_program_with_source>({context, &all, nullptr, nullptr, 77, 1}).result;
    EXPECT_EQ(build(made, ""), CL_SUCCESS);
    return made;
  }
  void* make_kernel(const std::string& name = "plain", void* from = nullptr) const {
    const auto made = ask<op::create_kernel>({from == nullptr ? program : from, name.c_str(), nullptr, 77});
    EXPECT_EQ(made.status, CL_SUCCESS) << name;
    return made.result;
  }
  cl_int launch(void* kernel, void* const* waits = nullptr) const {
    const std::size_t one = 1;
    return status_of<op::enqueue_nd_range_kernel>(
        {queue, kernel, nullptr, &one, nullptr, waits, nullptr, 77, 1, waits == nullptr ? 0u : 1u});
  }
  cl_int set(void* kernel, cl_uint index, std::size_t size, const void* value) const {
    return ask<op::set_kernel_arg>({kernel, size, value, 77, index}).status;
  }
  cl_int finish() const { return ask<op::finish>({queue, 77}).status; }
  void* make_context() const {
    return ask<op::create_context>({nullptr, 1, &device, nullptr, nullptr, nullptr, 77}).result;
  }

  void *device, *context, *queue, *program, *buffer;

private:
  static void note_error(const char* message, const void*, std::size_t, void* told) {
    *static_cast<std::string*>(told) = message;
  }
  library& from_;
  const std::uint32_t capability_;
  qv_call_handle* const handle_;
};

// Every test leaves nothing behind on the machine.
class capability : public testing::Test {
protected:
  capability() { forget_calls(); }
  ~capability() override {
    set_platforms({{}});
    EXPECT_TRUE(no_failure_left());
    EXPECT_EQ(live_objects(), (std::map<std::string, std::int64_t>()));
    EXPECT_EQ(misuses(), std::vector<std::string>());
  }
  static void use(const device_options& only, const platform_options& platform = {}) {
    set_platforms({platform});
    set_devices({only});
  }
};

// The user of the only device of a machine.
struct only_machine {
  only_machine(const device_options& only, const platform_options& platform) {
    set_platforms({platform});
    set_devices({only});
  }
  library made{};
};
struct only_user : only_machine, user {
  explicit only_user(const device_options& only, const platform_options& platform = {},
                     std::uint32_t capability = 6)
      : only_machine(only, platform), user(made, 0, capability) {}
};

// One whose platform is of 2.2, and which tells what parameters kernels have.
inline device_options plain_device(const std::string& version = "OpenCL 2.2") {
  device_options made{"plain", {6}};
  made.info[CL_DEVICE_VERSION] = text_answer(version);
  made.tells_parameters = true;
  return made;
}

// The text of that many kernels: k0, k1 ...
inline std::string many_kernels(int count) {
  std::string text;
  for (int i = 0; i < count; ++i)
    text += "kernel void k" + std::to_string(i) + "(global int* data) {}";
  return text;
}

// A library that uses an implementation with thread-local state is never unloaded.
template <class Body>
void run_in_child(Body body) {
  const pid_t child = fork();
  if (child == 0) {
    body();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

} // namespace capability_test
