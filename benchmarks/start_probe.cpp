// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A process that starts, tells how long that took, and ends: with the library, if its path is given, or with OpenCL
// alone. Writes the nanoseconds of the start, the resident kilobytes after it, and the time at which the end began.
#include "benchmarks/comparison.h"
#include "benchmarks/raw_device.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <tarva_abi.h>

namespace {

void start_library(const char* path) {
  void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::exit(1);
  }
  const auto get_devices =
      reinterpret_cast<decltype(&tarva_abi_get_devices)>(dlsym(library, "tarva_abi_get_devices"));
  const auto release_device =
      reinterpret_cast<decltype(&tarva_abi_release_device)>(dlsym(library, "tarva_abi_release_device"));
  const auto free_array =
      reinterpret_cast<decltype(&tarva_abi_free_device_array)>(dlsym(library, "tarva_abi_free_device_array"));
  tarva_abi_device_array_s* devices = nullptr;
  tarva_abi_error_s* error = nullptr;
  if (get_devices(nullptr, &devices, &error) != TARVA_ABI_OK)
    std::exit(1);
  for (std::uint64_t i = 0; i < devices->count; ++i)
    release_device(nullptr, devices->devices[i]);
  free_array(nullptr, devices);
}

long resident_kilobytes() {
  long found = 0;
  std::FILE* status = std::fopen("/proc/self/status", "r");
  char line[256];
  while (status != nullptr && std::fgets(line, sizeof(line), status) != nullptr)
    if (std::strncmp(line, "VmRSS:", 6) == 0)
      found = std::atol(line + 6);
  if (status != nullptr)
    std::fclose(status);
  return found;
}

} // namespace

int main(int argc, char** argv) {
  std::vector<std::unique_ptr<benchmarks::raw_device>> raw;
  const double start = benchmarks::nanoseconds_of([&] {
    if (argc > 1)
      start_library(argv[1]);
    else
      for (cl_device_id device : benchmarks::find_raw_devices())
        raw.push_back(std::make_unique<benchmarks::raw_device>(device));
  });
  const long resident = resident_kilobytes();
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  std::printf("%.0f %ld %lld\n", start, resident,
              static_cast<long long>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()));
  return 0; // `raw` releases what it has
}
