// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What comes from below may be anything: each answer to a question, and whether something could be made, is now and then the
// input's. Over the capability library that is scripted, and, as a second program, over an OpenCL that is.
#include "fuzz/target.h"

#include <tarva.hpp>

namespace {

using fuzz::demand;
using fuzz::input;
using op = qv::operation;

constexpr std::int32_t statuses[] = {0, 0, 0, -5, -6, -30, -9999, 1};
// The largest that are taken would be as large as the memory of the machine.
constexpr std::size_t sizes[] = {
    0, 1, 2, 4, 8, 12, 16, 20, 24, 64, 800, 4097, 9999, 65536, ~0ull, ~7ull, std::size_t{1} << 40};
constexpr std::uint32_t program_binaries = 0x1166; // where the value is addresses, which are the caller's

// False if the command is to be carried out. What has no other answer than its status may fail, and is otherwise done.
template <op Op>
bool answer_as(input& from, qv::record<Op>& record) {
  if constexpr (Op == op::create_kernels_in_program) {
    record.status = 0;
    if (record.kernels == nullptr)
      *record.num_kernels_ret = std::uint32_t(from.one_of(sizes));
    return record.kernels == nullptr;
  } else if constexpr (requires { record.param_value; }) {
    // A launch of groups of another size would be refused when it is enqueued, see below; and a device that is said to be gone
    // gives nothing back.
    constexpr std::uint32_t fixed_size = 0x11B1, available = 0x1027;
    if (record.param_name == (scripted::is_opencl() ? available : fixed_size))
      return false;
    record.status = from.one_of(statuses);
    if (record.param_value_size_ret != nullptr)
      *record.param_value_size_ret = from.rarely(2) ? record.param_value_size : from.one_of(sizes);
    // Of the value no more is written than there is room for.
    if (record.param_value != nullptr && record.param_name != program_binaries)
      for (std::size_t i = 0; i < std::min<std::size_t>(record.param_value_size, 32); ++i)
        static_cast<unsigned char*>(record.param_value)[i] = static_cast<unsigned char>(from.below(256));
    return true;
  } else {
    if constexpr (requires { record.result; })
      record.result = nullptr;
    if constexpr (requires { record.status; }) {
      record.status = from.one_of(statuses);
      // Our capability library lets no success pass that has made nothing.
      constexpr bool makes = requires {
        record.result;
      };
      return record.status != 0 || (makes && scripted::is_opencl());
    }
    return true;
  }
}

// What the library has to survive. A capability library that fails on the thread of a device, where work is enqueued and
// finished, ends the process; ours lets no failure of OpenCL's through. What is counted has to be. And where the sizes of
// binaries were wrong, nobody must write as many bytes.
bool may_lie(input& from, op operation, const void* record, std::thread::id caller) {
  if (operation == op::get_program_info &&
      static_cast<const qv::get_object_info_record*>(record)->param_name == program_binaries)
    return true;
  return !from.is_empty() && operation != op::device_of_handle &&
         !fuzz::is_between(op::release_command_queue, operation, op::retain_program) &&
         (scripted::is_opencl() || std::this_thread::get_id() == caller) && from.rarely(4);
}

template <std::size_t... Operations>
scripted::command_answer lie(input& from, std::index_sequence<Operations...>) {
  return [&from, caller = std::this_thread::get_id()](op operation,
                                                      void* record) -> std::optional<std::int32_t> {
    if (!may_lie(from, operation, record, caller))
      return std::nullopt;
    if (!scripted::is_opencl() && from.rarely(16)) // of OpenCL, -2 is a status: the device is gone
      return from.rarely(2) ? -1 : -2;
    const bool is_answered =
        ((operation == op{Operations} &&
          answer_as<op{Operations}>(from, *static_cast<qv::record<op{Operations}>*>(record))) ||
         ...);
    return is_answered ? std::optional(0) : std::nullopt;
  };
}

// Whether the action succeeds. Its failure is one that the interface names.
template <class Action>
bool attempt(Action action) {
  try {
    action();
    return true;
  } catch (const tarva::error& failure) {
    demand(failure.code() != TARVA_ABI_UNKNOWN_FAILURE, "every failure is known");
  } catch (const std::logic_error&) { // of the C++ layer: a value that has another type or size than usual
  }
  return false;
}

constexpr const char* source = "kernel void add(global int* data, int amount) {}";

// A launch that can be seen, in which `wanted` of all that takes part tells of itself.
bool work_on(const tarva::device& device, std::size_t wanted) {
  tarva::memory<int> data;
  int read = 0;
  std::size_t seen = 0;
  const auto look_at = [&](const auto& object) {
    if (seen++ == wanted)
      attempt([&] { object.properties().to_xml(); });
  };
  const bool has_worked = attempt([&] {
    look_at(device);
    const tarva::program made = device.build(source);
    look_at(made);
    const auto add = made.kernel("add");
    look_at(add);
    data = tarva::memory<int>(std::vector<int>{7});
    add(tarva::range::items(1), data, 1);
    look_at(data);
    data.part(0, 1).read(tarva::view<int>(&read, 1));
  });
  return has_worked && read == 8;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto& devices = *new auto([] {
    if (scripted::is_opencl())
      fuzz::set_up_platforms();
    else
      scripted::set_devices({{"", {1}}, {"", {2}}, {"", {3}}, {"", {4}}, {"", {5}}, {"", {6}}});
    scripted::set_kernel("add", [](const scripted::kernel_run& now) {
      now.set(0, 0, now.get<std::int32_t>(0) + now.get<std::int32_t>(1));
    });
    return tarva::devices();
  }());
  static const auto& before = *new auto(scripted::live_objects());
  input from(data, size);
  const tarva::device& device = devices[from.below(devices.size())];
  constexpr std::size_t nothing = 4;
  const std::size_t chosen = from.below(nothing);
  scripted::answer_commands(lie(from, std::make_index_sequence<qv::operation_count>()));
  work_on(device, chosen);
  scripted::answer_commands({});
  demand(work_on(device, nothing), "the next call works");
  fuzz::demand_balance(before);
  return 0;
}
