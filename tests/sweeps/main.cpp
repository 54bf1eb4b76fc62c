// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Each scenario again and again, each time with another fault, in a process of its own that starts and stops the library.
//
//   sweeps allocations|calls|both|schedules [long] [words of a run]
//
// Without `long` only some of the points and values; with words, as a failure prints them before the colon, only that scenario.
#include "tests/sweeps/scenarios.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string_view>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sweeps {
namespace {

using scripted::was_failed;
using scripted::way;
using op = qv::operation;

// What the processes tell the first one.
struct report {
  bool has_happened;
  std::uint64_t allocations, calls;
  std::int64_t live_allocations;
  char wrong[200]; // what does not hold
};
report* shared = nullptr;

[[noreturn]] void end_wrongly(const char* what) {
  std::string failed;
  for (const qv::command_row& row : qv::command_table)
    if (was_failed(row.op))
      failed += ' ' + std::to_string(static_cast<int>(row.op));
  std::snprintf(shared->wrong, sizeof shared->wrong, "%s; failed operations:%s", what, failed.c_str());
  _exit(3);
}

// The other scenarios are those that a library in use can go through.
constexpr scenario start{"start", nullptr}, stop{"stop", nullptr}, schedule{"schedule", nullptr};

// Which one is run, and on which machine.
struct run_of {
  const scenario* what;
  std::size_t first, second;
  std::pair<std::uint32_t, std::uint32_t> versions;
  std::int64_t live_allocations = 0; // at the end of a run without a fault; not known yet if 0

