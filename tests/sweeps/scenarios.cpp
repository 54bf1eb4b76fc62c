// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "tests/sweeps/scenarios.h"

#include <algorithm>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace sweeps {

using namespace caller;

namespace {

using numbers = std::vector<std::int32_t>;
const numbers old_content(4, 1), new_content(4, 7);
const std::int32_t none = 0, six = 6, seven = 7;
const std::string kernels = R"(
  kernel void add_with_a_name_that_takes_memory(global int* data, int amount) {}
  kernel void eight(global int* a, global int* b, global int* c, global int* d, local int* e, int f, short4 g, global int* h) {}
)";
const char* const add_name = "add_with_a_name_that_takes_memory";
const char* const long_options = "-an-option-that-takes-memory";
const char* const long_label = "a label that takes memory, too";

std::uint32_t versions[2];
std::string messages;

// In out-arguments before a call.
char nothing;
template <class T>
T* untouched() {
  return reinterpret_cast<T*>(&nothing);
}

bool has_object(long code) {
  return code == TARVA_ABI_LOGIC_FAILURE || code == TARVA_ABI_RUNTIME_FAILURE;
}
long note(long code, tarva_abi_error_s* failure) {
  if (has_object(code))
    for (const tarva::failure& one : tarva::read_error(failure))
      messages += one.message + '\n';
  return code;
}

// Inside the call and nowhere else memory may be short.
template <auto Function, class... Arguments>
long attempt(Arguments... arguments) {
  auto* failure = untouched<tarva_abi_error_s>();
  long code = 0;
  {
    const inside_call short_of_memory;
    code = Function(nullptr, arguments..., &failure);
  }
  if (code == TARVA_ABI_OK)
    demand(failure == untouched<tarva_abi_error_s>(), "a success leaves the error alone");
  else
    demand(has_object(code) ? failure != nullptr && failure != untouched<tarva_abi_error_s>()
                            : failure == nullptr,
           "a failure has an error object, a want of memory has none");
  return note(code, failure);
}
template <auto Function, class Made, class... Arguments>
long obtain(Made*& made, Arguments... arguments) {
  made = untouched<Made>();
  const long code = attempt<Function>(arguments..., &made);
  demand((made == untouched<Made>()) == (code != TARVA_ABI_OK),
         "a success writes its result, a failure none");
  if (code != TARVA_ABI_OK)
    made = nullptr;
  return code;
}

// The future's, if the call was accepted.
template <auto Function, class Pointer>
long transfer(const memory& object, Pointer data) {
  tarva_abi_future_s* future = nullptr;
  if (const long code = obtain<Function>(future, object.get(), std::uint64_t{0}, std::uint64_t{4}, data);
      code != TARVA_ABI_OK)
    return code;
  long ended = 1;
  auto* failure = untouched<tarva_abi_error_s>();
  if (const long code = attempt<tarva_abi_wait_future>(future, &ended, &failure); code != TARVA_ABI_OK) {
    demand(ended == 1 && failure == untouched<tarva_abi_error_s>(), "a failed wait writes nothing");
    return code;
  }
  return note(ended, failure);
}

// What is in the object tells whether it was done. Between the two there is nothing.
ending change(const world& in, const memory& object, const std::function<long()>& action) {
  must(write_raw(object, 0, 4, old_content.data()));
  const long code = in.try_to(action);
  const auto left = caller::read<std::int32_t>(object, 4);
  demand(left == old_content || left == new_content, "content is lost");
  return {code, left == new_content};
}

void must_hold(const memory& object, const numbers& content) {
  demand(caller::read<std::int32_t>(object, content.size()) == content, "content of another object is lost");
}

} // namespace

std::string take_messages() {
  return std::exchange(messages, {});
}

