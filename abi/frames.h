#pragma once

#include "abi/call_gate.h"
#include "abi/tarva_singleton.h"
#include "base/logging.h"

#include <exception>
#include <new>

// What every exported call runs in: nothing thrown leaves it, and once the library has stopped nothing of it
// is touched.
namespace oryn::tarva::library {

inline void write_error(tarva_abi_error_s** out_error, tarva_abi_error_s* error) {
  if (out_error)
    *out_error = error;
}

inline tarva_abi_result report_exception(tarva_singleton& library, tarva_abi_error_s** out_error,
                                         const std::exception& exception) noexcept {
  log_error("Caught an exception within TARVA that will be converted into an error object: {}",
            exception.what());
  const auto [result, error] = library.convert_exception(std::current_exception());
  write_error(out_error, error);
  if (!out_error && error)
    library.release_error(error);
  return result;
}

// The frame of the functions that return a result.
template <auto body, typename... arguments>
tarva_abi_result call_with_result(tarva_abi_error_s** out_error, arguments... values) {
  const call_gate::permit permit(tarva_singleton::get_call_gate());
  if (!permit.is_granted()) {
    write_error(out_error, nullptr);
    return TARVA_ABI_UNKNOWN_FAILURE;
  }
  tarva_singleton& library = tarva_singleton::get_instance();
  try {
    (library.*body)(values...);
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

// The frame of the functions without a result.
template <auto body, typename... arguments>
void call_without_result(arguments... values) {
  const call_gate::permit permit(tarva_singleton::get_call_gate());
  if (!permit.is_granted())
    return;
  tarva_singleton& library = tarva_singleton::get_instance();
  try {
    (library.*body)(values...);
  } catch (const std::exception& exception) {
    log_error("Caught an exception within TARVA that will not be converted into an error object: {} ",
              exception.what());
  } catch (...) {
    log_critical("TARVA caught an unknown exception.");
  }
}

} // namespace oryn::tarva::library
