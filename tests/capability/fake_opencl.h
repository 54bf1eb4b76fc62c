// An OpenCL in memory, as a table of entry points: it has the platforms and devices that a test describes,
// answers their queries and notes how else it was called.
#pragma once

#include "capability/kept_objects.h"
#include "capability/machine.h"
#include "tests/capability/recording_opencl.h"

#include <cstring>
#include <deque>
#include <map>
#include <new>
#include <string>
#include <vector>

namespace capability_test {

// What may be wrong with a text, or with an object that is to be made.
enum class fault { refused, thrown, grows, absurd };

struct fake_device {
  std::map<cl_uint, std::uint64_t> numbers;
  std::map<cl_uint, std::string> texts;
  std::map<cl_uint, fault> bad_texts{};
  std::map<const void*, fault> bad_objects{}; // by the entry point
  bool refuses_device_queues = false;
};

inline fake_device plain_device(const std::string& version) {
  return {{{CL_DEVICE_AVAILABLE, 1}, {CL_DEVICE_ENDIAN_LITTLE, 1}, {CL_DEVICE_LOCAL_MEM_SIZE, 1024}},
          {{CL_DEVICE_VERSION, version},
           {CL_DEVICE_NAME, "a fake"},
           {CL_DEVICE_VENDOR, ""},
           {CL_DRIVER_VERSION, "1"},
           {CL_DEVICE_PROFILE, "FULL_PROFILE"},
           {CL_DEVICE_EXTENSIONS, "cl_khr_spirit cl_khr_fp64"}}};
}

struct fake_platform {
  std::string name = "Fake";
  std::string version = "OpenCL 3.0 fake";
  std::uint64_t timer = 1;
  cl_int devices_status = CL_SUCCESS;
  cl_uint count_of_devices = 0; // a lie
  std::deque<fake_device> devices{};
  std::deque<fake_device> custom_devices{};
};

struct fake_opencl {
  std::deque<fake_platform> platforms;
  cl_int platforms_status = CL_SUCCESS;
  std::vector<std::uint64_t> queue_words = std::vector<std::uint64_t>(8); // of the queue made last
  std::uintptr_t made_objects = 0;
  int live_objects = 0;
  qv::context_notify notify = nullptr; // of the context made last
  void* user_data = nullptr;
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

inline cl_int bad_text(fault what, void* target, std::size_t* size_ret) {
  if (what == fault::refused)
    return CL_OUT_OF_RESOURCES;
  if (what == fault::thrown)
    throw std::bad_alloc();
  if (size_ret != nullptr)
    *size_ret = what == fault::absurd ? std::size_t{1} << 62 : target == nullptr ? 4 : 5;
  return CL_SUCCESS;
}

inline cl_int device_info(cl_device_id id, cl_uint name, std::size_t size, void* target,
                          std::size_t* size_ret) {
  const auto& device = *reinterpret_cast<fake_device*>(id);
  if (const auto bad = device.bad_texts.find(name); bad != device.bad_texts.end())
    return bad_text(bad->second, target, size_ret);
  if (const auto text = device.texts.find(name); text != device.texts.end())
    return give(text->second.c_str(), text->second.size() + 1, size, target, size_ret);
  if (const auto number = device.numbers.find(name); number != device.numbers.end())
    return give(&number->second, sizeof number->second, size, target, size_ret);
  return CL_INVALID_VALUE;
}

// A new object of the device, unless that is not to be had.
template <typename Object, auto Entry>
Object make_object(cl_device_id id, cl_int* status) {
  const auto& bad = reinterpret_cast<fake_device*>(id)->bad_objects;
  if (const auto found = bad.find(capability_test::id<Entry>); found != bad.end()) {
    if (found->second == fault::thrown)
      throw std::bad_alloc();
    *status = CL_OUT_OF_RESOURCES;
    return nullptr;
  }
  ++fake->live_objects;
  *status = CL_SUCCESS;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): it is only ever compared
  return reinterpret_cast<Object>(++fake->made_objects);
}

template <typename Object>
cl_int release_object(Object) {
  --fake->live_objects;
  return CL_SUCCESS;
}

// The entry points that only note how they were called, and those that answer.
inline qv::opencl_functions fake_functions() {
  qv::opencl_functions result = recording_functions();
  result.get_platform_ids = [](cl_uint count, cl_platform_id* ids, cl_uint* found) -> cl_int {
    return fake->platforms_status != CL_SUCCESS ? fake->platforms_status
                                                : list(fake->platforms, count, ids, found);
  };
  result.get_device_ids = [](cl_platform_id id, cl_device_type type, cl_uint count, cl_device_id* ids,
                             cl_uint* found) -> cl_int {
    auto& platform = *reinterpret_cast<fake_platform*>(id);
    auto& devices = type == CL_DEVICE_TYPE_CUSTOM ? platform.custom_devices : platform.devices;
    const cl_int status =
        platform.devices_status != CL_SUCCESS ? platform.devices_status : list(devices, count, ids, found);
    if (platform.count_of_devices != 0)
      *found = platform.count_of_devices;
    return status;
  };
  result.get_platform_info = platform_info;
  result.get_device_info = device_info;
  result.create_context = [](const cl_context_properties*, cl_uint, const cl_device_id* ids,
                             qv::context_notify notify, void* user_data, cl_int* status) {
    fake->notify = notify;
    fake->user_data = user_data;
    return make_object<cl_context, &cl::create_context>(*ids, status);
  };
  result.create_command_queue_with_properties = [](cl_context, cl_device_id id,
                                                   const cl_queue_properties* words, cl_int* status) {
    fake->queue_words.clear();
    for (; words != nullptr && *words != 0; ++words)
      fake->queue_words.push_back(*words);
    if (reinterpret_cast<fake_device*>(id)->refuses_device_queues && fake->queue_words.size() > 1 &&
        (fake->queue_words[1] & CL_QUEUE_ON_DEVICE) != 0) {
      *status = CL_INVALID_QUEUE_PROPERTIES;
      return cl_command_queue{};
    }
    return make_object<cl_command_queue, &cl::create_command_queue_with_properties>(id, status);
  };
  result.create_command_queue = [](cl_context, cl_device_id id, cl_command_queue_properties bits,
                                   cl_int* status) {
    fake->queue_words.assign(1, bits);
    return make_object<cl_command_queue, &cl::create_command_queue>(id, status);
  };
  result.create_program_with_builtin_kernels = [](cl_context, cl_uint, const cl_device_id* ids, const char*,
                                                  cl_int* status) {
    return make_object<cl_program, &cl::create_program_with_builtin_kernels>(*ids, status);
  };
  result.release_context = release_object<cl_context>;
  result.release_command_queue = release_object<cl_command_queue>;
  result.release_program = release_object<cl_program>;
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
  result.get_kernel_work_group_info = [](cl_kernel, cl_device_id, cl_kernel_work_group_info, std::size_t size,
                                         void* target, std::size_t* size_ret) {
    constexpr std::size_t most = 32;
    return give(&most, sizeof most, size, target, size_ret);
  };
  result.get_kernel_info = [](cl_kernel, cl_kernel_info, std::size_t size, void* target,
                              std::size_t* size_ret) { return give("garbage", 8, size, target, size_ret); };
  return result;
}

} // namespace capability_test
