// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "capability/kernel_arguments.h"

#include "base/thread_annotations.h"
#include "capability/opencl_queries.h"
#include "capability/root_device.h"

#include <algorithm>
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

std::atomic<std::uint64_t> removed_buffers{0};

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
  ++removed_buffers;
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

} // namespace qv
