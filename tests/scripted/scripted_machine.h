// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The simulated machine: its devices, the OpenCL objects that live on them, and what is recorded and
// scripted.
#pragma once

#include "tests/scripted/scripted_qv.h"

#include <atomic>
#include <bitset>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <utility>

namespace scripted {

constexpr std::int32_t invalid_value = -30, invalid_device = -33, invalid_context = -34;

// Ends a command with that status.
struct refused {
  std::int32_t status;
};

// Marks the thread as inside.
struct visit {
  visit();
  visit(const visit&) = delete;
  visit& operator=(const visit&) = delete;
  ~visit();
};

struct device {
  device_options options;
  std::size_t index = 0;
  std::int64_t references = 0;
};

struct object {
  virtual ~object() = default;
  device* owner = nullptr;
  const char* kind_name = "";
  int references = 1;
};

struct context : object {
  static constexpr std::int32_t invalid = invalid_context;
  static constexpr const char* kind = "context";
  qv::context_callback notify = nullptr;
  void* user_data = nullptr;
};

struct buffer : object {
  static constexpr std::int32_t invalid = -38;
  static constexpr const char* kind = "buffer";
  explicit buffer(std::size_t size) : data(size, 0xcd) {}
  bytes data;
};

struct event : object {
  static constexpr std::int32_t invalid = -58;
  static constexpr const char* kind = "event";
  std::int32_t status = 3; // CL_QUEUED
  bool profiled = false;
};

struct queue : object {
  static constexpr std::int32_t invalid = -36;
  static constexpr const char* kind = "queue";
  bool on_host = true, profiled = false;
  struct command {
    std::function<void()> run;
    std::shared_ptr<event> done;
    std::int32_t final_status;
  };
  std::vector<command> pending;
};

struct kernel_description {
  std::string name;
  std::vector<argument_kind> parameters; // memory, local or value
  std::vector<std::string> types;
  std::array<std::size_t, 3> required_size{};
};

struct program : object {
  static constexpr std::int32_t invalid = -44;
  static constexpr const char* kind = "program";
  enum class origin { source, binary, il, builtin } from = origin::source;
  std::string text, il, log;
  std::int32_t build_status = -1; // CL_BUILD_NONE
  std::vector<kernel_description> kernels;
  std::map<std::uint32_t, bytes> constants;
};

struct kernel : object {
  static constexpr std::int32_t invalid = -48;
  static constexpr const char* kind = "kernel";
  std::shared_ptr<program> parent;
  kernel_description description;
  std::vector<kernel_argument> arguments;
  std::vector<std::shared_ptr<buffer>> buffers; // by argument
};

// What is to happen at a coming call: of one operation, or of any.
struct plan {
  way how;
  std::optional<qv::operation> operation;
  int countdown;
  std::int32_t value;
  std::function<void()> run{};
  bool lasts = false, has_come = false;
};

class machine {
public:
  static machine& get(); // never destroyed: the library under test calls until the process ends

  // A misuse, and the end of the command, if the handle is not that of a live object of the type.
  template <class T>
  std::shared_ptr<T> find(void* handle) {
    const auto found = objects.find(handle);
    auto result = found == objects.end() ? nullptr : std::dynamic_pointer_cast<T>(found->second);
    if (!result) {
      complain(std::string("use of a handle that is no live ") + T::kind);
      throw refused{T::invalid};
    }
    return result;
  }
  device* find_device(void* handle);
  template <class T>
  void* add(device* owner, std::shared_ptr<T> added) {
    added->owner = owner;
    added->kind_name = T::kind;
    void* handle = added.get();
    objects[handle] = std::move(added);
    return handle;
  }
  void complain(const std::string& what) { misuses.push_back(what); }
  // What is planned in this way for this very call, if anything; counts down what is planned for its operation. Without one
  // it is a call of the five functions beside qv_call_capability.
  std::optional<plan> take_plan(way how, std::optional<qv::operation> operation);
  std::map<std::string, std::int64_t> live() const;

