#include "abi/device_detection.h"

#include "access/opencl/discovery.h"
#include "base/logging.h"
#include "opencl/opencl_device.h"

#include <tuple>

namespace oryn::tarva::library {

namespace {

template <version V>
using found_devices = std::vector<skerv::opencl::device<V>>;

// By version, from 1.0 on.
constexpr const char* number_lines[] = {"Detected {} OpenCL 1.0 devices.", "Detected {} OpenCL 1.1 devices.",
                                        "Detected {} OpenCL 1.2 devices.", "Detected {} OpenCL 2.0 devices.",
                                        "Detected {} OpenCL 2.1 devices.", "Detected {} OpenCL 2.2 devices."};

template <version V>
void log_number(const found_devices<V>& found) {
  log_info(number_lines[skerv::opencl::capability_of(V) - 1], found.size());
}

template <version V>
void append(std::vector<std::shared_ptr<library_device>>& devices, const found_devices<V>& found) {
  for (const auto& each : found)
    devices.push_back(std::make_shared<opencl_version_device<V>>(each));
}

template <version... versions>
std::vector<std::shared_ptr<library_device>> detect() {
  // The braces fix the order of the detections.
  const std::tuple<found_devices<versions>...> found{skerv::opencl::find_devices<versions>()...};
  std::vector<std::shared_ptr<library_device>> devices;
  (log_number<versions>(std::get<found_devices<versions>>(found)), ...);
  (append<versions>(devices, std::get<found_devices<versions>>(found)), ...);
  return devices;
}

} // namespace

std::vector<std::shared_ptr<library_device>> detect_devices() {
  return detect<version::v1_0, version::v1_1, version::v1_2, version::v2_0, version::v2_1, version::v2_2>();
}

} // namespace oryn::tarva::library
