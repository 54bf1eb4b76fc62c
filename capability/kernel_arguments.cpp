// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/kernel_arguments.h"

#include "base/thread_annotations.h"
#include "capability/kernels.h"
#include "capability/opencl_queries.h"
#include "capability/root_device.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>
#include <new>
#include <unordered_set>
#include <utility>

namespace qv {
namespace {

// The set is there as long as any buffer is, so that it needs neither a constructor at loading nor a destructor at the
// end, when other threads may still ask. Nothing keeps an implementation from giving out an address twice.
oryn::mutex buffers_lock;
std::unordered_multiset<cl_mem>* live_buffers TARVA_GUARDED_BY(buffers_lock) = nullptr;
// How often a buffer was removed: what was alive at some count is alive as long as the count stays. A launch that sets the
// same buffers as the last one needs no look-up then.
std::atomic<std::uint64_t> removed_count{0};

template <class Value>
bool ask(const opencl_functions& cl, cl_kernel kernel, cl_uint index, cl_kernel_arg_info name, Value& value) {
  return ask_value(value, name, cl.get_kernel_arg_info, kernel, index) == CL_SUCCESS;
}

// OpenCL names the address space of a parameter, and its type as the source has it. A parameter without an address space is
// a value, unless its type says otherwise. Images, samplers and queues are told by their types. Those names are short; a
// longer one does not fit, and is none of them.
parameter kind_of(const opencl_functions& cl, cl_kernel kernel, cl_uint index) {
  cl_kernel_arg_address_qualifier address = 0;
  if (!ask(cl, kernel, index, CL_KERNEL_ARG_ADDRESS_QUALIFIER, address))
    return parameter::unknown;
  if (address == CL_KERNEL_ARG_ADDRESS_LOCAL)
    return parameter::local_memory;
  std::array<char, 64> text{};
  const bool is_named = ask(cl, kernel, index, CL_KERNEL_ARG_TYPE_NAME, text) && text.back() == '\0';
  const std::string_view type(is_named ? text.data() : "");
  if (type == "sampler_t")
    return parameter::sampler;
  if (type == "queue_t")
    return parameter::device_queue;
  if (address == CL_KERNEL_ARG_ADDRESS_PRIVATE)
    return parameter::value;
  if (address != CL_KERNEL_ARG_ADDRESS_GLOBAL && address != CL_KERNEL_ARG_ADDRESS_CONSTANT)
    return parameter::unknown;
  const bool is_image = type.substr(0, 5) == "image" && type.find('*') == std::string_view::npos;
  return is_image ? parameter::image : parameter::buffer;
}

} // namespace

bool add_live_buffer(cl_mem buffer) noexcept {
  try {
    const oryn::lock_guard guard(buffers_lock);
    if (live_buffers == nullptr)
      live_buffers = new std::unordered_multiset<cl_mem>;
    live_buffers->insert(buffer);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void remove_live_buffer(cl_mem buffer) noexcept {
  const oryn::lock_guard guard(buffers_lock);
  ++removed_count;
  if (live_buffers == nullptr)
    return;
  if (const auto found = live_buffers->find(buffer); found != live_buffers->end())
    live_buffers->erase(found);
  if (live_buffers->empty()) {
    delete live_buffers;
    live_buffers = nullptr;
  }
}

bool is_live_buffer(cl_mem value) noexcept {
  const oryn::lock_guard guard(buffers_lock);
  return live_buffers != nullptr && live_buffers->count(value) != 0;
}

std::optional<std::vector<parameter>> parameters_of(const opencl_functions& cl, cl_kernel kernel) {
  cl_uint count = 0;
  constexpr cl_uint most = 1 << 16; // no kernel has as many: then the number is none
  if (ask_value(count, CL_KERNEL_NUM_ARGS, cl.get_kernel_info, kernel) != CL_SUCCESS || count > most)
    return std::nullopt;
  std::vector<parameter> kinds(count, parameter::unknown);
  for (cl_uint index = 0; index < count; ++index) {
    kinds[index] = kind_of(cl, kernel, index);
    if (kinds[index] == parameter::unknown)
      break; // it does not tell of the others, either
  }
  return kinds;
}

// The text is the source's own in part, so blanks and brackets may stand anywhere between the numbers.
group_size group_size_in(std::string_view attributes) {
  constexpr std::string_view attribute = "reqd_work_group_size";
  constexpr std::string_view between = " \t\n,(";
  const std::size_t found = attributes.find(attribute);
  if (found == std::string_view::npos)
    return {};
  attributes.remove_prefix(found + attribute.size());
  group_size sizes{};
  for (std::size_t& size : sizes) {
    const std::size_t start = std::min(attributes.find_first_not_of(between), attributes.size());
    attributes.remove_prefix(start);
    const auto [end, fault] = std::from_chars(attributes.data(), attributes.data() + attributes.size(), size);
    if (fault != std::errc() || size == 0)
      return {};
    attributes.remove_prefix(static_cast<std::size_t>(end - attributes.data()));
  }
  return sizes;
}

// A null value, an image and a sampler each end the process on one implementation or another, whatever their size is. Local
// memory comes as a size without a value.
cl_int check_kind(const root_device& device, parameter wanted, std::size_t size, const void* value) noexcept {
  switch (wanted) {
  case parameter::value:
    return value == nullptr ? CL_INVALID_ARG_VALUE : CL_SUCCESS;
  case parameter::buffer:
    return size != sizeof(cl_mem) ? CL_INVALID_ARG_SIZE : CL_SUCCESS;
  case parameter::local_memory:
    if (value != nullptr)
      return CL_INVALID_ARG_VALUE;
    break;
  // These are known by their kind alone: no command here can make one, so that no argument is right.
  case parameter::image:
    return CL_INVALID_MEM_OBJECT;
  case parameter::sampler:
    return CL_INVALID_SAMPLER;
  case parameter::device_queue:
    return CL_INVALID_DEVICE_QUEUE;
  case parameter::unknown:
    break;
  }
  if (value == nullptr && device.quirks.asserts_on_large_local_arguments && size > device.local_memory_size)
    return CL_OUT_OF_RESOURCES;
  return CL_SUCCESS;
}

// How a kernel takes its arguments, and whether it may be launched with them.

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
  const std::uint64_t removed_before = removed_count;
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
