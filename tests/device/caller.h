// The exported functions as a C++ test wants them: outcomes instead of error objects, owners instead of
// handles.
#pragma once

#include "include/tarva_abi.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
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

template <auto Free>
struct deleter {
  template <class T>
  void operator()(T* handle) const {
    Free(nullptr, handle);
  }
};
using device = std::unique_ptr<tarva_abi_device_s, deleter<tarva_abi_release_device>>;
using program = std::unique_ptr<tarva_abi_program_s, deleter<tarva_abi_release_program>>;
using kernel = std::unique_ptr<tarva_abi_kernel_s, deleter<tarva_abi_release_kernel>>;
using memory = std::unique_ptr<tarva_abi_memory_s, deleter<tarva_abi_release_memory>>;
using error = std::unique_ptr<tarva_abi_error_s, deleter<tarva_abi_free_error>>;
using property = std::unique_ptr<tarva_abi_property_s, deleter<tarva_abi_free_property>>;

inline property child(const property& parent, const char* name) {
  tarva_abi_property_s* found = nullptr;
  tarva_abi_error_s* failure = nullptr;
  const auto code = tarva_abi_get_child_property_by_name(nullptr, parent.get(), name, &found, &failure);
  const error owned(failure);
  if (code != TARVA_ABI_OK)
    throw std::runtime_error(std::string("no property ") + name);
  return property(found);
}

inline outcome read_error(long code, tarva_abi_error_s* from) {
  outcome result{code};
  if (from == nullptr)
    return result;
  const error owned(from);
  tarva_abi_property_s* root = nullptr;
  tarva_abi_error_s* failure = nullptr;
  if (tarva_abi_get_error_root_property(nullptr, from, &root, &failure) != TARVA_ABI_OK)
    throw std::runtime_error("an error object without a root property");
  const property owned_root(root);
  result.type = *static_cast<const std::uint64_t*>(child(owned_root, "EXCEPTION_TYPE")->data);
  result.message = *static_cast<const char* const*>(child(owned_root, "EXCEPTION_MESSAGE")->data);
  return result;
}

// Calls a function that returns a result, with its arguments between `reserved` and `out_error`.
template <auto Function, class... Arguments>
outcome call(Arguments... arguments) {
  tarva_abi_error_s* failure = nullptr;
  const auto code = Function(nullptr, arguments..., &failure);
  return read_error(code, code == TARVA_ABI_OK ? nullptr : failure);
}

// For what has to succeed for the test to make sense.
inline void must(const outcome& result) {
  if (result.code != TARVA_ABI_OK)
    throw std::runtime_error("unexpected failure " + std::to_string(result.code) + ": " + result.message);
}

inline std::vector<device> devices() {
  tarva_abi_device_array_s* array = nullptr;
  must(call<tarva_abi_get_devices>(&array));
  std::vector<device> result;
  for (std::uint64_t i = 0; i < array->count; ++i)
    result.emplace_back(array->devices[i]);
  tarva_abi_free_device_array(nullptr, array);
  return result;
}

template <auto GetRoot, class Handle>
property root(const Handle& of) {
  tarva_abi_property_s* result = nullptr;
  must(call<GetRoot>(of.get(), &result));
  return property(result);
}

inline std::string text(const property& of, std::size_t element = 0) {
  return static_cast<const char* const*>(of->data)[element];
}

template <class T>
inline constexpr tarva_abi_data_type type_of = std::is_same_v<T, std::uint8_t>   ? TARVA_ABI_TYPE_UINT8
                                               : std::is_same_v<T, std::int16_t> ? TARVA_ABI_TYPE_INT16
                                               : std::is_same_v<T, std::int32_t> ? TARVA_ABI_TYPE_INT32
                                               : std::is_same_v<T, std::int64_t> ? TARVA_ABI_TYPE_INT64
                                               : std::is_same_v<T, float>        ? TARVA_ABI_TYPE_FLOAT
                                                                                 : TARVA_ABI_TYPE_NONE;

inline memory allocate(tarva_abi_data_type type, std::uint64_t count) {
  tarva_abi_memory_s* result = nullptr;
  must(call<tarva_abi_memory_allocate_typed>("a test", type, count, &result));
  return memory(result);
}

inline outcome wait(tarva_abi_future_s* future) {
  long code = 1;
  tarva_abi_error_s* failure = nullptr;
  must(call<tarva_abi_wait_future>(future, &code, &failure));
  return read_error(code, failure);
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
  memory result = allocate(type_of<T>, content.size());
  must(write_raw(result, 0, content.size(), content.data()));
  return result;
}

template <class T>
std::vector<T> read(const memory& from, std::uint64_t count, std::uint64_t start = 0) {
  std::vector<T> result(count);
  must(read_raw(from, start, count, result.data()));
  return result;
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
  result.made.reset(record->program);
  result.success = record->success != 0;
  result.log = record->build_log == nullptr ? "" : record->build_log;
  tarva_abi_free_build_result(nullptr, record);
  return ended;
}

inline program compile(const device& on, const std::string& source) {
  build result;
  must(load(on, TARVA_ABI_IR_SOURCE_1_0, source, "", result));
  if (!result.success)
    throw std::runtime_error("build failed: " + result.log);
  return std::move(result.made);
}

inline kernel find_kernel(const program& in, const char* name) {
  tarva_abi_kernel_s* result = nullptr;
  must(call<tarva_abi_get_kernel>(in.get(), name, &result));
  return kernel(result);
}

inline tarva_abi_kernel_argument_s argument(const memory& object) {
  return {TARVA_ABI_ARGUMENT_MEMORY, reinterpret_cast<std::uint64_t>(object.get()), 0};
}
template <class T>
tarva_abi_kernel_argument_s argument(const T& value, tarva_abi_data_type type = type_of<T>) {
  return {TARVA_ABI_ARGUMENT_VALUE, type, reinterpret_cast<std::uint64_t>(&value)};
}
inline tarva_abi_kernel_argument_s local_argument(tarva_abi_data_type type, std::uint64_t count) {
  return {TARVA_ABI_ARGUMENT_LOCAL_MEMORY, type, count};
}
inline tarva_abi_kernel_argument_s null_argument() {
  return {TARVA_ABI_ARGUMENT_NULL, 0, 0};
}

using arguments = std::vector<tarva_abi_kernel_argument_s>;

inline outcome launch(const kernel& called, const arguments& list, const tarva_abi_launch_range_s& range) {
  return call<tarva_abi_kernel_call>(called.get(), list.data(), list.size(), &range);
}

// `count` work-items in one dimension, in groups of `group`.
inline tarva_abi_launch_range_s line(std::uint64_t count, std::uint64_t group = 1, std::uint64_t offset = 0) {
  return {TARVA_ABI_LAUNCH_EXPLICIT, {1, offset, 0, 0, count, 1, 1, group, 1, 1}};
}

} // namespace caller
