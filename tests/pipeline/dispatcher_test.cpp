// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The order in which a worker runs what it is given, seen in the record of the capability library. What callers cannot bring
// about: lists that are all there before the worker wakes, and signals at chosen moments.
#include "access/opencl/commands.h"
#include "access/opencl/device.h"
#include "ir/dag.h"
#include "ir/device_command.h"
#include "ir/logical_operation.h"
#include "ir/physical_operation.h"
#include "memory/library_memory.h"
#include "opencl/opencl_commands.h"
#include "opencl/opencl_device.h"
#include "opencl/opencl_device_work_dispatcher.h"
#include "properties/property.h"
#include "scheduler/dispatch_operations.h"
#include "scheduler/ultra_naive_scheduler.h"
#include "tests/error_of.h"
#include "tests/failing_memory.h"
#include "tests/scripted/scripted_qv.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <map>
#include <numeric>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

namespace oryn::tarva::library {
namespace {

const bool has_device = (scripted::set_devices({{"one", {3}}}), true);
constexpr auto tested_version = version::v1_2;
using op = qv::operation;
using command_pointer = std::shared_ptr<device_ir::device_command>;
using command_graph = dag<command_pointer>;

using queues = device_ir::opencl::opencl_version_queues<tested_version>;
using dispatcher_type = device_ir::opencl::opencl_device_work_dispatcher;

// An OpenCL command that is known by its number in the record.
class numbered_command final : public device_ir::opencl::opencl_version_command<tested_version> {
public:
  numbered_command(std::shared_ptr<physical_ir::physical_operation> operation, queues& queues,
                   const skerv::opencl::buffer<tested_version>& buffer, std::uint8_t number)
      : opencl_version_command(std::move(operation), queues), buffer_(buffer), number_(number) {}
  std::string to_string() const override { return "numbered_command"; }
  bool enqueue() override {
    return submit(skerv::opencl::fill_buffer_bytes<tested_version>(buffer_, {&number_, 1}, 0, 1));
  }

private:
  const skerv::opencl::buffer<tested_version>& buffer_;
  const std::uint8_t number_;
};

// A dispatcher that has not been started: what it is given before stands there when it wakes.
class dispatcher : public testing::Test {
protected:
  dispatcher() {
    auto made = std::make_unique<queues>(context, device);
    queues_ = made.get();
    owner->set_dispatcher(std::make_unique<dispatcher_type>(std::move(made)));
  }
  // What it still held would otherwise go after it.
  void TearDown() override { worker().wait_until_idle(); }

  device_work_dispatcher& worker() { return owner->get_dispatcher(); }

  // One list, given in words: k an OpenCL command, p the same with profiling, h a step on the host, x one that
  // throws, m one that takes the worker's memory away or (0) gives it back, r a release, g one to a device that has
  // ended its work, a an acquire, e nothing, each with its number.
  std::shared_ptr<logical_ir::logical_operation> submit(const std::string& words) {
    auto operation = make_operation();
    worker().submit_work(worker().prepare_work(make_graph(operation, words)));
    return operation;
  }
  static std::shared_ptr<logical_ir::logical_operation> make_operation() {
    return logical_ir::free_memory::create(std::make_shared<library_memory>(data_type::float_, 4, ""));
  }
  command_graph make_graph(const std::shared_ptr<logical_ir::logical_operation>& operation,
                           const std::string& words) {
    const auto step =
        physical_ir::free_host_memory::create(operation, owner, std::make_shared<host_memory>());
    command_graph graph;
    command_pointer last;
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
      const command_pointer made = make(step, word);
      graph.insert_node(made);
      if (last)
        graph.insert_edge(last, made);
      last = made;
    }
    operation->set_physical_operation_count(1);
    operation->set_submitted();
    step->set_device_command_count(graph.nodes().size());
    step->set_submitted();
    operation->add_device_commands(graph.nodes().size());
    return graph;
  }
  // Each pair of e and r takes a sweep: when these have run, what can be done of earlier lists has been done.
  void let_sweeps_pass() { submit("e r9 e r9 e r9 e r9 e r9 e r9 e r9 e r9")->wait_until_complete(); }
  void signal(std::uint64_t id) { worker().signal_acquire(owner, owner, id); }

