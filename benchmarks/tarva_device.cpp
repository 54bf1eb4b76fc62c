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

const std::vector<caller::device>& tarva_devices() {
  static const auto& devices = *new std::vector<caller::device>(caller::devices());
  return devices;
}

void write(const caller::memory& to, const void* from, std::uint64_t count) {
  tarva_abi_future_s* future = nullptr;
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_async_write_memory(nullptr, to.get(), 0, count, from, &future, &error), "A write");
  wait(future);
}

void read(const caller::memory& from, void* to, std::uint64_t count) {
  tarva_abi_future_s* future = nullptr;
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_async_read_memory(nullptr, from.get(), 0, count, to, &future, &error), "A read");
  wait(future);
}

void copy(const caller::memory& from, const caller::memory& to, std::uint64_t count) {
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_copy_memory(nullptr, from.get(), 0, to.get(), 0, count, &error), "A copy");
}

void fill(const caller::memory& what, std::uint32_t value, std::uint64_t count) {
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_fill_memory(nullptr, what.get(), &value, 0, count, &error), "A fill");
}

void launch(const caller::kernel& kernel, const caller::arguments& arguments) {
  static const tarva_abi_launch_range_s range = caller::line(1);
  tarva_abi_error_s* error = nullptr;
  check_call(tarva_abi_kernel_call(nullptr, kernel.get(), arguments.data(), arguments.size(), &range, &error),
             "A launch");
}

caller::memory make_resident(std::size_t device, std::uint64_t count) {
  static auto& touch = *new std::map<std::size_t, caller::kernel>;
  if (touch.count(device) == 0)
    touch.emplace(device, caller::find_kernel(caller::compile(tarva_devices().at(device), kernel_source(1)),
                                              kernel_name(1).c_str()));
  caller::memory made = caller::allocate(TARVA_ABI_TYPE_UINT32, count);
  fill(made, 1, count);
  launch(touch.at(device), {caller::argument(made)});
  fill(made, 2, count);
  return made;
}

} // namespace benchmarks
