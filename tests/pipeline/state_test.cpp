// The state machine of each level, and what one level tells the next.
#include "ir/device_command.h"
#include "ir/logical_operation.h"
#include "ir/physical_operation.h"
#include "memory/library_memory.h"
#include "tests/pipeline/fakes.h"

#include <gtest/gtest.h>

namespace oryn::tarva::library {
namespace {

// What a level calls itself and its parts; a device command has no parts.
struct level {
  const char *whole, *part;
};
constexpr level logical{"logical operation", "physical operation"},
    physical{"physical operation", "device command"}, command{"device command", nullptr};

enum class applies { to_all, to_those_with_parts, to_those_without };

// Transitions as letters: f enables profiling, 0 to 9 sets the number of parts, if there are any, s submits, p ends a
// part, or else the whole, e fails it.
struct transition_row {
  const char* script;
  const char* message;  // of the last letter; those before succeed. $ stands for the whole, % for a part
  const char* end = ""; // what is heard of it: p or e
  applies to = applies::to_all;
};

constexpr auto with_parts = applies::to_those_with_parts, without = applies::to_those_without;
constexpr transition_row transitions[] = {
    {"f1sp", "", "p"},
    {"2sp", "", "", with_parts},
    {"2spp", "", "p", with_parts},
    {"1see", "", "e"},
    {"3sepp", "", "e", with_parts},
    {"sf", "Attempting to enable profiling on a $ that has already been submitted."},
    {"s1", "Setting a % count on a $, but the $ was already submitted.", "", with_parts},
    {"12", "Setting a % count on a $, but the % count was already set.", "", with_parts},
    {"1ss", "Attempting to set a $ to submitted state, but it was already submitted."},
    {"1p", "Attempting to set a % as completed on a $ that was never submitted.", "", with_parts},
    {"p", "Attempting to set a $ to be complete, but it was never submitted.", "", without},
    {"0sp", "Notifying a $ that a % has completed, but the count of outstanding %s is zero.", "", with_parts},
    {"sp", "Notifying a $ that a % has completed, but the count of outstanding %s was never set.", "",
     with_parts},
    {"spp", "Attempting to set a $ to be complete, but it was already complete.", "p", without},
    {"e", "Attempting to set a $ to an error state, but it was never submitted."},
    {"1spe", "Attempting to set a $ to be complete, but it was already complete.", "p"},
};

std::string words_of(const level& of, const char* message) {
  std::string words;
  for (; *message != 0; ++message)
    words += *message == '$' ? of.whole : *message == '%' ? of.part : std::string(1, *message);
  return words;
}

std::shared_ptr<logical_ir::logical_operation> make_request() {
  return logical_ir::free_memory::create(std::make_shared<library_memory>(data_type::float_, 4, ""));
}

void count_or_end(logical_ir::logical_operation& request, char letter) {
  letter == 'p' ? request.physical_operation_complete()
                : request.set_physical_operation_count(static_cast<std::uint64_t>(letter - '0'));
}
void count_or_end(physical_ir::physical_operation& step, char letter) {
  letter == 'p' ? step.device_command_complete()
                : step.set_device_command_count(static_cast<std::uint64_t>(letter - '0'));
}
void count_or_end(device_ir::device_command& of, char letter) {
  if (letter == 'p')
    of.set_complete();
}

// Performs the letters in turn, and compares what the last one throws, and what the request tells afterwards.
template <class Machine>
void play(const transition_row& row, const level& of, Machine& machine,
          const std::shared_ptr<logical_ir::logical_operation>& request) {
  if (row.to != applies::to_all && (row.to == with_parts) != (of.part != nullptr))
    return;
  SCOPED_TRACE(std::string(of.whole) + ": " + row.script);
  int errors = 0;
  const auto perform = [&](char letter) {
    if (letter == 'f')
      machine.enable_profiling();
    else if (letter == 's')
      machine.set_submitted();
    else if (letter == 'e')
      machine.set_error(std::make_exception_ptr(std::runtime_error("failure " + std::to_string(++errors))));
    else
      count_or_end(machine, letter);
  };
  const std::string script = row.script;
  for (std::size_t i = 0; i + 1 < script.size(); ++i)
    perform(script[i]);
  EXPECT_EQ(message_of([&] { perform(script.back()); }), words_of(of, row.message));
  EXPECT_EQ(request->is_complete(), *row.end != 0);
  EXPECT_EQ(request->get_notification_pipe().is_closed(), *row.end != 0);
  EXPECT_EQ(request->get_error() != nullptr, *row.end == 'e');
  if (const auto error = request->get_error()) {
    EXPECT_EQ(message_of([&] { std::rethrow_exception(error); }), "failure 1");
  }
}

TEST(states, follow_at_each_level) {
  testing::internal::CaptureStderr();
  for (const transition_row& row : transitions) {
    const auto alone = make_request();
    play(row, logical, *alone, alone);

    const auto make_step = [](const auto& request) {
      request->set_physical_operation_count(1);
      request->set_submitted();
      return physical_ir::free_host_memory::create(request, nullptr, std::make_shared<host_memory>());
    };
    const auto above = make_request();
    const auto step = make_step(above);
    play(row, physical, *step, above);
    EXPECT_EQ(step->has_succeeded(), *row.end == 'p' && row.to != without) << row.script;

    const auto top = make_request();
    const auto parent = make_step(top);
    parent->set_device_command_count(1);
    parent->set_submitted();
    play(row, command, *device_ir::host_function_call::create(parent, {}), top);
  }
  testing::internal::GetCapturedStderr();
}

// The lines of one level, then that of its pipe.
std::string left_undone(const std::string& what) {
  return "Destroying a " + what + " that was not completed.\nDestroying a " + what +
         " that did not close its notification pipe.\nDestroying notifier that was never closed.  The notifier "
         "should have been closed.\n";
}

// Without what stands before the message.
std::string warnings_of(const std::function<void()>& action) {
  testing::internal::CaptureStderr();
  action();
  std::istringstream output(testing::internal::GetCapturedStderr());
  std::string result;
  for (std::string line; std::getline(output, line);)
    if (const auto at = line.find("[tarva] [warning] "); at != std::string::npos)
      result += line.substr(at + 18) + "\n";
  return result;
}

TEST(destruction, tells_what_was_left_undone_at_each_level) {
  const auto device = std::make_shared<fake_device>();
  EXPECT_EQ(
      warnings_of([&] {
        const auto step =
            physical_ir::free_host_memory::create(make_request(), device, std::make_shared<host_memory>());
        device_ir::host_function_call::create(step, {});
      }),
      left_undone("device command") + left_undone("physical operation") + left_undone("logical operation"));
  EXPECT_EQ(
      warnings_of([&] {
        host_memory on_host;
        on_host.set_allocation(data_type::float_, 4);
        on_host.allocate();
      }),
      "Destroying a host memory object that contains allocated memory.  TARVA will release the memory, but "
      "free() should have been called.\n");
}

TEST(text_form, of_requests_and_commands) {
  const auto first = std::make_shared<library_memory>(data_type::half_, 4, ""),
             second = std::make_shared<library_memory>(data_type::half_, 4, "");
  const auto released = std::make_shared<fake_device>(), acquired = std::make_shared<fake_device>();
  const std::string one = std::to_string(first->get_unique_identifier()),
                    two = std::to_string(second->get_unique_identifier()),
                    pair = "{release_device=" + std::to_string(released->get_unique_identifier()) +
                           ", acquire_device=" + std::to_string(acquired->get_unique_identifier()) +
                           ", sync_id=9}";
  std::uint16_t value = 0;
  auto* const address = reinterpret_cast<void*>(0x1234);
  const std::pair<std::shared_ptr<logical_ir::logical_operation>, std::string> requests[] = {
      {logical_ir::allocate_memory::create(first),
       "allocate_memory: {mem_object_id=" + one + ", type=half, count=4}"},
      {logical_ir::free_memory::create(first), "free_memory: {memory_object_id=" + one + "}"},
      {logical_ir::fill::create(first, &value, 1, 2),
       "fill: {memory_object_id=" + one + ", start_position=1, count=2, value=<omitted>}"},
      {logical_ir::copy_tarva_to_user::create(first, 1, 2, address),
       "copy_tarva_to_user: {src_object_id=" + one + ", src_start_position=1, count=2, user_ptr=0x1234}"},
      {logical_ir::copy_user_to_tarva::create(first, 1, 2, address),
       "copy_user_to_tarva: {dest_object_id=" + one + ", dest_start_position=1, count=2, src_ptr=0x1234}"},
      {logical_ir::copy_tarva_to_tarva::create(first, second, 1, 2, 3),
       "copy_tarva_to_tarva: {src_object_id=" + one + ", dest_object_id=" + two +
           ", src_start_position=1, dest_start_position=2, count=3}"},
      {logical_ir::kernel::create(std::make_shared<fake_kernel>(released), kernel_argument_capture(),
                                  nd_range{2, {1, 2, 3}, {4, 5, 6}, {7, 8, 9}}),
       "kernel: {work_dim=2, global_offset=(1, 2, 3), global_size=(4, 5, 6), local_size=(7, 8, 9)}"},
  };
  for (const auto& [request, text] : requests)
    EXPECT_EQ(request->to_string(), text);
  const auto step =
      physical_ir::free_host_memory::create(requests[0].first, released, std::make_shared<host_memory>());
  EXPECT_EQ(device_ir::host_function_call::create(step, {})->to_string(), "host_function_call: { }");
  EXPECT_EQ(device_ir::synchronization_acquire(step, released, acquired, 9).to_string(),
            "synchronization_acquire: " + pair);
  EXPECT_EQ(device_ir::synchronization_release(step, released, acquired, 9).to_string(),
            "synchronization_release: " + pair);
}

} // namespace
} // namespace oryn::tarva::library
