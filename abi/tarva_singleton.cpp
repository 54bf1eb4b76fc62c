// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "abi/tarva_singleton.h"

#include "abi/error_object.h"
#include "base/logging.h"
#include "base/notifier.h"
#include "base/printable_text.h"
#include "ir/logical_operation.h"
#include "objects/library_device.h"
#include "opencl/opencl_device.h"
#include "properties/device_catalogue.h"
#include "properties/program_and_kernel_catalogues.h"
#include "scheduler/concurrent_scheduler.h"
#include "scheduler/ultra_naive_scheduler.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <sstream>
#include <string>
#include <string_view>

namespace oryn::tarva::library {

namespace {

// Three times the same six stripes, and the words.
std::string compose_banner() {
  const std::string dashes = std::string(59, '-') + '\n';
  const std::string pluses = std::string(59, '+') + '\n';
  const std::string bars = "|||      |||      |||      |||      |||      |||      |||  \n";
  std::ostringstream banner;
  banner << "\n\n";
  for (int stripe = 0; stripe < 3; ++stripe)
    banner << dashes << pluses << bars << dashes << bars << pluses;
  banner << "\n\nTARVA HAS GONE PLAID!\n\nExperimental features are enabled for speed.\n";
  return banner.str();
}

// Printed as well as logged, since the log is silent unless it was asked for. A capability library that could not look at the
// machine gives no reason to others.
[[noreturn]] void fail_to_start(const char* reason) noexcept {
  if (*reason == '\0')
    reason = "libqv.so.0 could not look for devices. With QV_LOG=1 it tells why.";
  log_critical("Failed to initialize the TARVA library: {}", reason);
  std::fputs("Failed to initialize the TARVA library: ", stderr);
  write_escaped(reason, [](std::string_view part) { std::fwrite(part.data(), 1, part.size(), stderr); });
  std::fputs("\n", stderr);
  end_failed_start();
}

[[noreturn]] void fail_to_start() noexcept {
  log_critical("Failed to initialize the TARVA library.");
  std::fputs("Failed to initialize the TARVA library.\n", stderr);
  end_failed_start();
}

// Static objects that calls use, or that the stop uses, must be made before the library, so that they are destroyed after
// it.
void prepare_what_outlives_the_library() {
  get_logger();
  skerv::get_logger();
  get_device_catalogue();
  get_kernel_catalogue();
  get_program_catalogue();
}

// TARVA_SCHEDULER chooses it. Only the default works on one operation at a time.
std::shared_ptr<scheduler> make_scheduler(const device_list& devices) {
  const char* const wanted = secure_getenv("TARVA_SCHEDULER");
  if (wanted != nullptr && wanted == std::string_view("concurrent"))
    return std::make_shared<concurrent_scheduler>(devices);
  if (wanted != nullptr)
    log_warning("TARVA_SCHEDULER is not \"concurrent\", so operations run one at a time: {}", wanted);
  return std::make_shared<ultra_naive_scheduler>(devices);
}

// Without memory for the library itself, or for its members, the process ends as with any other failure of the start.
stoppable_library* start_library() {
  try {
    return new tarva_singleton;
  } catch (const std::exception& exception) {
    fail_to_start(exception.what());
  }
}

// Takes no memory: nothing else tells of a failure that no future delivers.
void log_failure(const logical_ir::logical_operation& operation, const std::exception_ptr& error) noexcept {
  std::string text;
  try {
    text = operation.to_string();
  } catch (...) {
    // The line then stands without it.
  }
  const char* const description = text.empty() ? "one that there is no memory to describe" : text.c_str();
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& exception) {
    log_error("An operation without a future failed: {}: {}", description, exception.what());
  } catch (...) {
    log_error("An operation without a future failed: {}: {}", description, "Unknown exception.");
  }
}

} // namespace

tarva_singleton& tarva_singleton::get_instance() {
  static library_lifetime lifetime(start_library);
  return static_cast<tarva_singleton&>(lifetime.get_library());
}

tarva_singleton::tarva_singleton() {
  log_info("Starting TARVA.");
  try {
    start();
  } catch (const std::exception& exception) {
    fail_to_start(exception.what());
  } catch (...) {
    fail_to_start();
  }
}

void tarva_singleton::start() {
  prepare_what_outlives_the_library();
  log_info("Begin initialization of TARVA.");
  if (secure_getenv("TARVA_LUDICROUS_SPEED_GO"))
    log_info("{}", logging::own_lines{compose_banner()});
  read_busy_wait_limit();
  devices_ = detect_devices();
  initialize_devices();
  log_info("Creating the TARVA scheduler.");
  scheduler_ = make_scheduler(devices_);
  log_info("Initialization of TARVA complete.");
}

// Starts the worker of each device. A device that fails here is a failure of the start: those that cannot be prepared have
// been left out before.
void tarva_singleton::initialize_devices() {
  log_info("Initializing devices....");
  for (std::size_t index = 0; index < devices_.size(); ++index) {
    log_info("Initializing device {} of {}.", index + 1, devices_.size());
    devices_[index]->initialize();
  }
  log_info("Device initialization complete.");
}

void tarva_singleton::shut_down() noexcept {
  try {
    bridge.teardown();
    release_devices();
  } catch (...) {
    // The rest goes with the process.
  }
}

// After a failure of the process no worker is waited for. The handles are gone by now, so each device should have no owner
// but the singleton; the warning tells of another one.
void tarva_singleton::release_devices() {
  if (!process_has_failed)
    for (const auto& device : devices_)
      device->get_dispatcher().wait_until_idle();
  log_info("Releasing devices....");
  for (std::size_t index = 0; index < devices_.size(); ++index) {
    log_info("Releasing device {} of {}.", index + 1, devices_.size());
    const long use_count = devices_[index].use_count();
    if (use_count != 1) {
      log_warning(
          "Current internal reference count of device {} is {}, but we expected a reference count of 1.",
          index, use_count);
    }
    devices_[index]->release();
  }
  log_info("Device release complete.");
  log_info("TARVA has shutdown.");
}

void tarva_singleton::submit_without_future(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  scheduler_->submit(operation);
  if (const std::exception_ptr error = operation->get_error())
    log_failure(*operation, error);
}

tarva_abi_future_s*
tarva_singleton::submit_with_future(const std::shared_ptr<logical_ir::logical_operation>& operation) {
  // First of all, so that a call that has no memory for the handle has done nothing.
  tarva_abi_future_s* const future = bridge.make_handle<tarva_abi_future_s>(operation->get_future());
  try {
    scheduler_->submit(operation);
  } catch (...) {
    // Another thread may be waiting for this future by an old handle that had the same address. It is woken before the
    // handle ends.
    operation->refuse(std::current_exception());
    bridge.withdraw_future(future);
    throw;
  }
  return future;
}

std::pair<tarva_abi_result, tarva_abi_error_s*>
tarva_singleton::convert_exception(const std::exception_ptr& exception) noexcept {
  return library::convert_exception(bridge, exception);
}

} // namespace oryn::tarva::library
