// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What goes wrong on the way to OpenCL and in OpenCL: one exception class for each transport code of the capability library
// and for each status of the OpenCL standard, and what turns a code and a status into it. The statuses with their texts and
// bases stand in access/common/status_table.h.
#pragma once

#include "access/common/status_table.h"
#include "capability/qv.h"

#include <cstdint>
#include <exception>
#include <string>
#include <type_traits>
#include <utility>

namespace qv {

// A transport code, with its number and a text. It says that a command was not carried out, and nothing of OpenCL.
class qv_error : public std::exception {
public:
  qv_error(std::string message, std::int32_t code) : message_(std::move(message)), code_(code) {}
  const char* what() const noexcept override { return message_.c_str(); }
  std::int32_t get_code() const noexcept { return code_; }

private:
  std::string message_;
  std::int32_t code_;
};

// The capability library can go on: another command may well be carried out.
class recoverable_error : public qv_error {
public:
  using qv_error::qv_error;
};

// The capability library cannot go on.
class unrecoverable_error : public qv_error {
public:
  using qv_error::qv_error;
};

class invalid_command_id : public recoverable_error {
public:
  using recoverable_error::recoverable_error;
};

// A code that the interface does not name.
class unknown_error : public unrecoverable_error {
public:
  using unrecoverable_error::unrecoverable_error;
};

} // namespace qv

namespace oryn::skerv::common {

// Throws the exception class of the transport code, which is not QV_OK.
[[noreturn]] void throw_transport(std::int32_t code);
inline void check_transport(std::int32_t code) {
  if (code != QV_OK)
    throw_transport(code);
}

// What the access layer throws for OpenCL, on whatever thread called it. Each of these holds its own text. They pass
// unchanged up to the exported functions, which turn them into error objects.
class error : public std::exception {
public:
  explicit error(std::string message) : message_(std::move(message)) {}
  const char* what() const noexcept override { return message_.c_str(); }

private:
  std::string message_;
};

// An OpenCL status that the standard names.
class opencl_error : public error {
public:
  opencl_error(std::string message, std::int32_t status) : error(std::move(message)), status_(status) {}
  std::int32_t get_status() const noexcept { return status_; }

private:
  std::int32_t status_;
};

// The call was wrong: the same call will fail again.
class logic_error : public opencl_error {
public:
  using opencl_error::opencl_error;
};

// The call was right, but could not be carried out: a later one may succeed.
class runtime_error : public opencl_error {
public:
  using opencl_error::opencl_error;
};

// A status that the standard does not name.
class unknown_opencl_error : public error {
public:
  explicit unknown_opencl_error(std::int32_t status)
      : error("Unknown OpenCL Error Code: " + std::to_string(status)), status_(status) {}
  std::int32_t get_status() const noexcept { return status_; }

private:
  std::int32_t status_;
};

// The OpenCL implementation breaks a rule of the standard.
class bad_implementation : public error {
public:
  using error::error;
};

// The text of `status`: "Success." for 0, and "Unknown error." for one that the standard does not name.
std::string status_message(std::int32_t status);

// Throws the exception class of `status`, which is not 0.
[[noreturn]] void throw_status(std::int32_t status);

// What follows every command with a status. Returns if it is 0, else throws its exception class.
inline void check_status(std::int32_t status) {
  if (status != 0)
    throw_status(status);
}

// Whether the fault is one of the moment: `status` may be another one when the same is asked again.
bool is_of_the_moment(std::int32_t status);

// The class by which a handler catches all statuses of that kind.
template <std::int32_t Status>
using status_base = std::conditional_t<status_table[status_index(Status)].base == error_base::runtime,
                                       runtime_error, logic_error>;

// The class of one status. A handler names it by its alias below.
template <std::int32_t Status>
class status_error : public status_base<Status> {
public:
  status_error() : status_base<Status>(status_message(Status), Status) {}
};

// By status, from -1 on downward. The names are those of OpenCL's constants without CL_.
using device_not_found = status_error<-1>;
using device_not_available = status_error<-2>;
using compiler_not_available = status_error<-3>;
using mem_object_allocation_failure = status_error<-4>;
using out_of_resources = status_error<-5>;
using out_of_host_memory = status_error<-6>;
using profiling_info_not_available = status_error<-7>;
using mem_copy_overlap = status_error<-8>;
using image_format_mismatch = status_error<-9>;
using image_format_not_supported = status_error<-10>;
using build_program_failure = status_error<-11>;
using map_failure = status_error<-12>;
using misaligned_sub_buffer_offset = status_error<-13>;
using exec_status_error_for_events_in_wait_list = status_error<-14>;
using compile_program_failure = status_error<-15>;
using linker_not_available = status_error<-16>;
using link_program_failure = status_error<-17>;
using device_partition_failed = status_error<-18>;
using kernel_arg_info_not_available = status_error<-19>;
using invalid_value = status_error<-30>;
using invalid_device_type = status_error<-31>;
using invalid_platform = status_error<-32>;
using invalid_device = status_error<-33>;
using invalid_context = status_error<-34>;
using invalid_queue_properties = status_error<-35>;
using invalid_command_queue = status_error<-36>;
using invalid_host_ptr = status_error<-37>;
using invalid_mem_object = status_error<-38>;
using invalid_image_format_descriptor = status_error<-39>;
using invalid_image_size = status_error<-40>;
using invalid_sampler = status_error<-41>;
using invalid_binary = status_error<-42>;
using invalid_build_options = status_error<-43>;
using invalid_program = status_error<-44>;
using invalid_program_executable = status_error<-45>;
using invalid_kernel_name = status_error<-46>;
using invalid_kernel_definition = status_error<-47>;
using invalid_kernel = status_error<-48>;
using invalid_arg_index = status_error<-49>;
using invalid_arg_value = status_error<-50>;
using invalid_arg_size = status_error<-51>;
using invalid_kernel_args = status_error<-52>;
using invalid_work_dimension = status_error<-53>;
using invalid_work_group_size = status_error<-54>;
using invalid_work_item_size = status_error<-55>;
using invalid_global_offset = status_error<-56>;
using invalid_event_wait_list = status_error<-57>;
using invalid_event = status_error<-58>;
using invalid_operation = status_error<-59>;
using invalid_gl_object = status_error<-60>;
using invalid_buffer_size = status_error<-61>;
using invalid_mip_level = status_error<-62>;
using invalid_global_work_size = status_error<-63>;
using invalid_property = status_error<-64>;
using invalid_image_descriptor = status_error<-65>;
using invalid_compiler_options = status_error<-66>;
using invalid_linker_options = status_error<-67>;
using invalid_device_partition_count = status_error<-68>;
using invalid_pipe_size = status_error<-69>;
using invalid_device_queue = status_error<-70>;
using invalid_spec_id = status_error<-71>;
using max_size_restriction_exceeded = status_error<-72>;

} // namespace oryn::skerv::common
