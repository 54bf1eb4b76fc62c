#include "abi/tarva_singleton.h"

#include "abi/call_gate.h"
#include "opencl/opencl_device.h"
#include "abi/error_conversion.h"
#include "abi/host_threads.h"
#include "base/busy_wait.h"
#include "base/logging.h"
#include "base/process_fault.h"
#include "scheduler/ultra_naive_scheduler.h"
#include "objects/library_device.h"
#include "objects/library_device.h"
#include "properties/device_catalogue.h"
#include "properties/kernel_catalogue.h"
#include "properties/program_catalogue.h"

#include <atomic>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <pthread.h>
#include <sstream>
#include <string>
#include <unistd.h>

namespace oryn::tarva::library {

namespace {

constinit call_gate the_gate;

// How long the end of the process waits for calls of other threads that are about to return.
constexpr std::chrono::milliseconds patience_with_short_calls{100};

constinit std::atomic<bool> patience_is_spent = false;

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

// Whatever the process does while it ends must be refused from here on: the library never came to be. Takes no
// memory, for want of which the start may have failed.
[[noreturn]] void end_failed_start() noexcept {
  std::fflush(stderr);
  the_gate.close();
  limit_exit_handlers(); // they may wait for threads that stand where the library would have started
  std::exit(1);
}

[[noreturn]] void fail_to_start(const char* reason) noexcept {
  log_critical("Failed to initialize the TARVA library: {}", reason);
  std::fprintf(stderr, "Failed to initialize the TARVA library: %s\n", reason);
  end_failed_start();
}

[[noreturn]] void fail_to_start() noexcept {
  log_critical("Failed to initialize the TARVA library.");
  std::fputs("Failed to initialize the TARVA library.\n", stderr);
  end_failed_start();
}

// What the library uses at its end, or what a call may use until then, must be made before it, so that it
// goes after it.
void prepare_what_outlives_the_library() {
  get_logger();
  skerv::get_logger();
  get_device_catalogue();
  get_kernel_catalogue();
  get_program_catalogue();
}

// Holds the library from its first call to the end of the process, or until it is unloaded.
class library_holder {
public:
  library_holder() : process_(getpid()) {
    pthread_atfork(nullptr, nullptr, [] { the_gate.close(); });
    library_ = new (std::nothrow) tarva_singleton;
    if (!library_)
      fail_to_start(std::bad_alloc().what());
  }
  library_holder(const library_holder&) = delete;
  library_holder& operator=(const library_holder&) = delete;

  // A forked child has neither the threads of the library nor a right to its locks, so its calls are refused
  // and it leaves all as it is.
  ~library_holder() {
    if (getpid() != process_)
      return;
    note_end_of_process();
    the_gate.close();
    if (process_has_failed()) {
      // Callers sleep inside for ever, and workers may still be at work: none is waited for, and what they use stays.
      library_->shut_down();
      return;
    }
    the_gate.wait_for_other_threads(patience_with_short_calls);
    library_->shut_down();
    the_gate.wait_for_other_threads(patience_is_spent ? patience_with_short_calls : patience_with_long_calls);
    // A call that is still inside, or that is itself ending the process, keeps the library.
    if (the_gate.is_idle())
      delete library_;
  }

  // For a call of this thread.
  tarva_singleton& get() {
    if (library_->has_devices())
      threads_.note_this_thread();
    return *library_;
  }

private:
  const pid_t process_;
  host_threads threads_;
  tarva_singleton* library_ = nullptr;
};

// Runs before the objects go that a compiler had made when it was registered. The library has not stopped yet: what
// the host's own handlers call until then is served. New calls of other threads only stand back meanwhile, lest they
// get into a compiler that is going.
void let_calls_end() noexcept {
  if (!the_gate.is_open())
    return; // in a forked child, or done already
  note_end_of_process();
  if (!process_has_failed())
    patience_is_spent =
        !the_gate.let_other_threads_leave(patience_with_long_calls, patience_with_short_calls);
}

} // namespace

// Compilers make static objects when they first need them, which therefore go before the library stops, in the
// middle of the calls that it would then wait for. Most are made by the first programs and launches and few later,
// hence the powers of two. Against the end of the process in the middle of those first ones there is no remedy.
void tarva_singleton::note_compilation() noexcept {
  if (std::has_single_bit(++compilations_))
    static_cast<void>(std::atexit(let_calls_end)); // without memory for it the end is as safe as before
}

tarva_singleton& tarva_singleton::get_instance() {
  static library_holder holder;
  return holder.get();
}

call_gate& tarva_singleton::get_call_gate() {
  return the_gate;
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
    log_info("{}", compose_banner());
  read_busy_wait_limit();
  devices_ = detect_devices();
  initialize_devices();
  log_info("Creating the TARVA scheduler.");
  scheduler_ = std::make_shared<ultra_naive_scheduler>([this]() -> const auto& { return devices_; });
  log_info("Initialization of TARVA complete.");
}

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
    bridge_.teardown();
    release_devices();
  } catch (...) {
    // The rest goes with the process.
  }
}

void tarva_singleton::release_devices() {
  if (!process_has_failed())
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

std::pair<tarva_abi_result, tarva_abi_error_s*>
tarva_singleton::convert_exception(const std::exception_ptr& exception) noexcept {
  return library::convert_exception(bridge_, exception);
}

} // namespace oryn::tarva::library
