#include "abi/argument_checks.h"
#include "abi/tarva_singleton.h"
#include "base/logging.h"
#include "ir/logical_operation.h"
#include "scheduler/scheduler.h"
#include "ir/logical_operation.h"

#include <stdexcept>

// How operations are handed to the scheduler, and how their end is learnt.
namespace oryn::tarva::library {

namespace {

// The only trace of a failure that no future delivers, so it must not take memory.
void log_failure(const logical_ir::logical_operation& operation, const std::exception_ptr& error) noexcept {
  std::string text;
  try {
    text = operation.to_string();
  } catch (...) {
    // Told without it.
  }
  const char* const request = text.empty() ? "one that there is no memory to describe" : text.c_str();
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& exception) {
    log_error("An operation without a future failed: {}: {}", request, exception.what());
  } catch (...) {
    log_error("An operation without a future failed: {}: {}", request, "Unknown exception.");
  }
}

} // namespace

// The copy keeps the scheduler for as long as the call needs it.
void tarva_singleton::submit(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  const std::shared_ptr<scheduler> receiver = scheduler_;
  receiver->submit(operation);
}

void tarva_singleton::submit_without_future(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  submit(operation);
  if (const std::exception_ptr error = operation->get_error())
    log_failure(*operation, error);
}

tarva_abi_future_s*
tarva_singleton::submit_with_future(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  // First of all, so that a call that has no memory for it has done nothing.
  tarva_abi_future_s* const future = bridge_.make_handle<tarva_abi_future_s>(operation->get_future());
  try {
    submit(operation);
  } catch (...) {
    // Before all: another thread may wait for it by an old handle that had the same address.
    operation->refuse(std::current_exception());
    bridge_.withdraw_future(future);
    throw;
  }
  return future;
}

void tarva_singleton::tarva_abi_wait_future(tarva_abi_future_s* future, long* future_error_code,
                                            tarva_abi_error_s** future_error) {
  require(future_error_code,
          "tarva_abi_wait_future: The argument future_error_code is NULL and a memory location "
          "to return an error code is required.");
  const auto operation = bridge_.get_library_object(future)->get_operation();
  const std::shared_ptr<scheduler> receiver = scheduler_;
  receiver->prepare_wait(operation);
  operation->wait_until_complete();

  const auto [code, error] = convert_exception(operation->get_error());
  try {
    bridge_.release_future(future);
  } catch (...) {
    bridge_.release_error(error); // another thread has ended the future, and has the error
    throw;
  }
  *future_error_code = code;
  if (future_error)
    *future_error = error;
  else
    bridge_.release_error(error);
}

void tarva_singleton::tarva_abi_abandon_future(tarva_abi_future_s* future) {
  bridge_.get_library_object(future);
  bridge_.release_future(future);
}

} // namespace oryn::tarva::library
