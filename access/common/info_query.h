// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Reading a parameter of an OpenCL object: a query knows what is asked of whom, and four forms know what to ask in
// which order. Implementations differ in how faithfully they report sizes: some tell 0 for data that they do have,
// some tell another size from one call to the next. Where a report makes no sense, the forms throw
// bad_implementation.
#pragma once

#include "access/common/call_handle.h"
#include "access/common/errors.h"
#include "capability/commands.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace oryn::skerv::common {

// One parameter of one object, as an info command of OpenCL gives it. Made for one reading, on the stack of the
// caller. The objects that it asks about must outlive it.
template <qv::operation Op>
class info_query {
public:
  // `command` is the number of `Op` under the capability of `handle`.
  info_query(qv_call_handle* handle, std::uint64_t command, void* object, [[maybe_unused]] void* device,
             std::uint32_t parameter)
      : handle_(handle), command_(command) {
    record_.param_name = parameter;
    // The records of the info commands differ in which objects they name.
    if constexpr (requires { record_.context; })
      record_.context = object;
    else if constexpr (requires { record_.object; })
      record_.object = object;
    else
      record_.device = object;
    if constexpr (requires {
                    record_.object;
                    record_.device;
                  })
      record_.device = device;
  }

  // Asks once, for as many bytes as `value` has room for. `reported` receives the size that the implementation tells,
  // which may be another. Inlined, like the short forms below, since a tree of properties consists of such readings.
  [[gnu::always_inline]] void ask(std::size_t size, void* value, std::size_t* reported) {
    record_.param_value_size = size;
    record_.param_value = value;
    record_.param_value_size_ret = reported;
    perform(handle_, command_, record_);
  }

  [[gnu::always_inline]] std::size_t ask_size() {
    std::size_t size = 0;
    ask(0, nullptr, &size);
    return size;
  }

private:
  qv_call_handle* handle_;
  std::uint64_t command_;
  qv::record<Op> record_{}; // the status is 0 before each asking, as after each that succeeded
};

// The complaints of the forms about what an implementation reported.
[[noreturn]] void throw_scalar_size(std::size_t expected, std::size_t reported);
[[noreturn]] void throw_array_size(std::size_t count, std::size_t expected, std::size_t reported);
[[noreturn]] void throw_size_changed();
[[noreturn]] void throw_not_divisible(std::size_t reported, std::size_t element_size);
[[noreturn]] void throw_too_many_elements();
[[noreturn]] void throw_absurd_size(std::size_t reported);

// No result of a query is as long. An implementation that tells more has failed, and no memory is asked for.
inline void check_reported_size(std::size_t reported) {
  constexpr std::size_t most_bytes = std::size_t{1} << 30;
  if (reported > most_bytes)
    throw_absurd_size(reported);
}

// The same for handles that are counted before they are given out.
inline void check_reported_count(std::uint64_t count) {
  constexpr std::uint64_t countable = std::numeric_limits<std::size_t>::max() / sizeof(void*);
  check_reported_size(std::min(count, countable) * sizeof(void*));
}

// What the forms of fixed size share. Where no size is told, there is room for twice as much, so that an answer of
// another size is seen instead of cut. Reads exactly sizeof(T) bytes into `value` and returns the size that the
// implementation reported last.
template <class T, class Query>
[[gnu::always_inline]] inline std::size_t read_fixed_size(Query&& query, T& value) {
  static_assert(std::is_trivially_copyable_v<T>);
  std::size_t size = query.ask_size();
  if (size != 0) {
    query.ask(sizeof(T), &value, &size);
  } else {
    std::array<unsigned char, 2 * sizeof(T)> roomy{};
    query.ask(roomy.size(), roomy.data(), &size);
    std::memcpy(&value, roomy.data(), sizeof(T));
  }
  return size;
}

// A number or a handle of 4 or 8 bytes.
template <class T, class Query>
[[gnu::always_inline]] inline T get_scalar_info(Query&& query) {
  static_assert(sizeof(T) == 4 || sizeof(T) == 8);
  T value{};
  const std::size_t size = read_fixed_size(query, value);
  if (size != sizeof(T))
    throw_scalar_size(sizeof(T), size);
  return value;
}

// An array of a length that the standard fixes.
template <class T, std::size_t Count, class Query>
[[gnu::always_inline]] inline std::array<T, Count> get_fixed_array_info(Query&& query) {
  std::array<T, Count> values{};
  const std::size_t size = read_fixed_size(query, values);
  if (size != sizeof(values))
    throw_array_size(Count, sizeof(values), size);
  return values;
}

// A text without its closing zero, in place of what `text` holds, whose memory is used again.
template <class Query>
void read_string_info(Query&& query, std::string& text) {
  text.clear();
  const std::size_t size = query.ask_size();
  if (size == 0)
    return;
  check_reported_size(size);
  text.resize(size);
  std::size_t reported = 0;
  query.ask(size, text.data(), &reported);
  if (reported != size)
    throw_size_changed();
  text.pop_back();
}

template <class Query>
[[gnu::always_inline]] inline std::string get_string_info(Query&& query) {
  std::string text;
  read_string_info(query, text);
  return text;
}

// For implementations that report 0 for existing data: asks with ever larger arrays until one is not filled.
template <class T, class Query>
std::vector<T> get_vector_of_unreported_size(Query&& query) {
  constexpr std::size_t first_count = 100;
  constexpr std::size_t count_limit = std::numeric_limits<std::size_t>::max() / 2 / sizeof(T);
  std::vector<T> values(first_count);
  while (true) {
    const std::size_t capacity = values.size() * sizeof(T);
    std::size_t reported = 0;
    query.ask(capacity, values.data(), &reported);
    check_reported_size(reported);
    if (reported != capacity) {
      if (reported % sizeof(T) != 0)
        throw_not_divisible(reported, sizeof(T));
      values.resize(reported / sizeof(T));
      return values;
    }
    if (values.size() >= count_limit)
      throw_too_many_elements();
    values.resize(values.size() * 2);
  }
}

// An array of any length. Where a size is told, it must be the same the second time.
template <class T, class Query>
std::vector<T> get_vector_info(Query&& query) {
  const std::size_t size = query.ask_size();
  if (size == 0)
    return get_vector_of_unreported_size<T>(query);
  if (size % sizeof(T) != 0)
    throw_not_divisible(size, sizeof(T));
  check_reported_size(size);
  std::vector<T> values(size / sizeof(T));
  std::size_t reported = 0;
  query.ask(size, values.data(), &reported);
  if (reported != size)
    throw_size_changed();
  return values;
}

// The lists that OpenCL packs into one string: names of extensions are parted by blanks, names of kernels by
// semicolons.

// Neither of the two yields an empty string.
std::vector<std::string> split_on_whitespace(std::string_view text);
std::vector<std::string> split_on_semicolon(std::string_view text);

// The same without copies, for values that are only looked at: each part is ended by a zero where it lies in `text`,
// and pointed to.
void split_in_place_on_whitespace(std::string& text, std::vector<const char*>& parts);
void split_in_place_on_semicolon(std::string& text, std::vector<const char*>& parts);

// The reverse: no semicolon follows the last element, and no elements give an empty string.
std::string join_with_semicolon(const std::vector<std::string>& list);

// Whether a device has an extension: true if an element of `list` is `name`, or the beginning of it, whatever the
// case of the letters.
bool has_extension(const std::vector<std::string>& list, std::string_view name);

} // namespace oryn::skerv::common
