// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Does each of the main operations a number of times, on a scripted machine, for counts_test.py to count instructions.
// A call of begin_operation() stands before each; the names are written to the standard output in that order.
#include "tests/device/caller.h"
#include "tests/scripted/scripted_qv.h"

#include <cstdio>
#include <cstdlib>
#include <functional>

// Known to the counter by its name.
extern "C" __attribute__((noinline, visibility("default"))) void begin_operation(const char* name) {
  std::puts(name);
}

namespace {

constexpr int repetitions = 200;

void count(const char* name, const std::function<void()>& operation) {
  operation(); // whatever only the first one does
  begin_operation(name);
  for (int i = 0; i < repetitions; ++i)
    operation();
  begin_operation("");
  // Nothing of these calls is to be remembered by the script.
  scripted::forget_calls();
}

void write_tree(const caller::property& root) {
  const tarva_abi_tree_format_s format{TARVA_ABI_TREE_TEXT, 1, 1, 0, 0, 0, 1};
  char* text = nullptr;
  caller::must(caller::call<tarva_abi_get_property_tree_string>(root.get(), &format, &text));
  tarva_abi_free_property_tree_string(nullptr, text);
}

// A kernel of 64 parameters, memory and values in turn.
std::string many_parameters() {
  std::string list;
  for (int i = 0; i < 32; ++i)
    list += (list.empty() ? "" : ", ") + ("global int* data" + std::to_string(i)) + ", int amount" +
            std::to_string(i);
  return "kernel void many(" + list + ") {}\n";
}

} // namespace

int main() {
  scripted::set_devices({{"counted", {3}}});
  using namespace caller;
  const auto list = devices();
  const std::int32_t number = 7;
  const memory numbers = make(std::vector<std::int32_t>{1, 2, 3, 4});
  const memory others = make(std::vector<std::int32_t>{1, 2, 3, 4});
  const program made = compile(list.front(), "kernel void empty() {}\n"
                                             "kernel void add(global int* data, int amount) {}\n" +
                                                 many_parameters());
  const kernel empty = find_kernel(made, "empty"), add = find_kernel(made, "add"),
               many = find_kernel(made, "many");
  must(launch(add, {argument(numbers), argument(number)}, line(1)));
  must(launch(add, {argument(others), argument(number)}, line(1)));
  std::int32_t storage[4] = {};
  const property root = caller::root<tarva_abi_get_device_root_property>(list.front());

  count("launch of an empty kernel", [&] { must(launch(empty, {}, line(1))); });
  count("launch with two arguments", [&] {
    must(launch(add, {argument(numbers), argument(number)}, line(1)));
  });
  arguments many_arguments;
  for (int i = 0; i < 32; ++i) {
    many_arguments.push_back(argument(numbers));
    many_arguments.push_back(argument(number));
  }
  count("launch with 64 arguments", [&] { must(launch(many, many_arguments, line(1))); });
  count("write", [&] { must(write_raw(numbers, 0, 4, storage)); });
  count("read", [&] { must(read_raw(numbers, 0, 4, storage)); });
  count("fill", [&] { must(fill(numbers, &number, 0, 4)); });
  count("copy", [&] { must(copy(numbers, 0, others, 0, 4)); });
  count("allocation and release", [&] { allocate(TARVA_ABI_TYPE_INT32, 4); });
  count("allocation, first use and release", [&] {
    const memory fresh = allocate(TARVA_ABI_TYPE_INT32, 4);
    must(launch(add, {argument(fresh), argument(number)}, line(1)));
  });
  count("retain and release", [&] {
    tarva_abi_retain_memory(nullptr, numbers.get());
    tarva_abi_release_memory(nullptr, numbers.get());
  });
  count("text tree of a device", [&] { write_tree(root); });
}
