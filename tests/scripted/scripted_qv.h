// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A capability library that answers as told and records every call. It stands in for libqv.so.0 in the tests:
// it simulates OpenCL devices in memory, of any version and byte order, and fails where a test asks for it.
//
// The devices are set with set_devices() before the library under test starts; everything else may change at
// any time, from any thread.
#pragma once

#include "capability/commands.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#define SCRIPTED_API __attribute__((visibility("default")))

namespace scripted {

using bytes = std::vector<unsigned char>;

// Answers to information queries.
inline bytes text_answer(const std::string& text) {
  return {text.c_str(), text.c_str() + text.size() + 1};
}
template <class T>
bytes value_answer(T value) {
  const auto* const first = reinterpret_cast<const unsigned char*>(&value);
  return {first, first + sizeof value};
}

// The versions by their capabilities, 1 for the first.
constexpr const char* version_texts[] = {"1.0", "1.1", "1.2", "2.0", "2.1", "2.2"};

// What may be wrong with the answer to a query.
enum class defect { refused, thrown, grows, absurd };

// One root device, with a node under each capability. The last three are for the scripted OpenCL alone, whose devices are of
// the first capability.
struct device_options {
  std::string name = "scripted";
  std::vector<std::uint32_t> capabilities{};
  bool little_endian = true;
  std::uint64_t work_group_size = 256;
  std::map<std::uint32_t, bytes> info{}; // by parameter; overrides the built-in answers
  std::map<std::uint32_t, defect> defects{};
  bool tells_parameters = false;
  std::size_t platform = 0;
};

// A platform of the scripted OpenCL.
struct platform_options {
  std::string name = "Scripted", version = "OpenCL 2.2 scripted";
  std::uint64_t timer = 1;
  std::int32_t devices_status = 0;
  std::uint32_t false_count = 0; // of its devices, unless 0
};

enum class argument_kind { unset, memory, null, local, value };

struct kernel_argument {
  argument_kind kind = argument_kind::unset;
  bytes value{};                 // of a value
  unsigned char* data = nullptr; // of a memory object
  std::size_t size = 0;          // of memory and local memory
};

// What a simulated kernel sees of its launch. Numbers are read and written in the byte order of the device.
struct kernel_run {
  bool little_endian = true;
  std::uint32_t work_dim = 0;
  std::array<std::size_t, 3> offset{}, global{1, 1, 1}, local{1, 1, 1};
  std::vector<kernel_argument> arguments{};
  std::map<std::uint32_t, bytes> constants{}; // specialisation constants of the program

  template <class T>
  T get(std::size_t index, std::size_t element = 0) const {
    const kernel_argument& from = arguments.at(index);
    T result;
    copy_ordered(&result, (from.data ? from.data : from.value.data()) + element * sizeof(T), sizeof(T));
    return result;
  }

  template <class T>
  void set(std::size_t index, std::size_t element, T value) const {
    copy_ordered(arguments.at(index).data + element * sizeof(T), &value, sizeof(T));
  }

private:
  void copy_ordered(void* to, const void* from, std::size_t size) const {
    auto* target = static_cast<unsigned char*>(to);
    std::memcpy(target, from, size);
    if (!little_endian)
      std::reverse(target, target + size);
  }
};

using kernel_function = std::function<void(const kernel_run&)>;

// One call of qv_call_capability, in the order of arrival. What its record points to is kept in the last
// fields.
struct call_record {
  qv::operation operation{};
  std::uint32_t capability = 0;
  std::size_t device = 0;
  std::thread::id thread{};
  std::array<unsigned char, 80> record{}; // as it was when the call returned
  std::string text{};                     // source, options, names
  bytes data{};                           // pattern, binary, value of an argument or constant
  std::vector<std::uint64_t> numbers{};   // work sizes (offset, global, local), queue properties

