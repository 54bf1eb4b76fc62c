// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the tests call: the script, the record and the balance.
#include "tests/scripted/scripted_machine.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace scripted {

namespace {
thread_local int depth = 0;
}

visit::visit() {
  ++depth;
}
visit::~visit() {
  --depth;
}
bool is_inside() {
  return depth != 0;
}

machine& machine::get() {
  static auto* const instance = new machine;
  return *instance;
}

device* machine::find_device(void* handle) {
  for (device& candidate : devices)
    if (&candidate == handle)
      return &candidate;
  complain("use of a handle that is no device");
  throw refused{invalid_device};
}

std::optional<plan> machine::take_plan(way how, std::optional<qv::operation> operation) {
  for (auto one = plans.begin(); one != plans.end(); ++one) {
    if (one->how != how || (one->operation && one->operation != operation) || --one->countdown > 0)
      continue;
    if (!one->operation)
      failed.set(operation ? static_cast<std::size_t>(*operation) : 127);
    one->has_come = true;
    if (one->lasts)
      return *one;
    plan found = std::move(*one);
    plans.erase(one);
    return found;
  }
  return std::nullopt;
}

std::map<std::string, std::int64_t> machine::live() const {
  std::map<std::string, std::int64_t> counts;
  for (const auto& [handle, one] : objects)
    counts[one->kind_name] += one->references;
  for (const device& one : devices)
    if (one.references != 0)
      counts["device"] += one.references;
  if (!call_handles.empty())
    counts["call handle"] = static_cast<std::int64_t>(call_handles.size());
  return counts;
}

namespace {

// Without the machine's lock, so that other threads may come in between.
struct delays {
  explicit delays(session& now) : lock(now.lock), delay(now.world.delay) { run(); }
  delays(const delays&) = delete;
  delays& operator=(const delays&) = delete;
  ~delays() { run(); }
  void run() const {
    if (delay == nullptr)
      return;
    lock.unlock();
    delay();
    lock.lock();
  }
  std::unique_lock<std::mutex>& lock;
  void (*delay)();
};

} // namespace

std::int32_t perform(session& now, qv::operation operation, void* record) {
  if (const auto planned = now.world.take_plan(way::action, operation)) {
    now.lock.unlock();
    planned->run();
    now.lock.lock();
  }
  const delays here(now);
  const auto broken = now.world.take_plan(way::transport, operation);
  if (broken && !is_release(operation))
    return broken->value;
  if (const auto code = now.world.answer ? now.world.answer(operation, record) : std::nullopt)
    return *code;
  const bool has_status = operation != qv::operation::device_of_handle &&
                          operation != qv::operation::get_extension_function_address_for_platform;
  const auto failure = has_status ? now.world.take_plan(way::status, operation) : std::nullopt;
  for (const auto& handlers : {object_handlers, queue_handlers, program_handlers})
    for (const handler_row& row : handlers)
      if (row.operation == operation) {
        row.run(now, record, failure ? std::optional(failure->value) : std::nullopt);
        return broken ? broken->value : 0;
      }
  now.world.complain("a command that is not simulated");
  return -2;
}

bool is_release(qv::operation operation) {
  using enum qv::operation;
  const auto all = {release_command_queue, release_context,    release_device, release_event,
                    release_kernel,        release_mem_object, release_program};
  return std::find(all.begin(), all.end(), operation) != all.end();
}

namespace {

std::unique_lock<std::mutex> locked() {
  return std::unique_lock(machine::get().lock);
}

void add_plan(plan added) {
  const auto guard = locked();
  machine::get().plans.push_back(std::move(added));
}

void report_balance() {
  if (!machine::get().check_at_exit)
    return;
  const auto guard = locked();
  std::vector<std::string> faults = machine::get().misuses;
  for (const auto& [kind, count] : machine::get().live())
    faults.push_back("left at exit: " + std::to_string(count) + " " + kind);
  for (const std::string& fault : faults)
    std::fprintf(stderr, "scripted: %s\n", fault.c_str());
  if (!faults.empty())
    _exit(9);
}

} // namespace

