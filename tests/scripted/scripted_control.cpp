// What the tests call: the script, the record and the balance.
#include "tests/scripted/scripted_machine.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace scripted {

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

std::optional<std::int32_t> machine::planned(planned_failure::way how, qv::operation operation) {
  for (auto failure = failures.begin(); failure != failures.end(); ++failure) {
    if (failure->how != how || failure->operation != operation || --failure->countdown > 0)
      continue;
    const std::int32_t value = failure->value;
    failures.erase(failure);
    return value;
  }
  return std::nullopt;
}

std::function<void()> machine::planned_action_before(qv::operation operation) {
  for (auto action = actions.begin(); action != actions.end(); ++action) {
    if (action->operation != operation || --action->countdown > 0)
      continue;
    auto run = std::move(action->run);
    actions.erase(action);
    return run;
  }
  return {};
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

std::unique_lock<std::mutex> locked() {
  return std::unique_lock(machine::get().lock);
}

void plan(planned_failure::way how, qv::operation operation, int nth, std::int32_t value) {
  const auto guard = locked();
  machine::get().failures.push_back({how, operation, nth, value});
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

void set_kernel(const std::string& name, kernel_function body) {
  const auto guard = locked();
  machine::get().kernels[name] = std::move(body);
}

void set_info(std::size_t device, std::uint32_t parameter, const info_answer& answer) {
  const auto guard = locked();
  machine::get().devices.at(device).options.info[parameter] = answer;
}

void fail_call(qv::operation operation, int nth, std::int32_t status) {
  plan(planned_failure::way::status, operation, nth, status);
}

void fail_transport(qv::operation operation, int nth, std::int32_t code) {
  plan(planned_failure::way::transport, operation, nth, code);
}

void fail_event(qv::operation operation, int nth, std::int32_t status) {
  plan(planned_failure::way::event, operation, nth, status);
}

void before_call(qv::operation operation, int nth, std::function<void()> action) {
  const auto guard = locked();
  machine::get().actions.push_back({operation, nth, std::move(action)});
}

bool no_failure_left() {
  const auto guard = locked();
  return std::exchange(machine::get().failures, {}).empty();
}

std::vector<call_record> take_calls() {
  const auto guard = locked();
  return std::exchange(machine::get().calls, {});
}

void forget_calls() {
  take_calls();
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

void raise_context_error(std::size_t device, const char* message) {
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
      one->notify(message, nullptr, 0, one->user_data);
}

} // namespace scripted
