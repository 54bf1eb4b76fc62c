// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "access/common/info_query.h"

#include <algorithm>
#include <cctype>

namespace oryn::skerv::common {
namespace {

// No locale takes a printable character of ASCII for whitespace, so these need not be asked about.
constexpr auto is_whitespace = [](char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte <= ' ' || byte > '~') && std::isspace(byte) != 0;
};

constexpr auto is_semicolon = [](char c) { return c == ';'; };

// Calls `use` with the place and the length of each part.
template <class Predicate, class User>
void find_parts(std::string_view text, Predicate is_separator, User use) {
  auto begin = text.begin();
  while (true) {
    begin = std::find_if_not(begin, text.end(), is_separator);
    if (begin == text.end())
      return;
    const auto end = std::find_if(begin, text.end(), is_separator);
    const auto place = static_cast<std::size_t>(begin - text.begin());
    const auto length = static_cast<std::size_t>(end - begin);
    begin = end == text.end() ? end : end + 1; // on, since `use` may write over the separator
    use(place, length);
  }
}

// Runs of separators yield nothing, so no part is empty.
template <class Predicate>
std::vector<std::string> split(std::string_view text, Predicate is_separator) {
  std::vector<std::string> parts;
  find_parts(text, is_separator,
             [&](std::size_t begin, std::size_t length) { parts.emplace_back(text.substr(begin, length)); });
  return parts;
}

// Writes a zero behind each part, over the separator or over the text's own zero.
template <class Predicate>
void split_in_place(std::string& text, std::vector<const char*>& parts, Predicate is_separator) {
  find_parts(text, is_separator, [&](std::size_t begin, std::size_t length) {
    text[begin + length] = '\0';
    parts.push_back(text.data() + begin);
  });
}

bool equal_letters(char left, char right) {
  return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
}

} // namespace

// The texts of these reach the user in an error object, so that a vendor can be told what is wrong.

void throw_scalar_size(std::size_t expected, std::size_t reported) {
  throw bad_implementation(
      "OpenCL implementation did not provide expected size of data.  Expected: " + std::to_string(expected) +
      " bytes, but implementation provided " + std::to_string(reported) + " bytes.");
}

void throw_array_size(std::size_t count, std::size_t expected, std::size_t reported) {
  throw bad_implementation(
      "Expected to read an array of " + std::to_string(count) +
      " elements from the OpenCL implementation.  Implementation reported the array to be " +
      std::to_string(reported) + " bytes, but expected the array to be " + std::to_string(expected) +
      " bytes.");
}

void throw_size_changed() {
  throw bad_implementation(
      "The result size for the query changed between the time the size was queried, and data was populated.  Either this query is extremely dynamic, and a bug should be filed against SKERV, or there is a bug in your OpenCL implementation.");
}

void throw_not_divisible(std::size_t reported, std::size_t element_size) {
  throw bad_implementation(
      "Expected to read an array of values from the OpenCL implementation, but the size of the array is not evenly divisible by the size of array elements. Implementation reported size: " +
      std::to_string(reported) + " bytes, each element size is expected to be " +
      std::to_string(element_size) + " bytes.");
}

// By then the array would take half of all the memory that can be addressed.
void throw_too_many_elements() {
  throw bad_implementation(
      "Attempted to work around Khronos public bug #1510, and the number of array values in the result has exceeded the number of bytes representable by size_t / 2.  File a bug.");
}

void throw_absurd_size(std::size_t reported) {
  throw bad_implementation("OpenCL implementation reported a size of " + std::to_string(reported) +
                           " bytes for a query result, which is more than any such result takes.");
}

std::vector<std::string> split_on_whitespace(std::string_view text) {
  return split(text, is_whitespace);
}

std::vector<std::string> split_on_semicolon(std::string_view text) {
  return split(text, is_semicolon);
}

void split_in_place_on_whitespace(std::string& text, std::vector<const char*>& parts) {
  split_in_place(text, parts, is_whitespace);
}

void split_in_place_on_semicolon(std::string& text, std::vector<const char*>& parts) {
  split_in_place(text, parts, is_semicolon);
}

std::string join_with_semicolon(const std::vector<std::string>& list) {
  std::string text;
  for (const std::string& element : list) {
    if (&element != &list.front())
      text += ';';
    text += element;
  }
  return text;
}

bool has_extension(const std::vector<std::string>& list, std::string_view name) {
  return std::any_of(list.begin(), list.end(), [name](const std::string& element) {
    return element.size() <= name.size() &&
           std::equal(element.begin(), element.end(), name.begin(), equal_letters);
  });
}

} // namespace oryn::skerv::common
