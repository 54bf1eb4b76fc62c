// The bodies of opencl_device.h, compiled once for each version.
#pragma once

#include "base/logging.h"
#include "memory/element_range.h"
#include "memory/opencl_buffer_allocation.h"
#include "objects/empty_program.h"
#include "opencl/device_properties.inl.h"
#include "opencl/expected_errors.h"
#include "opencl/opencl_device.h"
#include "opencl/opencl_program.h"

#include <type_traits>

namespace oryn::tarva::library {

namespace detail {

inline constexpr const char* builtin_program_name = "Builtin Kernels";

// Called by OpenCL on a thread of its choice; `user_data` is the library_device.
inline void on_context_error(const char* message, const void*, std::size_t, void* user_data) noexcept {
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

} // namespace detail

template <version V>
opencl_version_device<V>::opencl_version_device(const access_device& device)
    : device_(std::make_unique<access_device>(device)) {}

template <version V>
opencl_version_device<V>::~opencl_version_device() = default;

template <version V>
std::string opencl_version_device<V>::get_name() const {
  return device_->template get<skerv::opencl::device_parameter::name>();
}

template <version V>
void opencl_version_device<V>::initialize() {
  const std::string name = get_name();
  log_info("Begin initialization of OpenCL {} device {} named: {}", version_traits<V>::text,
           static_cast<const void*>(this), name);
  context_ = std::make_unique<skerv::opencl::context<V>>(std::vector<std::uint64_t>{}, list_of_this(),
                                                         &detail::on_context_error,
                                                         static_cast<library_device*>(this));
  builtin_program_ = make_builtin_program();
  make_default_device_queue();
  little_endian_ = device_->template get<skerv::opencl::device_parameter::endian_little>();
  // The dispatcher is given a reference of its own while it makes its queues.
  this->set_dispatcher(make_work_dispatcher<V>(skerv::opencl::context<V>(*context_), *device_));
  this->get_dispatcher().start();
  log_info("Completed initialization of OpenCL {} device named: {}", version_traits<V>::text, name);
}

template <version V>
void opencl_version_device<V>::release() {
  log_info("Destroying OpenCL {} device {}", version_traits<V>::text, static_cast<const void*>(this));
  this->get_dispatcher().shutdown();
}

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
          true, this->shared_from_this(),
          context_->create_program_with_builtin_kernels(list_of_this(), names), detail::builtin_program_name);
  }
  return std::make_shared<empty_program>(true, this->shared_from_this(), detail::builtin_program_name);
}

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
  constexpr std::uint64_t read_write = 1; // CL_MEM_READ_WRITE
  buffer made = context_->create_buffer(read_write, size_in_bytes(type, size), nullptr);
  return std::make_unique<opencl_buffer_allocation<buffer>>(this->shared_from_this(), type, size,
                                                            std::move(made));
}

// The buffer goes with the allocation.
template <version V>
void opencl_version_device<V>::free_memory(std::unique_ptr<device_memory_allocation>&) {}

} // namespace oryn::tarva::library
