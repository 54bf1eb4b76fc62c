// What an action throws, in words.
#pragma once

#include <stdexcept>
#include <string>
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
