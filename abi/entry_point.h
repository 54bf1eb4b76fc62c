// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the exported functions are made of. Each stands once, in one of exported_*.cpp: the checks of its arguments, their
// conversion to library objects, the work, and the handles that go back, all inside a frame:
//
//   tarva_abi_result tarva_abi_get_devices(void*, tarva_abi_device_array_s** out_devices, tarva_abi_error_s** out_error) {
//     return call_with_result(out_error, [&](tarva_singleton& library) { … });
//   }
//
// The first argument is reserved and never read. Bodies run on the caller's thread, with no lock held. One that throws has
// written none of its out-arguments.
#pragma once

#include "abi/bridge.h"
#include "abi/tarva_singleton.h"
#include "base/end_of_process.h"
#include "base/logging.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace oryn::tarva::library {

// A caller who passes no place for the error gets none.
inline void write_error(tarva_abi_error_s** out_error, tarva_abi_error_s* error) {
  if (out_error)
    *out_error = error;
}

// Turns the exception that is being handled into a result and a handle. If the caller cannot take the handle, it ends here.
inline tarva_abi_result report_exception(tarva_singleton& library, tarva_abi_error_s** out_error,
                                         const std::exception& exception) noexcept {
  log_error("Caught an exception within TARVA that will be converted into an error object: {}",
            exception.what());
  const auto [result, error] = library.convert_exception(std::current_exception());
  write_error(out_error, error);
  if (!out_error && error)
    library.bridge.release_error(error);
  return result;
}

// The frame of the functions that return a result. It lets nothing escape that the body throws, and does not touch the
// library if the gate refuses the call.
template <class Body>
tarva_abi_result call_with_result(tarva_abi_error_s** out_error, const Body& body) {
  const call_gate::permit permit(the_call_gate);
  if (!permit.is_granted) {
    explain_refusal();
    write_error(out_error, nullptr);
    return TARVA_ABI_UNKNOWN_FAILURE;
  }
  tarva_singleton& library = tarva_singleton::get_instance();
  try {
    body(library);
    return TARVA_ABI_OK;
  } catch (const std::bad_alloc&) {
    write_error(out_error, nullptr);
    return TARVA_ABI_OUT_OF_MEMORY;
  } catch (const std::exception& exception) {
    return report_exception(library, out_error, exception);
  } catch (...) {
    log_critical("TARVA caught an unknown exception.");
    write_error(out_error, nullptr);
    return TARVA_ABI_UNKNOWN_FAILURE;
  }
}

// The frame of the functions without a result: what goes wrong is only logged.
template <class Body>
void call_without_result(const Body& body) {
  const call_gate::permit permit(the_call_gate);
  if (!permit.is_granted) {
    explain_refusal();
    return;
  }
  tarva_singleton& library = tarva_singleton::get_instance();
  try {
    body(library);
  } catch (const std::exception& exception) {
    log_error("Caught an exception within TARVA that will not be converted into an error object: {} ",
              exception.what());
  } catch (...) {
    log_critical("TARVA caught an unknown exception.");
  }
}

// For arguments that must not be NULL.
inline void require(const void* argument, const char* message) {
  if (!argument)
    throw std::invalid_argument(message);
}

// For the number of elements in an array of the caller's: no process can hold more bytes than an address offset counts.
template <class Element>
void require_countable(std::uint64_t count, const char* elements) {
  if (count > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(Element))
    throw std::length_error("The number of " + std::string(elements) + " is " + std::to_string(count) +
                            ", but no process can hold as many.");
}

// The root property of any object that has properties.
template <class Record>
tarva_abi_result get_root_property(tarva_abi_error_s** out_error, const Record* handle,
                                   tarva_abi_property_s** out_property, const char* null_message) {
  return call_with_result(out_error, [&](tarva_singleton& library) {
    require(out_property, null_message);
    abi_bridge& bridge = library.bridge;
    const auto object = bridge.get_library_object(handle);
    *out_property = bridge.make_property_handle(object->get_property({"ROOT"}), object);
  });
}

// For assertions about the records of the interface. Callers of other languages lay them out by hand, word by word, so no
// field and no enumerator may ever move.
inline constexpr std::size_t word = 8;

template <class Record>
constexpr bool has_words(std::size_t count) {
  return sizeof(Record) == count * word && alignof(Record) == word && std::is_standard_layout_v<Record>;
}

} // namespace oryn::tarva::library