  // As in the lists; f is a clFinish, s a look at an event's status, t at its times, e the release of an event.
  std::string record() {
    std::string result;
    for (const scripted::call_record& call : scripted::take_calls()) {
      const std::map<op, std::string> words = {
          {op::enqueue_fill_buffer, "k" + std::to_string(call.data.empty() ? 0 : call.data[0]) + " "},
          {op::create_buffer, "h" + std::to_string(call.as<op::create_buffer>().size) + " "},
          {op::finish, "f"},
          {op::release_event, "e "},
          {op::get_event_info, call.as<op::get_event_info>().param_value == nullptr ? "" : "s"},
          {op::get_event_profiling_info, call.as<op::get_event_info>().param_value == nullptr ? "" : "t"}};
      if (const auto word = words.find(call.operation); word != words.end())
        result += word->second;
    }
    return result;
  }

  std::shared_ptr<library_device> released_device() {
    const auto released = std::make_shared<opencl_1_2_device>(device);
    released->initialize();
    released->release();
    return released;
  }

  skerv::opencl::device<tested_version> device = skerv::opencl::find_devices<tested_version>().front();
  skerv::opencl::context<tested_version> context{{}, {device}, nullptr, nullptr};
  skerv::opencl::buffer<tested_version> buffer = context.create_buffer(1, 16, nullptr);
  const std::shared_ptr<library_device> owner = std::make_shared<opencl_1_2_device>(device);

private:
  queues* queues_ = nullptr;

