// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What overlaps under TARVA_SCHEDULER=concurrent, and that nothing is lost by it. Each case runs in a process of its own, with
// two devices; a kernel on the second of them runs until it is told to end, so that whatever waits for it never ends.
#include "tests/scripted/one_process.h"

#include <atomic>
#include <semaphore>
#include <thread>
#include <unistd.h>

namespace scripted {

namespace {

std::binary_semaphore has_begun(0), may_end(0);

struct busy_device {
  busy_device() {
    setenv("TARVA_SCHEDULER", "concurrent", 1);
    alarm(60);
    must(launch(kernels[1], {argument(kept_busy)}, line(1)));
    set_kernel("flag", [](const kernel_run& now) {
      has_begun.release();
      may_end.acquire();
      now.set(0, 0, std::int32_t{7});
    });
    launcher = std::thread([this] { ended = launch(kernels[1], {argument(kept_busy)}, line(1)); });
    has_begun.acquire();
  }
  void let_it_end() {
    may_end.release();
    launcher.join();
    demand(ended == outcome() && read<std::int32_t>(kept_busy, 1) == counted(1, 7), 3);
  }
  kernel find(std::size_t on, const char* name) const { return find_kernel(compile(all[on], source), name); }

  std::vector<device> all = (setenv("TARVA_SCHEDULER", "concurrent", 1), devices());
  kernel kernels[2] = {find(0, "flag"), find(1, "flag")};
  memory there[2] = {used_on(all[1]), used_on(all[1])};
  memory kept_busy = make(counted(1));
  outcome ended{-1};
  std::thread launcher;
};

void work_beside_a_busy_device() {
  busy_device busy;
  const auto add = busy.find(0, "add");
  const std::int32_t amount = 10;
  const memory numbers = make(counted(4)), copies = make(counted(4));
  must(copy(numbers, 0, copies, 1, 3));
  must(launch(add, {argument(numbers), argument(amount)}, line(4)));
  must(copy(numbers, 0, copies, 0, 1));
  demand(read<std::int32_t>(copies, 4) == std::vector<std::int32_t>{11, 1, 2, 3}, 4);
  busy.let_it_end();
}

// The first device's side of a move or copy is done at once, and that device is free for others then.
void use_a_device_that_waits_for_a_busy_one() {
  busy_device busy;
  const memory moved = used_on(busy.all[0]), here = used_on(busy.all[0]);
  const memory copied[2] = {used_on(busy.all[0]), used_on(busy.all[0])};
  static std::binary_semaphore is_moving(0);
  const auto add = busy.find(1, "add");
  const std::int32_t amount = 10;
  std::vector<std::jthread> movers;
  for (const std::size_t i : {0, 1, 2}) {
    before_call(op::enqueue_read_buffer, 1, [] { is_moving.release(); });
    movers.emplace_back([&, i] {
      must(i == 2 ? launch(add, {argument(moved), argument(amount)}, line(4))
                  : copy(copied[i], 0, busy.there[i], 1, 3));
    });
    is_moving.acquire();
  }
  must(fill(here, &amount, 0, 4));
  demand(read<std::int32_t>(here, 1) == counted(1, 10), 5);
  // Whoever shares the object comes behind, and finds it there.
  std::vector<std::int32_t> seen;
  std::thread reader([&] { seen = read<std::int32_t>(moved, 4); });
  busy.let_it_end();
  movers.clear(); // which joins them
  reader.join();
  demand(seen == read<std::int32_t>(moved, 4) && seen.at(0) > 10, 6);
  for (const memory& each : busy.there)
    demand(read<std::int32_t>(each, 4) == std::vector<std::int32_t>{1, 1, 2, 3}, 7);
}

void ask_for_an_unknown_scheduler() {
  setenv("TARVA_SCHEDULER", "unknown", 1);
  log_to_console("warn");
  const auto all = devices();
  demand(read<std::int32_t>(used_on(all[1]), 4).size() == 4);
}

TEST(concurrent, operations_overlap_and_nothing_is_lost) {
  expect_quiet({CASE(work_beside_a_busy_device), CASE(use_a_device_that_waits_for_a_busy_one)});
}

TEST(concurrent, is_asked_for_by_its_name) {
  EXPECT_EXIT(
      run(ask_for_an_unknown_scheduler), ExitedWithCode(0),
      "\\[warning\\] TARVA_SCHEDULER is not \"concurrent\", so operations run one at a time: unknown\n$");
}

} // namespace

} // namespace scripted
