// Each allocation of each request fails, on whatever thread it is made, alone or with all that come after it. Then the
// call says so and has done nothing, or the work is done, or the log tells that it was not.
#include "tests/failing_memory.h"
#include "tests/scripted/one_process.h"

#include <array>
#include <atomic>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <unistd.h>

namespace scripted {

namespace {

struct ending {
  long code;
  bool is_done;
};

std::size_t point = 0; // the allocation that fails

// In out-arguments before a call.
char nothing;
template <class T>
T* untouched() {
  return reinterpret_cast<T*>(&nothing);
}

// Memory is short while the function runs, and no longer.
template <auto Function, class... Arguments>
long attempt(Arguments... arguments) {
  auto* failure = untouched<tarva_abi_error_s>();
  failing_allocation = point;
  const long code = Function(nullptr, arguments..., &failure);
  failing_allocation = endless;
  demand(failure == (code == TARVA_ABI_OK ? untouched<tarva_abi_error_s>() : nullptr), 3);
  return code;
}
template <auto Function, class Made, class... Arguments>
long obtain(Made*& made, Arguments... arguments) {
  made = untouched<Made>();
  const long code = attempt<Function>(arguments..., &made);
  if (code != TARVA_ABI_OK)
    demand(std::exchange(made, nullptr) == untouched<Made>(), 4);
  return code;
}

const std::vector<std::int32_t> old_content(4, 1), new_content(4, 7);
const std::int32_t none = 0, six = 6, seven = 7;
const char* const long_name = "add_with_a_name_that_takes_memory";
const std::string text = source + "kernel void " + long_name + "(global int* data, int amount) {}\n";

template <auto Function, class Pointer>
long transfer(const memory& object, Pointer data) {
  tarva_abi_future_s* future = nullptr;
  const long code = obtain<Function>(future, object.get(), std::uint64_t{0}, std::uint64_t{4}, data);
  return future != nullptr ? wait(future).code : code;
}

// What is in the object tells whether it was done. Between the two there is nothing.
ending change(const memory& object, const std::function<long()>& action) {
  must(write_raw(object, 0, 4, old_content.data()));
  const long code = action();
  const auto left = read<std::int32_t>(object, 4);
  demand(left == old_content || left == new_content, 5);
  return {code, left == new_content};
}

// Places are the host and two devices. Each request takes one or two.
struct machine_in_use {
  using place = std::size_t;

  std::vector<caller::device> all = devices();
  program programs[2] = {compile(all[0], text), compile(all[1], text)};
  kernel kernels[2] = {find_kernel(programs[0], long_name), find_kernel(programs[1], long_name)};
  memory objects[3] = {make_at(0), make_at(1), make_at(2)}, sources[3] = {make_at(0), make_at(1), make_at(2)};

  memory make_at(place where) const {
    memory made = make(new_content);
    if (where != 0)
      must(launch(kernels[where - 1], {argument(made), argument(none)}, line(4)));
    return made;
  }

