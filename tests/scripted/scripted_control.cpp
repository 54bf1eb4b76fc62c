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

std::optional<plan> machine::take_plan(way how, qv::operation operation) {
  for (auto one = plans.begin(); one != plans.end(); ++one) {
    if (one->how != how || one->operation != operation || --one->countdown > 0)
      continue;
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

std::int32_t perform(session& now, qv::operation operation, void* record) {
  if (const auto planned = now.world.take_plan(way::action, operation)) {
    now.lock.unlock();
    planned->run();
    now.lock.lock();
  }
  if (const auto failure = now.world.take_plan(way::transport, operation))
    return failure->value;
  if (const auto code = now.world.answer ? now.world.answer(operation, record) : std::nullopt)
    return *code;
  const auto failure = now.world.take_plan(way::status, operation);
  for (const auto& handlers : {object_handlers, queue_handlers, program_handlers})
    for (const handler_row& row : handlers)
      if (row.operation == operation) {
        row.run(now, record, failure ? std::optional(failure->value) : std::nullopt);
        return 0;
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

bool no_failure_left() {
  const auto guard = locked();
  return std::erase_if(machine::get().plans, [](const plan& one) { return one.how != way::action; }) == 0;
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