void set_devices(std::vector<device_options> devices) {
  const auto guard = locked();
  auto& all = machine::get().devices;
  all.clear();
  for (device_options& options : devices)
    all.push_back({std::move(options), all.size()});
}

void set_version(std::uint64_t version) {
  machine::get().version = version;
}

void set_platforms(std::vector<platform_options> platforms, std::int32_t status) {
  const auto guard = locked();
  machine::get().platforms.assign(platforms.begin(), platforms.end());
  machine::get().platforms_status = status;
}

void set_kernel(const std::string& name, kernel_function body) {
  const auto guard = locked();
  machine::get().kernels[name] = std::move(body);
}

void set_info(std::size_t device, std::uint32_t parameter, const bytes& answer) {
  const auto guard = locked();
  auto& answers = machine::get().devices.at(device).options.info;
  answers.erase(parameter);
  if (!answer.empty())
    answers[parameter] = answer;
}

void answer_arguments(argument_answer answer) {
  const auto guard = locked();
  machine::get().argument_status = std::move(answer);
}

void answer_commands(command_answer answer) {
  const auto guard = locked();
  machine::get().answer = std::move(answer);
}

void fail_call(qv::operation operation, int nth, std::int32_t status) {
  add_plan({way::status, operation, nth, status});
}

void fail_transport(qv::operation operation, int nth, std::int32_t code) {
  add_plan({way::transport, operation, nth, code});
}

void fail_event(qv::operation operation, int nth, std::int32_t status) {
  add_plan({way::event, operation, nth, status});
}

void before_call(qv::operation operation, int nth, std::function<void()> action) {
  add_plan({way::action, operation, nth, 0, std::move(action)});
}

void fail_waits(std::int32_t status) {
  const auto guard = locked();
  machine::get().wait_status = status;
}

void fail_any(way how, int nth, std::int32_t value, bool lasts) {
  add_plan({how, std::nullopt, nth, value, {}, lasts});
}

bool was_failed(qv::operation operation) {
  const auto guard = locked();
  return machine::get().failed[static_cast<std::size_t>(operation)];
}
bool any_was_failed() {
  const auto guard = locked();
  return machine::get().failed.any();
}

void set_delay(void (*delay)()) {
  machine::get().delay = delay;
}

bool no_failure_left() {
  const auto guard = locked();
  auto& plans = machine::get().plans;
  const bool none = std::none_of(plans.begin(), plans.end(),
                                 [](const plan& one) { return one.how != way::action && !one.has_come; });
  std::erase_if(plans, [](const plan& one) { return one.how != way::action; });
  return none;
}

std::vector<call_record> take_calls() {
  const auto guard = locked();
  return std::exchange(machine::get().calls, {});
}

std::map<std::string, std::int64_t> live_objects() {
  const auto guard = locked();
  return machine::get().live();
}

std::vector<std::string> misuses() {
  const auto guard = locked();
  return machine::get().misuses;
}

void check_at_exit(bool wanted) {
  machine::get().check_at_exit = wanted;
  // Registered before the library under test starts, so that it runs after that library has stopped.
  static const int registered = std::atexit(report_balance);
  static_cast<void>(registered);
}

void raise_context_error(std::size_t device, const char* message, bool with_user_data) {
  std::vector<std::shared_ptr<context>> told;
  {
    const auto guard = locked();
    for (const auto& [handle, one] : machine::get().objects)
      if (auto candidate = std::dynamic_pointer_cast<context>(one);
          candidate && candidate->owner->index == device)
        told.push_back(candidate);
  }
  for (const auto& one : told)
    if (one->notify != nullptr)
      one->notify(message, nullptr, 0, with_user_data ? one->user_data : nullptr);
}

} // namespace scripted
