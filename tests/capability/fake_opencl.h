// An OpenCL in memory, as a table of entry points: it has the platforms and devices that a test describes,
// answers their queries and notes how else it was called.
#pragma once

#include "capability/root_device.h"
#include "tests/capability/recording_opencl.h"

#include <cstring>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace capability_test {

struct fake_device {
  std::map<cl_uint, std::uint64_t> numbers;
  std::map<cl_uint, std::string> texts;
};

struct fake_platform {
  std::string name = "Fake";
  std::string version = "OpenCL 3.0 fake";
  std::uint64_t timer = 1;
  cl_int devices_status = CL_SUCCESS;
  std::deque<fake_device> devices{};
};

struct fake_opencl {
  std::deque<fake_platform> platforms;
  cl_int platforms_status = CL_SUCCESS;
  std::vector<std::uint64_t> queue_words; // of the queue made last
};

inline fake_opencl* fake = nullptr;

inline cl_int give(const void* value, std::size_t value_size, std::size_t size, void* target,
                   std::size_t* size_ret) {
  if (target != nullptr && size < value_size)
    return CL_INVALID_VALUE;
  if (target != nullptr)
    std::memcpy(target, value, value_size);
  if (size_ret != nullptr)
    *size_ret = value_size;
  return CL_SUCCESS;
}

template <typename Handle, typename Fake>
cl_int list(std::deque<Fake>& fakes, cl_uint count, Handle* handles, cl_uint* found) {
  for (cl_uint i = 0; handles != nullptr && i < count && i < fakes.size(); ++i)
    handles[i] = reinterpret_cast<Handle>(&fakes[i]);
  if (found != nullptr)
    *found = static_cast<cl_uint>(fakes.size());
  return fakes.empty() ? CL_DEVICE_NOT_FOUND : CL_SUCCESS;
}

inline cl_int platform_info(cl_platform_id id, cl_uint name, std::size_t size, void* target,
                            std::size_t* size_ret) {
  const auto& platform = *reinterpret_cast<fake_platform*>(id);
  if (name == CL_PLATFORM_HOST_TIMER_RESOLUTION)
    return give(&platform.timer, sizeof platform.timer, size, target, size_ret);
  const std::string& text = name == CL_PLATFORM_NAME ? platform.name : platform.version;
  return give(text.c_str(), text.size() + 1, size, target, size_ret);
}

inline cl_int device_info(cl_device_id id, cl_uint name, std::size_t size, void* target,
                          std::size_t* size_ret) {
  const auto& device = *reinterpret_cast<fake_device*>(id);
  if (const auto text = device.texts.find(name); text != device.texts.end())
    return give(text->second.c_str(), text->second.size() + 1, size, target, size_ret);
  if (const auto number = device.numbers.find(name); number != device.numbers.end())
    return give(&number->second, sizeof number->second, size, target, size_ret);
  return CL_INVALID_VALUE;
}

// The entry points that only note how they were called, and those that answer.
inline qv::opencl_functions fake_functions() {
  qv::opencl_functions result = recording_functions();
  result.get_platform_ids = [](cl_uint count, cl_platform_id* ids, cl_uint* found) -> cl_int {
    return fake->platforms_status != CL_SUCCESS ? fake->platforms_status
                                                : list(fake->platforms, count, ids, found);
  };
  result.get_device_ids = [](cl_platform_id id, cl_device_type, cl_uint count, cl_device_id* ids,
                             cl_uint* found) -> cl_int {
    auto& platform = *reinterpret_cast<fake_platform*>(id);
    return platform.devices_status != CL_SUCCESS ? platform.devices_status
                                                 : list(platform.devices, count, ids, found);
  };
  result.get_platform_info = platform_info;
  result.get_device_info = device_info;
  result.create_command_queue_with_properties = [](cl_context, cl_device_id, const cl_queue_properties* words,
                                                   cl_int* status) {
    fake->queue_words.clear();
    for (; *words != 0; ++words)
      fake->queue_words.push_back(*words);
    *status = CL_SUCCESS;
    return reinterpret_cast<cl_command_queue>(fake);
  };
  result.create_command_queue = [](cl_context, cl_device_id, cl_command_queue_properties bits,
                                   cl_int* status) {
    fake->queue_words = {bits};
    *status = CL_SUCCESS;
    return reinterpret_cast<cl_command_queue>(fake);
  };
  // Every kernel takes a buffer, a value, local memory, an image, a sampler and a queue.
  result.get_kernel_arg_info = [](cl_kernel, cl_uint index, cl_kernel_arg_info name, std::size_t size,
                                  void* target, std::size_t* size_ret) -> cl_int {
    constexpr cl_uint qualifiers[] = {CL_KERNEL_ARG_ADDRESS_GLOBAL,  CL_KERNEL_ARG_ADDRESS_PRIVATE,
                                      CL_KERNEL_ARG_ADDRESS_LOCAL,   CL_KERNEL_ARG_ADDRESS_GLOBAL,
                                      CL_KERNEL_ARG_ADDRESS_PRIVATE, CL_KERNEL_ARG_ADDRESS_PRIVATE};
    const std::string types[] = {"image_like*", "long", "int*", "image2d_t", "sampler_t", "queue_t"};
    if (index >= std::size(types))
      return CL_INVALID_ARG_INDEX;
    return name == CL_KERNEL_ARG_TYPE_NAME
               ? give(types[index].c_str(), types[index].size() + 1, size, target, size_ret)
               : give(&qualifiers[index], sizeof(cl_uint), size, target, size_ret);
  };
  result.get_kernel_info = [](cl_kernel, cl_kernel_info, std::size_t size, void* target,
                              std::size_t* size_ret) { return give("garbage", 8, size, target, size_ret); };
  return result;
}

} // namespace capability_test
