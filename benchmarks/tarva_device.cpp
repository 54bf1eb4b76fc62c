// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "benchmarks/tarva_device.h"

#include "benchmarks/kernels.h"

#include <cstdio>
#include <cstdlib>
#include <map>

namespace benchmarks {

namespace {

void wait(tarva_abi_future_s* future) {
  long code = TARVA_ABI_UNKNOWN_FAILURE;
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_wait_future(nullptr, future, &code, nullptr, &error), "Waiting");
  check_call(code, "A read or write");
}

} // namespace

void check_call(tarva_abi_result result, const char* doing) {
  if (result == TARVA_ABI_OK)
    return;
  std::fprintf(stderr, "%s failed with result %ld.\n", doing, static_cast<long>(result));
  std::exit(1);
}

const std::vector<tarva::device>& tarva_devices() {
  static const auto& devices = *new std::vector<tarva::device>(tarva::devices());
  return devices;
}

void write(const numbers& to, const void* from, std::uint64_t count) {
  tarva_abi_future_s* future = nullptr;
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_async_write_memory(nullptr, to.get(), 0, count, from, &future, &error), "A write");
  wait(future);
}

void read(const numbers& from, void* to, std::uint64_t count) {
  tarva_abi_future_s* future = nullptr;
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_async_read_memory(nullptr, from.get(), 0, count, to, &future, &error), "A read");
  wait(future);
}

void copy(const numbers& from, const numbers& to, std::uint64_t count) {
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_copy_memory(nullptr, from.get(), 0, to.get(), 0, count, &error), "A copy");
}

void fill(const numbers& what, std::uint32_t value, std::uint64_t count) {
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_fill_memory(nullptr, what.get(), &value, 0, count, &error), "A fill");
}

void launch(const tarva::kernel& kernel, const argument_list& arguments) {
  static constexpr auto range = tarva::range::items(1).in_groups_of(1);
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_kernel_call(nullptr, kernel.get(), arguments.data(), arguments.size(), &range.record(),
                                   &error),
             "A launch");
}

numbers make_resident(std::size_t device, std::uint64_t count) {
  static auto& touch = *new std::map<std::size_t, tarva::kernel>;
  if (touch.count(device) == 0)
    touch.emplace(device, tarva_devices().at(device).build(kernel_source(1)).kernel(kernel_name(1)));
  numbers made(count);
  fill(made, 1, count);
  launch(touch.at(device), {tarva::argument(made)});
  fill(made, 2, count);
  return made;
}

} // namespace benchmarks
