// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// How a kernel takes its arguments, and whether it may be launched with them.
#include "capability/kernels.h"
#include "capability/opencl_queries.h"
#include "capability/root_device.h"

#include <cstring>
#include <utility>

namespace qv {

// The count of removed buffers was read before: what was alive at that count is alive as long as the count stays.
cl_int kernel_object::check_argument(const root_device& device, std::uint32_t index, std::size_t size,
                                     const void* value, std::uint64_t removed_before) const noexcept {
  if (index >= arguments_.size())
    return check_kind(device, parameter::unknown, size, value);
  const parameter wanted = family_->second.parameters[index];
  const cl_int status = check_kind(device, wanted, size, value);
  if (status != CL_SUCCESS || wanted != parameter::buffer || value == nullptr)
    return status;
  cl_mem buffer = nullptr;
  std::memcpy(&buffer, value, sizeof(cl_mem));
  const argument& known = arguments_[index];
  const bool is_alive = buffer == nullptr || (buffer == known.buffer && removed_before == known.seen_alive) ||
                        is_live_buffer(buffer);
  return is_alive ? CL_SUCCESS : CL_INVALID_MEM_OBJECT;
}

// Whether OpenCL's kernel has it already, from its last use: then OpenCL need not be told again. Launches mostly differ from the
// last one of their kernel in few arguments.
bool kernel_object::has_argument(std::uint32_t index, std::size_t size, const void* value,
                                 std::uint64_t removed_before) const noexcept {
  if (index >= arguments_.size() || size == 0 || size != arguments_[index].size || value == nullptr)
    return false;
  cl_mem given = nullptr;
  std::memcpy(&given, value, size);
  const argument& known = arguments_[index];
  const bool may_be_gone =
      removed_before != known.seen_alive && family_->second.parameters[index] != parameter::value;
  return given == known.buffer && !may_be_gone;
}

// Remembers it for the launch, and gives what the caller is told.
cl_int kernel_object::refuse_argument(cl_int status) noexcept {
  was_refused_ = true;
  return is_for_launch_ ? CL_SUCCESS : status;
}

cl_int kernel_object::set_argument(const root_device& device, std::uint32_t index, std::size_t size,
                                   const void* value) noexcept {
  if (kernel == nullptr)
    return CL_SUCCESS; // the launch tells
  const std::uint64_t removed_before = removed_buffers;
  cl_int status = CL_SUCCESS;
  if (!has_argument(index, size, value, removed_before)) {
    status = check_argument(device, index, size, value, removed_before);
    if (status == CL_SUCCESS)
      status = call_or_refuse(device.cl.set_kernel_arg, kernel, index, size, value);
  }
  if (index >= arguments_.size()) { // of which nothing is known, so that no later argument takes its place
    if (status != CL_SUCCESS && is_for_launch_)
      failure_ = as_failure(status);
    return refuse_argument(status);
  }
  argument& set = arguments_[index];
  set.refusal = status;
  set.buffer = nullptr;
  set.size = 0;
  if (status != CL_SUCCESS)
    return refuse_argument(status);
  if (!std::exchange(set.is_set, true))
    ++set_count_;
  if (value != nullptr && size <= sizeof(cl_mem)) {
    std::memcpy(&set.buffer, value, size);
    set.size = size;
  }
  set.seen_alive = removed_before;
  return CL_SUCCESS;
}

// Two threads may both ask; they are told the same.
group_size kernel_object::required_size(const opencl_functions& cl) const {
  {
    const oryn::lock_guard guard(kernels_lock);
    if (family_->second.required_size)
      return *family_->second.required_size;
  }
  if (kernel == nullptr)
    return {};
  const group_size told =
      group_size_in(ask_text(CL_KERNEL_ATTRIBUTES, cl.get_kernel_info, kernel).value_or(""));
  const oryn::lock_guard guard(kernels_lock);
  family_->second.required_size = told;
  return told;
}

cl_int kernel_object::launch_status() const noexcept {
  if (failure_ != CL_SUCCESS)
    return failure_;
  if (was_refused_ && is_for_launch_)
    for (const argument& each : arguments_)
      if (each.refusal != CL_SUCCESS)
        return as_failure(each.refusal);
  // An argument that was not set again is the one of the last use: OpenCL would take it, where for a new kernel it refuses.
  return is_reused_ && set_count_ != arguments_.size() ? CL_INVALID_KERNEL_ARGS : CL_SUCCESS;
}

} // namespace qv
