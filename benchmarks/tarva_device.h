// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The library on its first device. What is measured are the calls of a C program; all else is done in C++.
#pragma once

#include <cstdint>
#include <tarva.hpp>
#include <vector>

namespace benchmarks {

using numbers = tarva::memory<std::uint32_t>;
using argument_list = std::vector<tarva_abi_kernel_argument_s>;

// Ends the process, with `doing`, if a call has failed.
void check_call(tarva_abi_result result, const char* doing);

const std::vector<tarva::device>& tarva_devices();

// Each waits for the end.
void write(const numbers& to, const void* from, std::uint64_t count);
void read(const numbers& from, void* to, std::uint64_t count);
void copy(const numbers& from, const numbers& to, std::uint64_t count);
void fill(const numbers& what, std::uint32_t value, std::uint64_t count);
void launch(const tarva::kernel& kernel, const argument_list& arguments);

// `count` 32-bit numbers that are resident on the device, in pages that have been touched.
numbers make_resident(std::size_t device, std::uint64_t count);

} // namespace benchmarks