  template <qv::operation Op>
  qv::record<Op> as() const {
    qv::record<Op> result;
    std::memcpy(&result, record.data(), sizeof result);
    return result;
  }
};

// Before the library under test starts.
SCRIPTED_API void set_devices(std::vector<device_options> devices);
SCRIPTED_API void set_version(std::uint64_t version);
// With the status of the question for them.
SCRIPTED_API void set_platforms(std::vector<platform_options> platforms, std::int32_t status = 0);

// The body of every kernel of that name; a kernel without a body does nothing.
SCRIPTED_API void set_kernel(const std::string& name, kernel_function body);
// Of the device, or of all its kernels. An empty answer takes the last one back.
SCRIPTED_API void set_info(std::size_t device, std::uint32_t parameter, const bytes& answer);
// What a device answers if nobody has set it otherwise, and the answer is a number.
SCRIPTED_API std::uint64_t number_of(std::uint32_t parameter);
// The status of every argument that is set, of any kernel, in the place of what its parameter's text tells; an empty
// function takes the last one back. What it accepts is a null argument.
using argument_answer = std::function<std::int32_t(std::size_t size, const void* value)>;
SCRIPTED_API void answer_arguments(argument_answer answer);

// The `nth` coming call (1: the next) of the operation fails: with an OpenCL status, with a transport code,
// or, for a command that is enqueued, without effect and with that execution status of its event. A release that
// fails has taken effect all the same.
SCRIPTED_API void fail_call(qv::operation operation, int nth, std::int32_t status);
SCRIPTED_API void fail_transport(qv::operation operation, int nth, std::int32_t code);
SCRIPTED_API void fail_event(qv::operation operation, int nth, std::int32_t status);
// The same for the `nth` coming call of any operation that can fail in this way, and for each one behind it if the failure lasts.
// way::size: what the answer to a query is said to take, or how many there are, as wrong_size() has it.
enum class way { status, transport, event, size, action };
SCRIPTED_API void fail_any(way how, int nth, std::int32_t value, bool lasts);
// Whether it has failed this one, or any.
SCRIPTED_API bool was_failed(qv::operation operation);
SCRIPTED_API bool any_was_failed();
// Runs before each command, and behind it, on the thread of the call.
SCRIPTED_API void set_delay(void (*delay)());
// Runs before the `nth` coming call of the operation has any effect, on the thread of that call.
SCRIPTED_API void before_call(qv::operation operation, int nth, std::function<void()> action);
// Asked before each command, with the machine locked. What it returns is the transport code of the command, which is not
// carried out: its answer is what the record holds then. An empty function takes the last one back.
using command_answer = std::function<std::optional<std::int32_t>(qv::operation operation, void* record)>;
SCRIPTED_API void answer_commands(command_answer answer);
// OpenCL's wait for events fails, with that status, and the work of the queue is never done. 0: it waits again.
SCRIPTED_API void fail_waits(std::int32_t status);
// True if no failure that was asked for is still to come. Forgets those that are.
SCRIPTED_API bool no_failure_left();

SCRIPTED_API std::vector<call_record> take_calls(); // those since the last time
inline void forget_calls() {
  take_calls();
}

// References that the caller holds, by kind: "call handle", "device", "context", "queue", "buffer", "event",
// "program", "kernel". Kinds without a reference are left out.
SCRIPTED_API std::map<std::string, std::int64_t> live_objects();
// Breaches of the rules of OpenCL or of the wire format that were seen, in words.
SCRIPTED_API std::vector<std::string> misuses();
// At the end of the process, after the library under test has stopped: end it with status 9 and a line on the
// standard error stream if a reference is left or a rule was broken.
SCRIPTED_API void check_at_exit(bool wanted);
// Whether this thread is inside the scripted library, of which there are two.
SCRIPTED_API bool is_inside();
SCRIPTED_API bool is_opencl();
SCRIPTED_API void raise_context_error(std::size_t device, const char* message, bool with_user_data = true);

} // namespace scripted