void set_up_machine(std::uint32_t first_version, std::uint32_t second_version) {
  versions[0] = first_version;
  versions[1] = second_version;
  scripted::device_options one{"one", {first_version}}, two{"two", {second_version}};
  two.info[0x103F] = scripted::text_answer("copy_all;sort_all");
  for (scripted::device_options* const each : {&one, &two})
    each->info[0x1030] = scripted::text_answer("cl_khr_spir cl_khr_il_program");
  scripted::set_devices({one, two});
  for (const char* const name : {add_name, "add"})
    scripted::set_kernel(name, [](const scripted::kernel_run& now) {
      for (std::size_t i = 0; i < now.global[0]; ++i)
        now.set(0, i, now.get<std::int32_t>(0, i) + now.get<std::int32_t>(1));
    });
  scripted::set_kernel("eight", [](const scripted::kernel_run& now) {
    for (std::size_t i = 0; i < 4; ++i)
      now.set(0, i,
              now.get<std::int32_t>(1, i) + now.get<std::int32_t>(2, i) + now.get<std::int32_t>(3, i) +
                  now.get<std::int32_t>(5) + now.get<std::int16_t>(6, i));
  });
}

world use_machine() {
  world made;
  for (std::size_t i = 0; i < 2; ++i) {
    made.programs[i] = compile(made.devices.at(i), kernels);
    made.add[i] = find_kernel(made.programs[i], add_name);
    made.eight[i] = find_kernel(made.programs[i], "eight");
  }
  return made;
}

// The new content.
memory world::make_at(std::size_t where) const {
  memory made = make(new_content);
  if (where != 0)
    must(launch(add[where - 1], {argument(made), argument(none)}, line(4)));
  return made;
}

property world::root_of(std::size_t which) const {
  return which < 2    ? root<tarva_abi_get_device_root_property>(devices[which])
         : which == 2 ? root<tarva_abi_get_program_root_property>(programs[1])
                      : root<tarva_abi_get_kernel_root_property>(eight[1]);
}

