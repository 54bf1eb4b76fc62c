// The OpenCL devices of the machine.
#pragma once

#include "capability/kept_objects.h"
#include "capability/lost_device.h"
#include "capability/opencl_functions.h"
#include "capability/quirks.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qv {

struct device_text_entry {
  cl_device_info name;
  std::string text;
};

struct device_number_entry {
  cl_device_info name;
  cl_uint number;
};

struct root_device {
  cl_device_id id = nullptr;
  opencl_version version;
  // Only what the device's platform has.
  opencl_functions cl;
  capability_set capabilities;
  bool has_device_queues = false;
  std::uint64_t local_memory_size = 0;
  qv::quirks quirks;
  // What the device has said of itself, and will go on saying.
  std::vector<device_text_entry> texts;
  std::vector<device_number_entry> numbers;
  // Null if the device has not been tried, or is lost.
  std::shared_ptr<kept_objects> kept;
  // Null if nobody watches it. The other is the same device as long as it is lost.
  std::shared_ptr<device_watch> watch;
  std::shared_ptr<const root_device> when_lost;

  const std::string* find_text(cl_device_info name) const;
  const cl_uint* find_number(cl_device_info name) const;
};

// All devices that can be used, in the order of the loader. Each is offered under `forced` if that holds any
// capability, else under its natural one. What fails while it is looked at is left out. Throws if there is too little
// memory to look at the machine.
std::vector<root_device> find_root_devices(const opencl_functions& cl, const capability_set& forced);

} // namespace qv