  ending load(place, place) const {
    tarva_abi_build_result_s* result = nullptr;
    const long code = obtain<tarva_abi_load_device_ir>(
        result, all[0].get(), nullptr, TARVA_ABI_IR_SOURCE_1_0, text.data(), text.size(),
        "-an-option-that-takes-memory", "a label that takes it, too");
    const program owned(result != nullptr ? result->program : nullptr);
    const bool is_done = result != nullptr && result->success != 0;
    tarva_abi_free_build_result(nullptr, result);
    return {code, is_done};
  }
  ending get_kernel(place, place) const {
    tarva_abi_kernel_s* result = nullptr;
    const long code = obtain<tarva_abi_get_kernel>(result, programs[0].get(), long_name);
    const kernel owned(result);
    return {code, result && launch(owned, {argument(objects[1]), argument(none)}, line(4)) == outcome()};
  }
  ending allocate(place, place) const {
    tarva_abi_memory_s* result = nullptr;
    const long code = obtain<tarva_abi_memory_allocate_typed>(result, "a label that takes memory",
                                                              TARVA_ABI_TYPE_INT32, std::uint64_t{4});
    const memory owned(result);
    return {code, result && write_raw(owned, 0, 4, old_content.data()) == outcome()};
  }
  ending free(place where, place) const {
    memory freed = make_at(where);
    const auto before = live_objects()["buffer"];
    failing_allocation = point;
    freed.reset();
    failing_allocation = endless;
    demand(live_objects()["buffer"] == before - (where != 0), 6);
    return {TARVA_ABI_OK, !has_failed}; // freed, but the want of memory is told
  }
  ending launch_kernel(place where, place) const {
    const memory moved = make_at(where);
    const arguments list{argument(moved), argument(six)};
    const auto range = line(4);
    return change(moved, [&] {
      return attempt<tarva_abi_kernel_call>(kernels[1].get(), list.data(), list.size(), &range);
    });
  }
  ending read(place where, place) const {
    std::vector<std::int32_t> seen(4);
    const long code = transfer<tarva_abi_async_read_memory, void*>(sources[where], seen.data());
    return {code, seen == new_content};
  }
  ending write(place where, place) const {
    return change(objects[where], [&] {
      return transfer<tarva_abi_async_write_memory, const void*>(objects[where], new_content.data());
    });
  }
  ending fill(place where, place) const {
    return change(objects[where], [&] {
      return attempt<tarva_abi_fill_memory>(objects[where].get(), &seven, std::uint64_t{0}, std::uint64_t{4});
    });
  }
  ending copy(place from, place to) const {
    return change(objects[to], [&] {
      return attempt<tarva_abi_copy_memory>(sources[from].get(), std::uint64_t{0}, objects[to].get(),
                                            std::uint64_t{0}, std::uint64_t{4});
    });
  }
};

const struct {
  ending (machine_in_use::*make)(std::size_t, std::size_t) const;
  std::size_t places, second_places;
} requests[] = {
    {&machine_in_use::load, 1, 1}, {&machine_in_use::get_kernel, 1, 1},    {&machine_in_use::allocate, 1, 1},
    {&machine_in_use::free, 3, 1}, {&machine_in_use::read, 3, 1},          {&machine_in_use::write, 3, 1},
    {&machine_in_use::fill, 3, 1}, {&machine_in_use::launch_kernel, 3, 1}, {&machine_in_use::copy, 3, 3}};

// Until there are no more allocations to fail.
void try_all_points(const std::function<ending()>& make, int log, const std::string& name) {
  for (point = 1, has_failed = true; has_failed; ++point) {
    has_failed = false;
    const auto [code, is_done] = make();
    char lines[4096];
    const ssize_t length = ::read(log, lines, sizeof lines);
    const std::string told(lines, length > 0 ? static_cast<std::size_t>(length) : 0);
    const bool is_right =
        code != TARVA_ABI_OK
            ? code == TARVA_ABI_OUT_OF_MEMORY && has_failed && !is_done &&
                  (told.empty() || failure_lasts) // the work may have failed before the call did
        : is_done
            ? told.empty()
            : has_failed && told.find("std::bad_alloc") != told.npos && told.find("[warning]") == told.npos;
    if (!is_right) // the error stream is the log's
      std::cout << name << ", allocation " << point << ": code " << code
                << (is_done ? ", done\n" : ", not done\n") << told << std::flush;
    demand(is_right, 7);
  }
}

void run_short_of_memory() {
  set_devices({{"one", {1}}, {"two", {3}}});
  set_kernel(long_name, [](const kernel_run& now) {
    for (std::size_t i = 0; i < 4; ++i)
      now.set(0, i, now.get<std::int32_t>(0, i) + now.get<std::int32_t>(1));
  });
  is_exempt = is_inside;
  log_to_console("warn");
  int log[2];
  demand(pipe2(log, O_NONBLOCK) == 0 && dup2(log[1], STDERR_FILENO) >= 0);
  const machine_in_use machine;
  for (const auto& request : requests)
    for (std::size_t first = 0; first < request.places; ++first)
      for (std::size_t second = 0; second < request.second_places; ++second)
        for (const bool lasts : {false, true}) {
          failure_lasts = lasts;
          try_all_points([&] { return (machine.*request.make)(first, second); }, log[0],
                         "request " + std::to_string(&request - requests) + " at " + std::to_string(first) +
                             " and " + std::to_string(second));
        }
}

TEST(memory_shortage, is_told_and_loses_nothing) {
  EXPECT_EXIT(run(run_short_of_memory), ExitedWithCode(0), "");
}

// At the moment of the failure another thread begins to wait by old handles, of which one has the address of the new one.
void refuse_a_read_that_is_waited_for() {
  static std::vector<tarva_abi_future_s*> old(1100); // more than are kept from being used again
  static std::thread waiting;
  alarm(30);
  const memory numbers = make(old_content);
  std::vector<std::int32_t> seen(4);
  before_failure = [] {
    waiting = std::thread([] {
      long ignored = 0;
      for (tarva_abi_future_s* const each : old)
        call<tarva_abi_wait_future>(each, &ignored, nullptr);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  };
  for (point = 1, has_failed = true; has_failed; ++point) {
    for (tarva_abi_future_s*& each : old)
      must(call<tarva_abi_async_read_memory>(numbers.get(), 0, 4, seen.data(), &each));
    for (tarva_abi_future_s* const each : old)
      must(wait(each));
    // The next record shall stand where an old one was.
    std::array<void*, 1000> others{};
    for (void*& place : others)
      if (std::find(old.begin(), old.end(), place = std::malloc(sizeof(tarva_abi_object_kind))) !=
          old.end()) {
        std::free(std::exchange(place, nullptr));
        break;
      }
    has_failed = false;
    transfer<tarva_abi_async_read_memory, void*>(numbers, seen.data());
    if (has_failed)
      waiting.join();
    for (void* const place : others)
      std::free(place);
  }
}

TEST(memory_shortage, of_a_read_keeps_nobody_asleep) {
  EXPECT_EXIT(run(refuse_a_read_that_is_waited_for), ExitedWithCode(0), ::testing::Eq(""));
}

} // namespace

} // namespace scripted