namespace {

ending list_devices(const world& in, std::size_t, std::size_t) {
  tarva_abi_device_array_s* array = nullptr;
  const long code = in.try_to([&] { return obtain<tarva_abi_get_devices>(array); });
  const bool is_done = array != nullptr && array->count == 2;
  for (std::uint64_t i = 0; array != nullptr && i < array->count; ++i)
    tarva_abi_release_device(nullptr, array->devices[i]);
  tarva_abi_free_device_array(nullptr, array);
  return {code, is_done};
}

ending load_builtin(const world& in, std::size_t where, std::size_t) {
  tarva_abi_program_s* made = nullptr;
  const long code =
      in.try_to([&] { return obtain<tarva_abi_get_builtin_program>(made, in.devices[where].get()); });
  return {code, program(made).get() != nullptr};
}

ending load(const world& in, std::size_t kind, std::size_t where) {
  const std::int32_t value = 5;
  const tarva_abi_specialization_constant_s constant{1, TARVA_ABI_TYPE_INT32, &value};
  tarva_abi_ir_header_s header{TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS, &constant, 1};
  const struct {
    tarva_abi_ir_type type;
    std::string data;
    tarva_abi_ir_header_s* header;
    std::uint32_t first_version;
    const char* log = nullptr; // of a build that fails
  } kinds[] = {{TARVA_ABI_IR_SOURCE_1_0, kernels, nullptr, 1},
               {TARVA_ABI_IR_DEVICE_BINARY, "BIN:" + kernels, nullptr, 1},
               {TARVA_ABI_IR_SPIR_1_2, "BC" + kernels, nullptr, 3},
               {TARVA_ABI_IR_SPIR_V, "SPV:" + kernels, nullptr, 3},
               {TARVA_ABI_IR_SPIR_V, "SPV:" + kernels, &header, 6},
               {TARVA_ABI_IR_SOURCE_1_0, kernels + "#error", nullptr, 1, "error: the text says #error"}};
  const auto& [type, data, with, first_version, log] = kinds[kind];
  if (versions[where] < first_version)
    return {TARVA_ABI_OK, true};
  tarva_abi_build_result_s* result = nullptr;
  const long code = in.try_to([&, &type = type, &data = data, &with = with] {
    return obtain<tarva_abi_load_device_ir>(result, in.devices[where].get(), with, type, data.data(),
                                            data.size(), long_options, long_label);
  });
  if (result == nullptr)
    return {code, false};
  const program owned(result->program);
  const bool fails = log != nullptr;
  // A log whose size is not told right may be none.
  const bool may_lack_log = in.planned.call != 0 && in.planned.how == scripted::way::size,
             is_told = fails && (may_lack_log ||
                                 (result->build_log != nullptr && result->build_log == std::string(log))),
             is_built = result->success != 0;
  tarva_abi_free_build_result(nullptr, result);
  return {code, fails ? !is_built && is_told : is_built && find_kernel(owned, add_name).get() != nullptr};
}

ending get_kernel(const world& in, std::size_t, std::size_t) {
  tarva_abi_kernel_s* result = nullptr;
  const memory numbers = make(new_content);
  const long code =
      in.try_to([&] { return obtain<tarva_abi_get_kernel>(result, in.programs[0].get(), add_name); });
  const kernel owned(result);
  return {code, result && launch(owned, {argument(numbers), argument(none)}, line(4)) == outcome()};
}

ending allocate(const world& in, std::size_t, std::size_t) {
  tarva_abi_memory_s* result = nullptr;
  const long code = in.try_to([&] {
    return obtain<tarva_abi_memory_allocate_typed>(result, long_label, TARVA_ABI_TYPE_INT32,
                                                   std::uint64_t{4});
  });
  const memory owned(result);
  return {code, result && write_raw(owned, 0, 4, old_content.data()) == outcome()};
}

// Of each kind one handle, and the last of its object. They go, whatever happens.
ending give_up(const world& in, std::size_t where, std::size_t) {
  const auto buffers = scripted::live_objects()["buffer"];
  memory object = in.make_at(where);
  program loaded = compile(in.devices[0], kernels);
  kernel called = find_kernel(loaded, add_name);
  must(launch(called, {argument(make(new_content)), argument(none)}, line(4)));
  auto device = std::move(caller::devices()[1]);
  property value = child(root<tarva_abi_get_program_root_property>(loaded), "USER_LABEL");
  tarva_abi_future_s* future = nullptr;
  numbers seen(4);
  must(call<tarva_abi_async_read_memory>(object.get(), 0, 4, seen.data(), &future));
  in.try_to([&] {
    const inside_call short_of_memory;
    tarva_abi_abandon_future(nullptr, future);
    object.reset();
    value = property(nullptr);
    loaded.reset();
    called.reset();
    device.reset();
    return 0;
  });
  demand(scripted::live_objects()["buffer"] == buffers || scripted::is_opencl(),
         "memory of a device is left");
  return {TARVA_ABI_OK, true};
}

// On the second device.
ending launch_with_one(const world& in, std::size_t where, std::size_t) {
  const memory moved = in.make_at(where);
  const arguments list{argument(moved), argument(six)};
  const auto range = line(4);
  return change(in, moved, [&] {
    return attempt<tarva_abi_kernel_call>(in.add[1].get(), list.data(), list.size(), &range);
  });
}

ending launch_with_eight(const world& in, std::size_t where, std::size_t) {
  const memory out = in.make_at(where), objects[] = {in.make_at(0), in.make_at(1), in.make_at(2)};
  const std::array<std::int16_t, 4> values{-20, -20, -20, -20};
  const arguments list{argument(out),
                       argument(objects[0]),
                       argument(objects[1]),
                       argument(objects[2]),
                       local_argument(TARVA_ABI_TYPE_FLOAT, 3),
                       argument(six),
                       argument(values, TARVA_ABI_TYPE_INT16V4),
                       null_argument()};
  const auto range = line(4);
  const ending ended = change(in, out, [&] {
    return attempt<tarva_abi_kernel_call>(in.eight[1].get(), list.data(), list.size(), &range);
  });
  for (const memory& one : objects)
    must_hold(one, new_content);
  return ended;
}

ending read(const world& in, std::size_t where, std::size_t) {
  const memory source = in.make_at(where);
  numbers seen(4);
  const long code =
      in.try_to([&] { return transfer<tarva_abi_async_read_memory, void*>(source, seen.data()); });
  must_hold(source, new_content);
  demand(seen == new_content || (code != TARVA_ABI_OK && seen == numbers(4)), "something else is read");
  return {code, code == TARVA_ABI_OK};
}

ending write(const world& in, std::size_t where, std::size_t) {
  const memory object = in.make_at(where);
  return change(in, object, [&] {
    return transfer<tarva_abi_async_write_memory, const void*>(object, new_content.data());
  });
}

ending fill(const world& in, std::size_t where, std::size_t) {
  const memory object = in.make_at(where);
  return change(in, object, [&] {
    return attempt<tarva_abi_fill_memory>(object.get(), &seven, std::uint64_t{0}, std::uint64_t{4});
  });
}

ending copy(const world& in, std::size_t from, std::size_t to) {
  const memory source = in.make_at(from), object = in.make_at(to);
  const ending ended = change(in, object, [&] {
    return attempt<tarva_abi_copy_memory>(source.get(), std::uint64_t{0}, object.get(), std::uint64_t{0},
                                          std::uint64_t{4});
  });
  must_hold(source, new_content);
  return ended;
}

// All below OPENCL, at once.
ending read_properties(const world& in, std::size_t of, std::size_t) {
  const property from = in.root_of(of);
  tarva_abi_property_s* found = nullptr;
  tarva_abi_property_array_s* array = nullptr;
  const long code = in.try_to([&] {
    const long first = obtain<tarva_abi_get_child_property_by_name>(found, from.get(), "OPENCL");
    return first != TARVA_ABI_OK ? first : obtain<tarva_abi_get_all_children_properties>(array, found);
  });
  const property parent(found);
  for (std::uint64_t i = 0; array != nullptr && i < array->count; ++i)
    const property owned(array->properties[i]);
  tarva_abi_free_property_array(nullptr, array);
  return {code, array != nullptr};
}

ending write_string(const world& in, std::size_t of, std::size_t) {
  const property from = in.root_of(of);
  const tarva_abi_tree_format_s format{TARVA_ABI_TREE_TEXT, 1, 1, 1, 1, 1, 1};
  char* text = nullptr;
  const long code =
      in.try_to([&] { return obtain<tarva_abi_get_property_tree_string>(text, from.get(), &format); });
  tarva_abi_free_property_tree_string(nullptr, text);
  return {code, code == TARVA_ABI_OK};
}

// A refusal, and what its error object says of itself.
ending follow_errors(const world& in, std::size_t, std::size_t) {
  const memory object = in.make_at(0);
  auto *failure = untouched<tarva_abi_error_s>(), *nested = failure;
  tarva_abi_property_s *found = nullptr, *text = nullptr;
  bool is_refused = false;
  const long ended = in.try_to([&] {
    long code = 0;
    {
      const inside_call short_of_memory;
      code = tarva_abi_fill_memory(nullptr, object.get(), &seven, 3, 4, &failure);
    }
    if (is_refused = code == TARVA_ABI_LOGIC_FAILURE; !is_refused)
      return code;
    code = obtain<tarva_abi_get_nested_error>(nested, failure);
    if (code == TARVA_ABI_OK)
      code = obtain<tarva_abi_get_error_root_property>(found, failure);
    return code != TARVA_ABI_OK
               ? code
               : obtain<tarva_abi_get_child_property_by_name>(text, found, "EXCEPTION_MESSAGE");
  });
  const property owned(found), owned_text(text);
  if (!is_refused)
    return {ended, false};
  const auto chain = tarva::read_error(failure);
  demand(chain.size() == 1, "an error says what it is");
  return {ended, text != nullptr && caller::text(owned_text) == chain[0].message};
}

} // namespace

const std::vector<scenario> scenarios = {
    {"list of devices", list_devices},
    {"program", load, 6, 2},
    {"built-in program", load_builtin, 2},
    {"kernel", get_kernel},
    {"memory object", allocate},
    {"end of handles", give_up, 3},
    {"launch", launch_with_one, 3},
    {"launch with eight arguments", launch_with_eight, 3},
    {"read", sweeps::read, 3},
    {"write", sweeps::write, 3},
    {"fill", sweeps::fill, 3},
    {"copy", sweeps::copy, 3, 3},
    {"properties", read_properties, 4},
    {"string of a tree", write_string, 4},
    {"errors", follow_errors},
};

} // namespace sweeps
