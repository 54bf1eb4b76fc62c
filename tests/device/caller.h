// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The C++ layer as a test wants it: outcomes instead of exceptions, memory objects of any type, and calls of the functions
// themselves with whatever a test gives them.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <stdexcept>
#include <string>
#include <tarva.hpp>
#include <vector>

namespace caller {

// How a call ended: its result code, and what its error object says, if there is one.
struct outcome {
  long code = 0;
  std::uint64_t type = 0;
  std::string message{};

  bool operator==(const outcome&) const = default;
  friend std::ostream& operator<<(std::ostream& to, const outcome& from) {
    return to << from.code << ", type " << from.type << ": " << from.message;
  }
};

inline outcome logic_failure(const std::string& message) {
  return {TARVA_ABI_LOGIC_FAILURE, 1, message};
}
inline outcome invalid_argument(const std::string& message) {
  return {TARVA_ABI_LOGIC_FAILURE, 2, message};
}
inline outcome runtime_failure(const std::string& message) {
  return {TARVA_ABI_RUNTIME_FAILURE, 5, message};
}
// Of the OpenCL and capability layers.
inline outcome other_failure(const std::string& message) {
  return {TARVA_ABI_RUNTIME_FAILURE, 7, message};
}

using tarva::device;
using tarva::devices;
using tarva::kernel;
using tarva::program;
using tarva::property;
using memory = tarva::memory_handle;
using arguments = std::vector<tarva_abi_kernel_argument_s>;

inline outcome outcome_of(long code, const std::vector<tarva::failure>& chain) {
  return chain.empty() ? outcome{code}
                       : outcome{code, static_cast<std::uint64_t>(chain[0].kind), chain[0].message};
}

// Calls a function that returns a result, with its arguments between `reserved` and `out_error`.
template <auto Function, class... Arguments>
outcome call(Arguments... arguments) {
  tarva_abi_error_s* failure = nullptr;
  const auto code = Function(nullptr, arguments..., &failure);
  return outcome_of(code, tarva::read_error(code == TARVA_ABI_OK ? nullptr : failure));
}

// For what has to succeed for the test to make sense.
inline void must(const outcome& result) {
  if (result.code != TARVA_ABI_OK)
    throw std::runtime_error("unexpected failure " + std::to_string(result.code) + ": " + result.message);
}

// Without a name if there is none of that name.
inline property child(const property& parent, const char* name) {
  tarva_abi_property_s* found = nullptr;
  tarva::call<tarva_abi_get_child_property_by_name>(parent.get(), name, &found);
  return property(found);
}
template <auto GetRoot, class Handle>
property root(const Handle& of) {
  return tarva::detail::root<GetRoot>(of.get());
}
inline std::string text(const property& of, std::size_t element = 0) {
  return of.get<std::string>(element);
}

inline memory allocate(tarva_abi_data_type type, std::uint64_t count) {
  tarva_abi_memory_s* result = nullptr;
  tarva::call<tarva_abi_memory_allocate_typed>("a test", type, count, &result);
  return memory(result);
}

inline outcome wait(tarva_abi_future_s* future) {
  const auto ended = tarva::attempt([future] { tarva::future<>(future).get(); });
  return ended ? outcome() : outcome_of(ended.error().code(), ended.error().chain());
}

// The outcome of the work: that of the future, if the call was accepted.
inline outcome write_raw(const memory& to, std::uint64_t start, std::uint64_t count, const void* from) {
  tarva_abi_future_s* future = nullptr;
  const outcome accepted = call<tarva_abi_async_write_memory>(to.get(), start, count, from, &future);
  return accepted.code == TARVA_ABI_OK ? wait(future) : accepted;
}
inline outcome read_raw(const memory& from, std::uint64_t start, std::uint64_t count, void* to) {
  tarva_abi_future_s* future = nullptr;
  const outcome accepted = call<tarva_abi_async_read_memory>(from.get(), start, count, to, &future);
  return accepted.code == TARVA_ABI_OK ? wait(future) : accepted;
}

template <class T>
memory make(const std::vector<T>& content) {
  return tarva::memory<T>(content, "a test");
}
template <class T>
std::vector<T> read(const memory& from, std::uint64_t count, std::uint64_t start = 0) {
  return tarva::slice<T>(from.get(), start, count).read();
}

inline outcome fill(const memory& what, const void* value, std::uint64_t start, std::uint64_t count) {
  return call<tarva_abi_fill_memory>(what.get(), value, start, count);
}
inline outcome copy(const memory& from, std::uint64_t start, const memory& to, std::uint64_t to_start,
                    std::uint64_t count) {
  return call<tarva_abi_copy_memory>(from.get(), start, to.get(), to_start, count);
}

struct build {
  program made;
  bool success = false;
  std::string log;
};

inline outcome load(const device& on, tarva_abi_ir_type type, const std::string& data, const char* options,
                    build& result, tarva_abi_ir_header_s* header = nullptr) {
  tarva_abi_build_result_s* record = nullptr;
  const outcome ended = call<tarva_abi_load_device_ir>(on.get(), header, type, data.data(), data.size(),
                                                       options, "a test program", &record);
  if (ended.code != TARVA_ABI_OK)
    return ended;
  result = {program(record->program), record->success != 0, record->build_log ? record->build_log : ""};
  tarva_abi_free_build_result(nullptr, record);
  return ended;
}

inline program compile(const device& on, const std::string& source) {
  build result;
  must(load(on, TARVA_ABI_IR_SOURCE_1_0, source, "", result));
  if (!result.success)
    throw tarva::build_failure(result.log);
  return std::move(result.made);
}
inline kernel find_kernel(const program& in, const char* name) {
  return in.kernel(name);
}

using tarva::argument;
// A value that is said to be of another type than it is.
template <class T>
tarva_abi_kernel_argument_s argument(const T& value, tarva_abi_data_type type) {
  return {TARVA_ABI_ARGUMENT_VALUE, type, reinterpret_cast<std::uint64_t>(&value)};
}
inline tarva_abi_kernel_argument_s local_argument(tarva_abi_data_type type, std::uint64_t count) {
  return {TARVA_ABI_ARGUMENT_LOCAL_MEMORY, type, count};
}
inline tarva_abi_kernel_argument_s null_argument() {
  return tarva::argument(nullptr);
}

inline outcome launch(const kernel& called, const arguments& list, const tarva_abi_launch_range_s& range) {
  return call<tarva_abi_kernel_call>(called.get(), list.data(), list.size(), &range);
}

// `count` work-items in one dimension, in groups of `group`.
inline tarva_abi_launch_range_s line(std::uint64_t count, std::uint64_t group = 1, std::uint64_t offset = 0) {
  return {TARVA_ABI_LAUNCH_EXPLICIT, {1, offset, 0, 0, count, 1, 1, group, 1, 1}};
}

} // namespace caller
