// The four ways to read an info parameter. Implementations differ in how faithfully they report sizes: some
// tell 0 for data that they do have, some tell another size from one call to the next.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace oryn::skerv::common {

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

// Reads exactly sizeof(T) bytes into `value` and returns the size that the implementation reported last.
template <typename T, typename Query>
std::size_t read_fixed_size(const Query& query, T& value) {
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

template <typename T, typename Query>
T get_scalar_info(const Query& query) {
  static_assert(sizeof(T) == 4 || sizeof(T) == 8);
  T value{};
  const std::size_t size = read_fixed_size(query, value);
  if (size != sizeof(T))
    throw_scalar_size(sizeof(T), size);
  return value;
}

template <typename T, std::size_t Count, typename Query>
std::array<T, Count> get_fixed_array_info(const Query& query) {
  std::array<T, Count> values{};
  const std::size_t size = read_fixed_size(query, values);
  if (size != sizeof(values))
    throw_array_size(Count, sizeof(values), size);
  return values;
}

// In place of what `text` holds.
template <typename Query>
void read_string_info(const Query& query, std::string& text) {
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

template <typename Query>
std::string get_string_info(const Query& query) {
  std::string text;
  read_string_info(query, text);
  return text;
}

// For implementations that report 0 for existing data: asks with ever larger arrays until one is not filled.
template <typename T, typename Query>
std::vector<T> get_vector_of_unreported_size(const Query& query) {
  constexpr std::size_t first_count = 100;
  constexpr std::size_t count_limit = std::numeric_limits<std::size_t>::max() / 2 / sizeof(T);
  std::vector<T> values(first_count);
  while (true) {
    const std::size_t capacity = values.size() * sizeof(T);
    std::size_t reported = 0;
    query.ask(capacity, values.data(), &reported);
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

template <typename T, typename Query>
std::vector<T> get_vector_info(const Query& query) {
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

} // namespace oryn::skerv::common
