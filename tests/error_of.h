// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What an action throws, in words, and the record of such words.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>

// Whatever it is.
template <class Action>
std::string message_of(Action action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return {};
}

// It has to be an Exception itself, none derived from it.
template <class Exception = std::logic_error, class Action>
std::string error_of(Action action) {
  try {
    action();
  } catch (const Exception& error) {
    return typeid(error) == typeid(Exception) ? error.what() : typeid(error).name();
  }
  return "nothing was thrown";
}

// Of texts that are on record as they are.
inline std::uint64_t checksum_of(std::string_view text) {
  std::uint64_t sum = 0xcbf29ce484222325;
  for (const char letter : text)
    sum = (sum ^ static_cast<unsigned char>(letter)) * 0x100000001b3;
  return sum;
}