  std::string text() const {
    return what->name + (" " + std::to_string(first)) + " " + std::to_string(second) + " on " +
           scripted::version_texts[versions.first - 1] + " and " +
           scripted::version_texts[versions.second - 1];
  }
};

// In the process of a run.
struct {
  run_of which;
  fault planned;
  bool has_started, has_ended;
  std::size_t log_read;
  std::int64_t live_before;
} now;
int log_file = -1;

std::string take_log() {
  std::string text(std::size_t{1} << 20, '\0');
  const ssize_t size = pread(log_file, text.data(), text.size(), static_cast<off_t>(now.log_read));
  text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
  now.log_read += text.size();
  return text;
}
bool contains(const std::string& text, std::string_view part) {
  return text.find(part) != text.npos;
}

// What OpenCL and the capability layer have as words for the fault.
std::string_view words_of(const fault& planned) {
  constexpr struct {
    bool is_transport;
    std::int32_t value;
    std::string_view words;
  } all[] = {{false, -2, "Device is not available."},
             {false, -4, "Failed to allocate memory."},
             {false, -5, "Failed to allocate resources on the device."},
             {false, -6, "Failed to allocate memory on the host."},
             {false, -9999, "-9999"},
             {true, -2, "Invalid command ID provided to capability call."},
             {true, 5, "Unknown error code returned by libqv."}};
  for (const auto& [is_transport, value, words] : all)
    if (planned.how != way::size && is_transport == (planned.how == way::transport) && value == planned.value)
      return words;
  return "";
}

// Whether a failure with that code, which says this, is due to what happened. Want of memory may come in the way of describing
// another failure; and the capability library has no words for its own.
bool is_due(long code, const std::string& told) {
  return (allocation_has_failed() &&
          (code == TARVA_ABI_OUT_OF_MEMORY || (code == TARVA_ABI_OK && contains(told, "std::bad_alloc")) ||
           contains(told, words_of({.value = -6})) ||
           contains(told,
                    "Resource temporarily unavailable") || // no thread
           (code == TARVA_ABI_UNKNOWN_FAILURE &&
            contains(told, "that will be converted into an error object")) ||
           (scripted::is_opencl() && contains(told, "libqv.so.0 could not look for devices")))) ||
         (call_has_failed() && code != TARVA_ABI_OUT_OF_MEMORY && contains(told, words_of(now.planned))) ||
         (call_has_failed() && now.planned.how == way::size);
}

void check(const ending& ended, bool is_faulty) {
  std::string log = take_log();
  const std::string told = log + take_messages();
  if (const std::size_t expected = log.find(expected_refusal); expected != log.npos) {
    const std::size_t line = log.rfind('\n', expected) + 1; // 0 if it is the first
    log.erase(line, log.find('\n', expected) + 1 - line);
  }
  const bool has_happened = is_faulty && (allocation_has_failed() || call_has_failed());
  demand(has_happened || (ended.code == TARVA_ABI_OK && ended.is_done && log.empty()),
         "without a fault it works");
  demand(ended.code == TARVA_ABI_OK || !ended.is_done || was_failed(op::get_event_info),
         "what has failed has not been done, unless nobody could see it");
  demand(ended.is_done || ended.code != TARVA_ABI_OK || contains(log, "[error]"), "somebody is told");
  demand(ended.is_done || is_due(ended.code, told), "it is told why");
  demand(ended.code != TARVA_ABI_OUT_OF_MEMORY || !contains(log, "error object"), "no line is needed");
  demand(!contains(log, "[warning]") && !contains(log, "[critical]"), "nothing else is told");
}

// A worker that cannot enqueue or finish ends the process, where the capability library lets it come to that; and so does a
// start that fails. Nothing else may.
bool may_end_process(const std::string& log) {
  if (!now.has_started)
    return contains(log, "Failed to initialize the TARVA library: ") && is_due(TARVA_ABI_OK, log);
  const auto is_hard = [](const qv::command_row& row) {
    return was_failed(row.op) && row.op != op::create_buffer && row.op != op::get_event_info &&
           row.op != op::release_event && row.op != op::release_mem_object && row.op != op::release_kernel;
  };
  return !scripted::is_opencl() && is_due(TARVA_ABI_OK, log) &&
         contains(
             log,
             "[device dispatcher] worker thread encountered an exception.  Aborting program. Exception: ") &&
         std::any_of(qv::command_table.begin(), qv::command_table.end(), is_hard);
}

// Behind the stop, or in a process that the library ends.
void check_what_is_left() {
  disarm();
  shared->has_happened = shared->has_happened || allocation_has_failed() || call_has_failed();
  const std::string log = take_log();
  if (!now.has_ended) {
    demand(may_end_process(log), "the process has no reason to end");
    _exit(0);
  }
  demand(!contains(log, "[warning]") && !contains(log, "[critical]"), "a stop has nothing to tell");
  scripted::take_calls();
  for (const std::string& misuse : scripted::misuses())
    demand(false, misuse.c_str());
  // The capability library asks nothing more of a device that says it is gone.
  const bool is_lost = scripted::is_opencl() && now.planned.value == -2 && was_failed(op::get_device_info);
  for (const auto& [kind, count] : scripted::live_objects())
    demand(is_lost, ("left: " + kind).c_str());
  shared->live_allocations = live_allocations() - now.live_before;
  // What transfers use that nobody saw to their end, at most one of each argument, is left to them.
  const std::int64_t may_be_left = now.which.live_allocations + (was_failed(op::finish) ? 4 : 0);
  demand(
      is_lost || now.which.live_allocations == 0 || shared->live_allocations <= may_be_left,
      ("memory is left: " + std::to_string(shared->live_allocations - now.which.live_allocations)).c_str());
  _exit(0);
}

void work() {
  const scenario& what = *now.which.what;
  if (&what == &start) {
    arm(now.planned);
    const inside_call short_of_memory;
    tarva_abi_release_device(nullptr, nullptr);
    disarm();
    now.has_started = true;
    shared->has_happened = allocation_has_failed() || call_has_failed();
    take_log();
    return;
  }
  if (&what == &schedule) {
    const std::string wrong = run_schedule(static_cast<unsigned>(now.which.first));
    return demand(wrong.empty(), wrong.c_str());
  }
  world machine = use_machine();
  now.has_started = true;
  scripted::take_calls();
  if (&what == &stop)
    return;
  machine.planned = now.planned;
  const ending ended = what.run(machine, now.which.first, now.which.second);
  shared->has_happened = allocation_has_failed() || call_has_failed();
  shared->allocations = allocations_seen();
  shared->calls = scripted::take_calls().size();
  check(ended, true);
  machine.planned = {};
  check(what.run(machine, now.which.first, now.which.second), false);
}

[[noreturn]] void run_here(const run_of& which, const fault& planned) {
  alarm(120);
  dup2(log_file, STDERR_FILENO);
  now = {which, planned, false, false, 0, 0};
  now.live_before = live_allocations();
  set_up_machine(which.versions.first, which.versions.second);
  std::atexit(check_what_is_left); // runs behind the library's
  try {
    work();
  } catch (const std::exception& error) {
    demand(false, error.what());
  }
  now.has_ended = true;
  if (now.which.what == &stop) {
    arm(now.planned);
    static const inside_call short_of_memory;
  }
  std::exit(0);
}

#ifdef TARVA_SANITIZED
constexpr bool is_slow = true;
#else
constexpr bool is_slow = false;
#endif

class sweep {
public:
  sweep(bool is_long, const char* words) : is_long_(is_long), words_(words) {}

  // Each scenario on each machine, or on one of them.
  void over_all(void (sweep::*body)(const run_of&)) {
    constexpr std::pair<std::uint32_t, std::uint32_t> machines[] = {{3, 6}, {1, 5}, {2, 4}};
    std::size_t next = 0;
    std::vector<const scenario*> all{&start, &stop};
    for (const scenario& each : scenarios)
      all.push_back(&each);
    for (const scenario* const what : all)
      for (std::size_t first = 0; first < what->choices; ++first)
        for (std::size_t second = 0; second < what->second_choices; ++second, ++next)
          for (std::size_t machine = 0; machine < std::size(machines); ++machine)
            if (is_long_ || machine == next % std::size(machines)) {
              run_of which{what, first, second, machines[machine]};
              if (contains(which.text(), words_)) {
                run(which, {.allocation = UINT64_MAX, .call = INT32_MAX}); // which do not happen
                which.live_allocations = shared->live_allocations;
                (this->*body)(which);
              }
            }
  }