  std::mutex lock;
  std::deque<device> devices;
  std::deque<platform_options> platforms{{}};
  std::int32_t platforms_status = 0;
  std::map<void*, std::shared_ptr<object>> objects;
  std::set<void*> call_handles;
  std::vector<call_record> calls;
  std::vector<plan> plans;
  std::vector<std::string> misuses;
  std::map<std::string, kernel_function> kernels;
  argument_answer argument_status;
  command_answer answer;
  std::uint64_t version = std::uint64_t{1} << 63;
  std::int32_t wait_status = 0;
  bool check_at_exit = false;
  std::bitset<128> failed; // operations, by fail_any(); 127 for the other functions
  std::atomic<void (*)()> delay = nullptr;
};

// One command under way. `lock` is the machine's, held but for the running of enqueued work.
struct session {
  machine& world;
  device& owner;
  std::unique_lock<std::mutex>& lock;
  call_record& log;
};

template <class Record>
std::int32_t answer_query(const bytes& answer, const Record& record) {
  if (record.param_value != nullptr && record.param_value_size < answer.size())
    return invalid_value;
  if (record.param_value != nullptr)
    std::copy(answer.begin(), answer.end(), static_cast<unsigned char*>(record.param_value));
  if (record.param_value_size_ret != nullptr)
    *record.param_value_size_ret = answer.size();
  return 0;
}
// What the test has set, if anything.
std::optional<bytes> own_answer(const device& device, std::uint32_t parameter);
std::optional<bytes> device_info(const device& device, std::uint32_t capability, std::uint32_t parameter);

// The commands, by theme; each returns the OpenCL status. Nothing static of theirs may end with the process
// before the last thread that calls.
using handler = std::int32_t (*)(session&, void* record, std::optional<std::int32_t> planned);
struct handler_row {
  qv::operation operation;
  handler run;
};
extern const std::span<const handler_row> object_handlers, queue_handlers, program_handlers;

// Performs the operation on its record, and returns the transport code.
std::int32_t perform(session& now, qv::operation operation, void* record);

// A release takes effect whatever it reports, so that the balance can still be drawn.
bool is_release(qv::operation operation);

// As a size has to be said, by a number that fits into all; of those the largest stands for something huge.
template <class Size>
Size wrong_size(std::int32_t value) {
  return value == INT32_MAX ? static_cast<Size>(~Size{0} / 3) : static_cast<Size>(value);
}

// A handler of the raw record from a function of the typed one, which also stores the status and keeps the record. A
// planned failure takes the place of the function.
template <auto Function>
struct typed;
template <class Record, std::int32_t (*Function)(session&, Record&)>
struct typed<Function> {
  static std::int32_t handle(session& now, void* raw, std::optional<std::int32_t> planned) {
    auto& record = *static_cast<Record*>(raw);
    std::int32_t status = 0;
    try {
      if (!planned || is_release(now.log.operation))
        status = Function(now, record);
    } catch (const refused& fault) {
      status = fault.status;
    }
    status = planned.value_or(status);
    const auto lie = [&](auto* size) {
      if (const auto wrong = size != nullptr && status == 0
                                 ? now.world.take_plan(way::size, now.log.operation)
                                 : std::nullopt)
        *size = wrong_size<std::remove_pointer_t<decltype(size)>>(wrong->value);
    };
    if constexpr (requires { record.param_value_size_ret; })
      lie(record.param_value_size_ret);
    if constexpr (requires { record.num_kernels_ret; })
      lie(record.num_kernels_ret);
    if constexpr (requires { record.status; })
      record.status = status;
    std::memcpy(now.log.record.data(), raw, sizeof(Record));
    return status;
  }
};

} // namespace scripted

struct qv_call_handle {
  scripted::device* owner;
  std::uint32_t capability;
};
