// The state machine of each level, and what one level tells the next.
#include "device_ir/host_function_call.h"
#include "device_ir/synchronization.h"
#include "ir/logical/operations.h"
#include "ir/physical/operations.h"
#include "memory/library_memory.h"
#include "tests/pipeline/fakes.h"

#include <gtest/gtest.h>

namespace oryn::tarva::library {
namespace {

// One level's transitions as letters: f enables profiling, 0 to 9 sets the number of parts, s submits, p ends a
// part (or the whole, where there are none), e fails it.
struct transition_row {
  const char* script;
  const char* message; // of the last letter; those before succeed
  bool is_complete = false;
  const char* told = ""; // what the level above has heard: p or e
};

// Stands in for the level above a physical operation or a command.
class listener {
public:
  std::string heard() const {
    std::string result;
    if (request->get_error())
      result = "e";
    else if (request->is_complete())
      result = "p";
    return result;
  }
  std::shared_ptr<logical_ir::free_memory> request =
      logical_ir::free_memory::create(std::make_shared<library_memory>(data_type::float_, 4, ""));
};

struct failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

void end_or_count(logical_ir::logical_operation& request, char letter) {
  if (letter == 'p')
    request.physical_operation_complete();
  else
    request.set_physical_operation_count(static_cast<std::uint64_t>(letter - '0'));
}
void end_or_count(physical_ir::physical_operation& step, char letter) {
  if (letter == 'p')
    step.device_command_complete();
  else
    step.set_device_command_count(static_cast<std::uint64_t>(letter - '0'));
}
void end_or_count(device_ir::device_command& command, char) {
  command.set_complete();
}

// Performs the letters in turn, and returns what the last one throws.
template <class Machine>
std::string play(Machine& machine, const std::string& script) {
  int errors = 0;
  const auto perform = [&](char letter) {
    if (letter == 'f')
      machine.enable_profiling();
    else if (letter == 's')
      machine.set_submitted();
    else if (letter == 'e')
      machine.set_error(std::make_exception_ptr(failure("failure " + std::to_string(++errors))));
    else
      end_or_count(machine, letter);
  };
  for (std::size_t i = 0; i + 1 < script.size(); ++i)
    perform(script[i]);
  return message_of([&] { perform(script.back()); });
}

class states : public testing::TestWithParam<transition_row> {
protected:
  void SetUp() override { testing::internal::CaptureStderr(); }
  void TearDown() override { testing::internal::GetCapturedStderr(); }
  static void expect_first_error(const std::exception_ptr& error) {
    if (error) {
      EXPECT_EQ(message_of([&] { std::rethrow_exception(error); }), "failure 1");
    }
  }
};

class logical_states : public states {};
class physical_states : public states {};
class command_states : public states {};

TEST_P(logical_states, follow) {
  const auto request = listener().request;
  EXPECT_EQ(play(*request, GetParam().script), GetParam().message);
  EXPECT_EQ(request->is_complete(), GetParam().is_complete);
  EXPECT_EQ(request->get_notification_pipe().is_closed(), GetParam().is_complete);
  expect_first_error(request->get_error());
}

constexpr transition_row logical_rows[] = {
    {"f1sp", "", true},
    {"2sp", ""},
    {"2spp", "", true},
    {"1se", "", true},
    {"1see", "", true},
    {"2sepp", "", true},
    {"sf", "Attempting to enable profiling on a logical operation that has already been submitted."},
    {"s1", "Setting a physical operation count on a logical operation, but the logical operation was already "
           "submitted."},
    {"12", "Setting a physical operation count on a logical operation, but the physical operation count was "
           "already set."},
    {"1ss", "Attempting to set a logical operation to submitted state, but it was already submitted."},
    {"1p",
     "Attempting to set a physical operation as completed on a logical operation that was never submitted."},
    {"0sp",
     "Notifying a logical operation that a physical operation has completed, but the count of outstanding "
     "physical operations is zero."},
    {"sp",
     "Notifying a logical operation that a physical operation has completed, but the count of outstanding "
     "physical operations was never set."},
    {"e", "Attempting to set a logical operation to an error state, but it was never submitted."},
    {"1spe", "Attempting to set a logical operation to be complete, but it was already complete.", true},
};
INSTANTIATE_TEST_SUITE_P(each, logical_states, testing::ValuesIn(logical_rows));

TEST_P(physical_states, follow) {
  const listener above;
  above.request->set_physical_operation_count(1);
  above.request->set_submitted();
  const auto step =
      physical_ir::free_host_memory::create(above.request, nullptr, std::make_shared<host_memory>());
  EXPECT_EQ(play(*step, GetParam().script), GetParam().message);
  EXPECT_EQ(step->has_succeeded(), std::string(GetParam().told) == "p");
  EXPECT_EQ(above.heard(), GetParam().told);
  expect_first_error(above.request->get_error());
}

constexpr transition_row physical_rows[] = {
    {"f1sp", "", true, "p"},
    {"3spp", ""},
    {"3sppp", "", true, "p"},
    {"1see", "", true, "e"},
    {"3sepp", "", true, "e"},
    {"sf", "Attempting to enable profiling on a physical operation that has already been submitted."},
    {"s1", "Setting a device command count on a physical operation, but the physical operation was already "
           "submitted."},
    {"12",
     "Setting a device command count on a physical operation, but the device command count was already set."},
    {"1ss", "Attempting to set a physical operation to submitted state, but it was already submitted."},
    {"1p",
     "Attempting to set a device command as completed on a physical operation that was never submitted."},
    {"0sp",
     "Notifying a physical operation that a device command has completed, but the count of outstanding "
     "device commands is zero."},
    {"sp", "Notifying a physical operation that a device command has completed, but the count of outstanding "
           "device commands was never set."},
    {"e", "Attempting to set a physical operation to an error state, but it was never submitted."},
    {"1spe", "Attempting to set a physical operation to be complete, but it was already complete.", true,
     "p"},
};
INSTANTIATE_TEST_SUITE_P(each, physical_states, testing::ValuesIn(physical_rows));

TEST_P(command_states, follow) {
  const listener above;
  above.request->set_physical_operation_count(1);
  above.request->set_submitted();
  const auto step =
      physical_ir::free_host_memory::create(above.request, nullptr, std::make_shared<host_memory>());
  step->set_device_command_count(1);
  step->set_submitted();
  const auto command = device_ir::host_function_call::create(step, {});
  EXPECT_EQ(play(*command, GetParam().script), GetParam().message);
  EXPECT_EQ(above.heard(), GetParam().told);
  expect_first_error(above.request->get_error());
}

constexpr transition_row command_rows[] = {
    {"fsp", "", true, "p"},
    {"see", "", true, "e"},
    {"sf", "Attempting to enable profiling on a device command that has already been submitted."},
    {"ss", "Attempting to set a device command to submitted state, but it was already submitted."},
    {"p", "Attempting to set a device command to be complete, but it was never submitted."},
    {"spp", "Attempting to set a device command to be complete, but it was already complete.", true, "p"},
    {"e", "Attempting to set a device command to an error state, but it was never submitted."},
    {"spe", "Attempting to set a device command to be complete, but it was already complete.", true, "p"},
};
INSTANTIATE_TEST_SUITE_P(each, command_states, testing::ValuesIn(command_rows));

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
  EXPECT_EQ(warnings_of([&] {
              const auto step = physical_ir::free_host_memory::create(listener().request, device,
                                                                      std::make_shared<host_memory>());
              device_ir::host_function_call::create(step, {});
            }),
            left_undone("device command") + left_undone("physical operation") +
                left_undone("logical operation"));
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
  std::string texts;
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
