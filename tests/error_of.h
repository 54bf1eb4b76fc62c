#pragma once

#include <stdexcept>
#include <string>
#include <typeinfo>

// The words of what the action throws, which has to be an Exception itself, none derived from it.
template <class Exception = std::logic_error, class Action>
std::string error_of(Action action) {
  try {
    action();
  } catch (const Exception& error) {
    return typeid(error) == typeid(Exception) ? error.what() : typeid(error).name();
  }
  return "nothing was thrown";
}