  // Until there is no more to fail.
  void allocations(const run_of& which) {
    for (const bool lasts : {false, true})
      for (std::uint64_t point = 1; run(which, {.allocation = point, .allocations_last = lasts});
           point += step(point))
        ;
  }

  void calls(const run_of& which) {
    for (const kind& one : kinds)
      for (std::size_t choice = 0; choice < (is_long_ ? 2 * one.values.size() : 1); ++choice)
        for (int point = 1; run(which, nth(one, point, choice + static_cast<std::size_t>(point)));
             point += is_slow ? 5 : 1)
          ;
  }

  void both(const run_of& which) {
    const report clean = *shared;
    const auto below = [&](std::uint64_t bound) { return random_() % std::max<std::uint64_t>(bound, 1); };
    for (int left = is_long_ ? 300 : 10; left > 0; --left) {
      const kind& one = kinds[below(std::size(kinds))];
      fault planned = nth(one, 1 + static_cast<int>(below(clean.calls)), below(1000));
      planned.allocation = 1 + below(clean.allocations);
      planned.allocations_last = below(2) != 0;
      run(which, planned);
    }
  }

  void schedules() {
    constexpr std::pair<std::uint32_t, std::uint32_t> machine{1, 6};
    for (std::size_t seed = 0; seed < (is_long_ ? 2500 : 10); ++seed)
      if (const run_of which{&schedule, seed, 0, machine}; contains(which.text(), words_))
        run(which, {});
  }

  int end() const {
    std::printf("%d runs, %d with a fault, %d wrong\n", runs_, faults_, wrong_);
    return wrong_ == 0 ? 0 : 1;
  }

private:
  struct kind {
    way how;
    std::vector<std::int32_t> values;
  };
  const std::vector<kind> kinds = [] {
    std::vector<kind> all = {{way::status, {-4, -5, -6, -2, -9999}},
                             {way::event, {-5, -4, -6, -2, -9999}},
                             {way::size, {0, 1, -1, INT32_MAX}}};
    if (!scripted::is_opencl()) // which has no transport
      all.push_back({way::transport, {-1, -2, 5}});
    return all;
  }();

  // That call, with the value and the duration that a choice stands for.
  static fault nth(const kind& one, int call, std::size_t choice) {
    return {.call = call,
            .how = one.how,
            .value = one.values[choice / 2 % one.values.size()],
            .calls_last = choice % 2 != 0};
  }
  std::uint64_t step(std::uint64_t point) const { return is_slow ? 11 : is_long_ || point < 30 ? 1 : 7; }

  // Whether the fault has happened.
  bool run(const run_of& which, const fault& planned) {
    const std::string text = which.text() + ": " + planned.text();
    *shared = {};
    static_cast<void>(!ftruncate(log_file, 0));
    lseek(log_file, 0, SEEK_SET);
    const pid_t process = fork();
    if (process == 0)
      run_here(which, planned);
    int status = -1;
    waitpid(process, &status, 0);
    ++runs_;
    faults_ += shared->has_happened;
    if (status != 0 && ++wrong_ <= 20) {
      std::string log(4096, '\0');
      log.resize(static_cast<std::size_t>(std::max<ssize_t>(pread(log_file, log.data(), log.size(), 0), 0)));
      std::printf("%s: %s %d, %s\n%s\n", text.c_str(), WIFSIGNALED(status) ? "signal" : "status",
                  WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status), shared->wrong, log.c_str());
      std::fflush(stdout);
    }
    return shared->has_happened;
  }

  const bool is_long_;
  const std::string words_;
  std::mt19937_64 random_{2022};
  int runs_ = 0, faults_ = 0, wrong_ = 0;
};

int run_sweep(int argc, char** argv) {
  const std::string_view kind = argc > 1 ? argv[1] : "";
  const bool is_long = argc > 2 && std::strcmp(argv[2], "long") == 0;
  sweep all(is_long, argc > 2 + is_long ? argv[2 + is_long] : "");
  shared = static_cast<report*>(
      mmap(nullptr, sizeof *shared, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  log_file = memfd_create("log", 0);
  report_fault = end_wrongly;
  tzset(); // which the first line of a log would do, and keep what it reads
  for (const char* const layer : {"TARVA", "SKERV"}) {
    setenv((std::string(layer) + "_LOG_TARGET").c_str(), "console", 1);
    setenv((std::string(layer) + "_LOG_LEVEL").c_str(), "warn", 1);
  }
  for (const auto& [name, body] :
       {std::pair("allocations", &sweep::allocations), {"calls", &sweep::calls}, {"both", &sweep::both}})
    if (kind == name)
      return all.over_all(body), all.end();
  if (kind == "schedules")
    return all.schedules(), all.end();
  return std::fprintf(stderr, "usage: sweeps allocations|calls|both|schedules [long] [words]\n"), 2;
}

} // namespace
} // namespace sweeps

int main(int argc, char** argv) {
  return sweeps::run_sweep(argc, argv);
}