  command_pointer make(const std::shared_ptr<physical_ir::physical_operation>& step,
                       const std::string& word) {
    const auto number = static_cast<std::uint8_t>(word[1] - '0');
    using device_ir::host_function_call;
    switch (word[0]) {
    case 'h':
      return host_function_call::create(
          step, [this, number](const auto&) { context.create_buffer(1, number, nullptr); });
    case 'x':
      return host_function_call::create(step,
                                        [](const auto&) { throw std::runtime_error("a step that throws"); });
    case 'm':
      return host_function_call::create(
          step, [number](const auto&) { allocations_left = number != 0 ? 0 : endless; });
    case 'g':
      return std::make_shared<device_ir::synchronization_release>(
          step, hand_over(owner, released_device(), number));
    case 'e':
      return host_function_call::create(step, [](const auto&) {});
    case 'r':
      return std::make_shared<device_ir::synchronization_release>(step, hand_over(owner, owner, number));
    case 'a':
      return std::make_shared<device_ir::synchronization_acquire>(step, hand_over(owner, owner, number));
    default:
      break;
    }
    const auto made = std::make_shared<numbered_command>(step, *queues_, buffer, number);
    if (word[0] == 'p')
      made->enable_profiling();
    return made;
  }
};

struct list_row {
  const char* name;
  std::vector<std::string> lists; // all there before the worker wakes
  std::string expected;
  std::string message = {}; // of the first error, behind which no further command is run
  void (*plan)() = nullptr;
  std::vector<std::uint64_t> signals = {}; // there before, too
  std::vector<std::uint64_t> later = {};   // when nothing is left to be done
  std::string expected_later = {};
};

class lists : public dispatcher, public testing::WithParamInterface<list_row> {};

TEST_P(lists, are_done_in_runs_and_sweeps) {
  const list_row& row = GetParam();
  scripted::forget_calls();
  if (row.plan != nullptr)
    row.plan();
  std::vector<std::shared_ptr<logical_ir::logical_operation>> operations;
  for (const std::string& words : row.lists)
    operations.push_back(submit(words));
  for (const std::uint64_t id : row.signals)
    signal(id);
  worker().start("worker");
  let_sweeps_pass();
  EXPECT_EQ(record(), row.expected);
  for (const std::uint64_t id : row.later)
    signal(id);
  worker().wait_until_idle();
  EXPECT_EQ(record(), row.expected_later);
  for (const auto& one : operations) {
    EXPECT_TRUE(one->is_complete());
    EXPECT_EQ(message_of([&] { one->get_error() ? std::rethrow_exception(one->get_error()) : void(); }),
              row.message);
  }
  EXPECT_TRUE(scripted::no_failure_left());
}

constexpr const char* no_resources = "Failed to allocate resources on the device.";
constexpr const char* refused = "Cannot submit work to a dispatcher that has been shutdown.";
void fail_first_event() {
  scripted::fail_event(op::enqueue_fill_buffer, 1, -5);
}
void fail_first_look() {
  scripted::fail_call(op::get_event_info, 1, -5);
}
const list_row rows[] = {
    {"one_run_has_one_finish", {"k1 k2 h3"}, "k1 k2 ffse se h3 "},
    {"a_run_ends_where_the_queue_changes", {"k1 p2 k3"}, "k1 ffse k2 ffstte k3 ffse "},
    {"newest_first_and_run_by_run", {"h1 k2 h3", "h4 k5 h6"}, "h4 h1 k5 ffse h6 k2 ffse h3 "},
    {"lists_of_different_kinds_advance_in_turn", {"k1 h2 k3", "h4 h5"}, "h4 h5 k1 ffse h2 k3 ffse "},
    {"a_signal_long_after", {"h1 a1 h2", "h3 k4"}, "h3 h1 k4 ffse ", "", {}, {}, {1}, "h2 "},
    {"equal_signals_count_once", {"a1 h1 a1 h2"}, "h1 ", "", {}, {1, 1}, {1}, "h2 "},
    {"two_acquires_in_a_row", {"a2 a1 h1", "h2"}, "h2 h1 ", "", {}, {1, 2}},
    {"a_signal_for_another_wakes_nobody", {"a1 h1"}, "", "", {}, {2}, {1}, "h1 "},
    {"a_release_is_heard_in_the_next_sweep", {"a1 h1 h2", "h3 r1 h4 k5"}, "h3 h4 k5 ffse h1 h2 "},
    {"an_event_of_a_run_fails", {"k1 k2 h3 k4"}, "k1 k2 ffse se h3 ", no_resources, fail_first_event},
    {"an_event_cannot_be_read", {"k1 k2"}, "k1 k2 ffe se ", no_resources, fail_first_look},
    {"a_step_on_the_host_fails", {"h1 x2 h3 k4 h5"}, "h1 h3 h5 ", "a step that throws"},
    {"a_release_is_to_a_device_that_is_gone", {"h1 g1 h2 k3"}, "h1 h2 ", refused},
};
INSTANTIATE_TEST_SUITE_P(each, lists, testing::ValuesIn(rows),
                         [](const auto& info) { return std::string(info.param.name); });

// The operation fails elsewhere while its commands are on the queue, and then OpenCL does, too.
TEST_F(dispatcher, bears_failures_behind_a_failed_operation) {
  for (const auto& [call, expected] :
       {std::pair{op::finish, "k1 k2 ffe e h3 "}, {op::enqueue_fill_buffer, "k0 h3 "}}) {
    const auto operation = make_operation();
    const auto work = worker().prepare_work(make_graph(operation, "k1 k2 h3"));
    scripted::forget_calls();
    scripted::before_call(
        call, 1, [&] { operation->set_error(std::make_exception_ptr(std::runtime_error("elsewhere"))); });
    scripted::fail_call(call, 1, -5);
    worker().submit_work(work);
    if (call == op::finish)
      worker().start("worker");
    operation->wait_until_commands_ended();
    worker().wait_until_idle();
    EXPECT_EQ(record(), expected);
    EXPECT_EQ(message_of([&] { std::rethrow_exception(operation->get_error()); }), "elsewhere");
  }
}

TEST_F(dispatcher, needs_no_memory_for_prepared_work) {
  worker().start("worker");
  submit("m1"); // from here on the worker has none
  worker().wait_until_idle();
  const auto operation = make_operation();
  auto work = worker().prepare_work(make_graph(operation, "a1 r3 a2 a3 m0"));
  allocations_left = 0; // so that one would end the process
  worker().submit_work(work);
  signal(2);
  signal(1);
  operation->wait_until_complete();
  allocations_left = endless;
}

TEST_F(dispatcher, ends_what_is_left_when_it_is_shut_down) {
  worker().start("worker");
  const auto blocked = submit("h1 a1 k2");
  let_sweeps_pass();
  std::thread waiting([&] { worker().wait_until_idle(); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  worker().shutdown();
  waiting.join();
  blocked->wait_until_commands_ended();
  EXPECT_EQ(message_of([&] { std::rethrow_exception(blocked->get_error()); }),
            "The work dispatcher was shut down before the command could be run.");

  EXPECT_EQ(message_of([&] { worker().submit_work(worker().prepare_work({})); }), refused);
  EXPECT_EQ(message_of([&] { signal(1); }), refused);
  EXPECT_EQ(message_of([&] { worker().shutdown(); }),
            "Attempting to shutdown a work dispatcher that was already shutdown.");

  // An allocation that cannot be handed over leaves nothing in the scheduler.
  const std::vector<std::shared_ptr<library_device>> devices{released_device()};
  const auto scheduler = std::make_shared<ultra_naive_scheduler>(devices);
  const auto memory = std::make_shared<library_memory>(data_type::float_, 4, "");
  EXPECT_EQ(message_of([&] { scheduler->submit(logical_ir::allocate_memory::create(memory)); }), refused);
  EXPECT_EQ(memory.use_count(), 1);
}

// OpenCL has no command for the byte order, so the block goes through the host. Without the identifiers.
TEST_F(dispatcher, carries_out_all_that_operations_say_of_themselves) {
  using namespace physical_ir;
  const auto one = std::make_shared<opencl_1_2_device>(device);
  one->initialize();
  const logical_pointer operation = make_operation();
  const auto there = std::make_shared<device_memory>(one);
  const auto here = std::make_shared<host_memory>();
  const std::vector<std::uint8_t> value{1, 2, 3, 4};
  physical_graph graph;
  for (const std::shared_ptr<physical_operation>& each :
       std::initializer_list<std::shared_ptr<physical_operation>>{
           allocate_host_memory::create(operation, one, here, data_type::int32_, 2),
           allocate_device_memory::create(operation, there, data_type::int32_, 2),
           fill_on_host::create(operation, one, host_fill{here, value, 0, 2}),
           copy_host_to_device::create(operation, host_to_device_copy{here, 0, there, 0, 2}),
           convert_endianness_device::create(operation, there),
           copy_same_device::create(operation, device_copy{there, 1, there, 0, 1}),
           fill_on_device::create(operation, device_fill{there, value, 1, 1}),
           copy_device_to_host::create(operation, device_to_host_copy{there, 0, here, 0, 2}),
           convert_endianness_host::create(operation, one, here),
           synchronize_device_to_device_release::create(operation, one, one, 9),
           synchronize_device_to_device_acquire::create(operation, one, one, 9),
           free_device_memory::create(operation, there)}) {
    graph.insert_node(each);
    if (graph.nodes().size() > 1)
      graph.insert_edge(graph.nodes()[graph.nodes().size() - 2], each);
  }
  operation->set_physical_operation_count(graph.nodes().size());
  operation->set_submitted();
  std::vector<command_graph> commands;
  dispatch_operations(graph, commands);
  operation->wait_until_complete();
  one->release();
  const auto* bytes = static_cast<const std::uint8_t*>(here->get_read_pointer(0));
  EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + 8), (std::vector<std::uint8_t>{1, 2, 3, 4, 4, 3, 2, 1}));
  std::set<std::string> texts{operation->to_string() + "\n"};
  for (const auto& each : graph.nodes())
    texts.insert(each->to_string() + "\n");
  for (const auto& each : commands.front().nodes())
    texts.insert(each->to_string() + "\n");
  const std::string all = std::regex_replace(std::accumulate(texts.begin(), texts.end(), std::string()),
                                             std::regex("(t_id|y_id|device)=\\d+"), "$1=");
  EXPECT_EQ(checksum_of(all), 7494374202419787074U) << all; // the texts are on record
}

// A signal to the host may end any sleep.
TEST_F(dispatcher, is_waited_for_until_the_last_command_has_ended) {
  struct sigaction wake {};
  wake.sa_handler = [](int) {};
  ASSERT_EQ(sigaction(SIGUSR1, &wake, nullptr), 0);
  const auto operation = make_operation();
  operation->set_physical_operation_count(1);
  operation->set_submitted();
  operation->add_device_commands(1);
  operation->set_error(std::make_exception_ptr(std::runtime_error("elsewhere")));
  std::atomic<bool> has_ended = false;
  std::thread waiting([&] {
    operation->wait_until_commands_ended();
    EXPECT_TRUE(has_ended);
  });
  for (int i = 0; i < 50; ++i) {
    pthread_kill(waiting.native_handle(), SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  has_ended = true;
  operation->device_commands_ended(1);
  waiting.join();
}

} // namespace
} // namespace oryn::tarva::library
