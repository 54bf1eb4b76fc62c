// The library, as a C program would use it, on its first device.
#pragma once

#include "tests/device/caller.h"

#include <cstdint>
#include <string>
#include <vector>

namespace benchmarks {

// Ends the process, with `doing`, if a call has failed.
void check_call(tarva_abi_result result, const char* doing);

const std::vector<caller::device>& tarva_devices();

// Each waits for the end.
void write(const caller::memory& to, const void* from, std::uint64_t count);
void read(const caller::memory& from, void* to, std::uint64_t count);
void copy(const caller::memory& from, const caller::memory& to, std::uint64_t count);
void fill(const caller::memory& what, std::uint32_t value, std::uint64_t count);
void launch(const caller::kernel& kernel, const caller::arguments& arguments);

// `count` 32-bit numbers that are resident on the device, in pages that have been touched.
caller::memory make_resident(std::size_t device, std::uint64_t count);

} // namespace benchmarks
