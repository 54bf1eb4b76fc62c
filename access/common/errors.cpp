// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "access/common/errors.h"

#include <array>
#include <cstddef>
#include <utility>

namespace oryn::skerv::common {
namespace {

// One function for each row of the table: a class cannot be picked by a number, a function can.
using thrower = void (*)();

template <std::int32_t Status>
[[noreturn]] void throw_class() {
  throw status_error<Status>();
}

template <std::size_t... Index>
constexpr std::array<thrower, sizeof...(Index)> make_throwers(std::index_sequence<Index...>) {
  return {&throw_class<status_table[Index].status>...};
}

constexpr auto throwers = make_throwers(std::make_index_sequence<status_table.size()>());

} // namespace

std::string status_message(std::int32_t status) {
  if (status == 0)
    return "Success.";
  const std::size_t index = status_index(status);
  return index < status_table.size() ? status_table[index].message : "Unknown error.";
}

// A row that is missing in the table is a status that an extension or a later version of OpenCL has added.
void throw_status(std::int32_t status) {
  const std::size_t index = status_index(status);
  if (index < throwers.size())
    throwers[index]();
  throw unknown_opencl_error(status);
}

// What an unknown status means nobody knows, so it counts as one that may pass.
bool is_of_the_moment(std::int32_t status) {
  if (status == 0)
    return false;
  const std::size_t index = status_index(status);
  return index >= status_table.size() || status_table[index].base == error_base::runtime;
}

// The texts are fixed: they reach the user in an error object. An unrecoverable error has none of its own.
void throw_transport(std::int32_t code) {
  switch (code) {
  case QV_INVALID_COMMAND_ID:
    throw qv::invalid_command_id("Invalid command ID provided to capability call.", code);
  case QV_UNRECOVERABLE_ERROR:
    throw qv::unrecoverable_error("", code);
  default:
    throw qv::unknown_error("Unknown error code returned by libqv.", code);
  }
}

} // namespace oryn::skerv::common
