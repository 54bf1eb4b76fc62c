// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "opencl/opencl_device.h"

#include "access/common/opencl_constants.h"
#include "access/opencl/device.h"
#include "base/logging.h"
#include "memory/ranges.h"
#include "objects/library_program.h"
#include "opencl/make_program.h"
#include "opencl/opencl_commands.h"
#include "opencl/opencl_device_command.h"
#include "opencl/opencl_device_work_dispatcher.h"
#include "opencl/opencl_program.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <tuple>

namespace oryn::tarva::library {

namespace {

constexpr const char* builtin_program_name = "Builtin Kernels";

// Called by OpenCL on a thread of its choice; `user_data` is the library_device.
void on_context_error(const char* message, const void*, std::size_t, void* user_data) noexcept {
  if (expected_errors::on_this_thread())
    return;
  if (user_data == nullptr) {
    log_error("Expected callback user_data to not be NULL.");
    return;
  }
  const auto log = [message](const auto& device) {
    if (message == nullptr)
      log_error("OpenCL context error callback triggered for device: {}.  Message is null.", device);
    else
      log_error("OpenCL context error callback triggered for device: {}.  Message: {}.", device, message);
  };
  try {
    log(static_cast<library_device*>(user_data)->get_friendly_summary());
  } catch (...) {
    log(static_cast<const void*>(user_data)); // its address, which the lines of the start tell, too
  }
}

constinit thread_local unsigned expected_error_depth = 0;

// The library, the device's property OBJECT_ID, and the first word of the device's name. There is no room for more, since the
// system cuts the names of threads.
std::string name_of_worker(std::uint64_t identifier, std::string_view device_name) {
  const auto is_of_word = [](char each) {
    return (each >= '0' && each <= '9') || (each >= 'A' && each <= 'Z') || (each >= 'a' && each <= 'z');
  };
  const auto end = std::find_if_not(device_name.begin(), device_name.end(), is_of_word);
  return "tarva-" + std::to_string(identifier) + "-" + std::string(device_name.begin(), end);
}

} // namespace

expected_errors::expected_errors() noexcept {
  ++expected_error_depth;
}

expected_errors::~expected_errors() {
  --expected_error_depth;
}

bool expected_errors::on_this_thread() noexcept {
  return expected_error_depth != 0;
}

template <version V>
opencl_version_device<V>::opencl_version_device(const access_device& device)
    : opencl_device(device.info()), device_(std::make_unique<access_device>(device)) {}

template <version V>
opencl_version_device<V>::~opencl_version_device() = default;

// Asked each time rather than kept: it is needed for log lines and properties only.
template <version V>
std::string opencl_version_device<V>::get_name() const {
  return device_->template get<skerv::opencl::device_parameter::name>();
}

// The worker starts last, when all that it uses is there. What throws fails the start of the library.
template <version V>
void opencl_version_device<V>::initialize() {
  const std::string name = get_name();
  log_info("Begin initialization of OpenCL {} device {} named: {}", version_traits<V>::text,
           static_cast<const void*>(this), name);
  context_ = std::make_unique<skerv::opencl::context<V>>(
      std::vector<std::uint64_t>{}, list_of_this(), &on_context_error, static_cast<library_device*>(this));
  builtin_program_ = make_builtin_program();
  make_default_device_queue();
  little_endian_ = device_->template get<skerv::opencl::device_parameter::endian_little>();
  // The context is held once more while the queues are made.
  auto made = std::make_unique<queues>(skerv::opencl::context<V>(*context_), *device_);
  queues_ = made.get();
  this->set_dispatcher(std::make_unique<device_ir::opencl::opencl_device_work_dispatcher>(std::move(made)));
  try {
    this->get_dispatcher().start(name_of_worker(this->get_unique_identifier(), name));
  } catch (const std::system_error& failure) {
    throw std::runtime_error("There is no thread to be had for the " + get_friendly_short_description() +
                             ": " + failure.code().message() + ".");
  }
  log_info("Completed initialization of OpenCL {} device named: {}", version_traits<V>::text, name);
}

template <version V>
void opencl_version_device<V>::release() {
  log_info("Destroying OpenCL {} device {}", version_traits<V>::text, static_cast<const void*>(this));
  this->get_dispatcher().shutdown();
}

// The text of the log line differs between versions, as it always has.
template <version V>
std::shared_ptr<library_program> opencl_version_device<V>::make_builtin_program() {
  if constexpr (version_traits<V>::has_builtin_kernels) {
    const std::vector<std::string> names =
        device_->template get<skerv::opencl::device_parameter::built_in_kernels>();
    constexpr const char* count_text =
        V == version::v2_0 ? "Detected {} builtin kernels. Creating a program that contains them."
                           : "Detected {} builtin kernels.";
    log_info(count_text, names.size());
    if (!names.empty())
      return std::make_shared<opencl_version_program<V>>(
          true, *this, context_->create_program_with_builtin_kernels(list_of_this(), names),
          builtin_program_name);
  }
  return std::make_shared<empty_program>(true, this->shared_from_this(), builtin_program_name);
}

// Kernels that enqueue kernels themselves need it. Nothing else touches it.
template <version V>
void opencl_version_device<V>::make_default_device_queue() {
  if constexpr (version_traits<V>::has_device_queue) {
    log_info("Creating the default device command-queue.");
    const std::uint32_t size =
        device_->template get<skerv::opencl::device_parameter::queue_on_device_preferred_size>();
    default_device_queue_ =
        std::make_unique<skerv::opencl::device_command_queue<V>>(*context_, *device_, false, size);
  }
}

template <version V>
std::string opencl_version_device<V>::get_friendly_short_description() {
  return std::string("OpenCL ") + version_traits<V>::text + " device named: " + get_name();
}

template <version V>
std::string opencl_version_device<V>::get_friendly_summary() {
  return get_friendly_short_description();
}

template <version V>
std::unique_ptr<device_memory_allocation> opencl_version_device<V>::allocate_memory(data_type type,
                                                                                    std::uint64_t size) {
  using buffer = skerv::opencl::buffer<V>;
  buffer made =
      context_->create_buffer(skerv::common::cl::mem_read_write, size_in_bytes(type, size), nullptr);
  return std::make_unique<opencl_buffer_allocation<buffer>>(this->shared_from_this(), type, size,
                                                            std::move(made));
}

// The buffer goes with the allocation.
template <version V>
void opencl_version_device<V>::free_memory(std::unique_ptr<device_memory_allocation>&) {}

template <version V>
bool opencl_version_device<V>::is_ir_supported(const std::shared_ptr<const ir_header>& header,
                                               std::uint64_t type, const std::vector<std::uint8_t>&,
                                               const std::string&) {
  return takes_ir<V>(*device_, header.get(), type);
}

// A build that fails does not throw; its status is asked for afterwards, and the log in either case.
template <version V>
build_result opencl_version_device<V>::load_ir(const std::shared_ptr<const ir_header>& header,
                                               std::uint64_t type, const std::vector<std::uint8_t>& data,
                                               const std::string& options, const std::string& user_label) {
  constexpr std::int32_t build_success = 0;
  if (!is_ir_supported(header, type, data, options))
    throw std::logic_error("IR is not supported by the device.");
  skerv::opencl::program<V> program = make_program<V>(*context_, *device_, *header, type, data);
  program.build(list_of_this(), options, nullptr, nullptr);
  std::shared_ptr<library_program> made;
  const bool success = program.get_build_status(*device_) == build_success;
  if (success)
    made = std::make_shared<opencl_version_program<V>>(false, *this, program, user_label);
  else
    made = std::make_shared<empty_program>(false, this->shared_from_this(), user_label);
  return build_result(success, std::move(made), program.get_build_log(*device_));
}

template <version V>
std::vector<std::shared_ptr<device_ir::device_command>> opencl_version_device<V>::generate_commands(
    const std::shared_ptr<physical_ir::physical_operation>& operation) {
  return device_ir::opencl::generate_device_command_sequence(operation, *queues_);
}

#define INSTANTIATE(V) template class opencl_version_device<version::V>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

namespace {

template <version V>
using found_devices = std::vector<skerv::opencl::device<V>>;

template <version V>
void log_number(const found_devices<V>& found) {
  log_info("Detected {} OpenCL {} devices.", found.size(), version_traits<V>::text);
}

template <version V>
void append(std::vector<std::shared_ptr<library_device>>& devices, const found_devices<V>& found) {
  for (const auto& each : found)
    devices.push_back(std::make_shared<opencl_version_device<V>>(each));
}

template <version... versions>
std::vector<std::shared_ptr<library_device>> detect(skerv::opencl::version_list<versions...>) {
  // The braces fix the order of the detections.
  const std::tuple<found_devices<versions>...> found{skerv::opencl::find_devices<versions>()...};
  std::vector<std::shared_ptr<library_device>> devices;
  (log_number<versions>(std::get<found_devices<versions>>(found)), ...);
  (append<versions>(devices, std::get<found_devices<versions>>(found)), ...);
  return devices;
}

} // namespace

std::vector<std::shared_ptr<library_device>> detect_devices() {
  return detect(skerv::opencl::all_versions());
}

} // namespace oryn::tarva::library
