// The commands that a step becomes, and the pieces in which a graph reaches its devices.
#include "access/opencl/device.h"
#include "ir/logical_operation.h"
#include "ir/physical_operation.h"
#include "memory/library_memory.h"
#include "opencl/generate_device_command_sequence.h"
#include "opencl/opencl_device.h"
#include "scheduler/dispatch_operations.h"
#include "tests/pipeline/fakes.h"
#include "tests/scripted/scripted_qv.h"

#include <gtest/gtest.h>

namespace oryn::tarva::library {
namespace {

using step_pointer = std::shared_ptr<physical_ir::physical_operation>;
std::string commands_of(const step_pointer& step) {
  std::string texts;
  for (const auto& command : device_ir::opencl::generate_device_command_sequence<version::v1_2>(step))
    texts += command->to_string() + "\n";
  return texts;
}

// Of one version: all have one text, and what the commands do is seen where they run.
TEST(generation, gives_each_step_its_commands) {
  using namespace physical_ir;
  testing::internal::CaptureStderr(); // nothing is ever run
  {
    const auto device = std::make_shared<fake_device>();
    const auto host = std::make_shared<host_memory>();
    const auto block = std::make_shared<device_memory>(device),
               beside = std::make_shared<device_memory>(device);
    host->set_allocation(data_type::int32_, 8);
    block->set_allocation(data_type::int32_, 8);
    beside->set_allocation(data_type::int32_, 8);
    const auto request =
        logical_ir::free_memory::create(std::make_shared<library_memory>(data_type::int32_, 8, ""));
    const std::vector<std::uint8_t> value(4);
    const std::string host_step = "host_function_call: { }\n";
    const auto copied = [](const char* name, const auto& from, const auto& to) {
      return "opencl_1_2::" + std::string(name) +
             ": {src_object_id=" + std::to_string(from->get_unique_identifier()) +
             ", dest_object_id=" + std::to_string(to->get_unique_identifier()) +
             ", src_start_pos=1, dest_start_pos=2, count=3}\n";
    };
    const std::pair<step_pointer, std::string> rows[] = {
        {free_host_memory::create(request, device, host), host_step},
        {free_device_memory::create(request, block), host_step},
        {fill_on_host::create(request, device, host, value, 0, 1), host_step},
        {convert_endianness_host::create(request, device, host), host_step},
        {copy_host_to_host::create(request, device, host, host, 1, 2, 3), host_step},
        {copy_host_to_device::create(request, host, block, 1, 2, 3),
         copied("copy_host_to_device", host, block)},
        {copy_device_to_host::create(request, block, host, 1, 2, 3),
         copied("copy_device_to_host", block, host)},
        {copy_same_device::create(request, block, beside, 1, 2, 3),
         copied("copy_same_device", block, beside)},
        {kernel::create(request, device, std::make_shared<fake_kernel>(device), kernel_argument_capture(),
                        nd_range{1, {0, 0, 0}, {8, 1, 1}, {4, 1, 1}}),
         "opencl_1_2::nd_range_kernel: {work_dim=1, global_offset=(0, 0, 0), global_size=(8, 1, 1), "
         "local_size=(4, 1, 1)}\n"},
        {fill_on_device::create(request, block, value, 2, 3),
         "opencl_1_2::fill_on_device: {mem_object_id=" + std::to_string(block->get_unique_identifier()) +
             ", start_pos=2, count=3}\n"},
    };
    for (const auto& [step, texts] : rows)
      EXPECT_EQ(commands_of(step), texts);
    EXPECT_EQ(message_of([] { commands_of(nullptr); }), "Unknown physical IR node type.");
  }
  testing::internal::GetCapturedStderr();
}

class dispatching : public testing::Test {
protected:
  dispatching() { device->initialize(); }
  void TearDown() override { device->release(); }

  template <class Step, class... Arguments>
  step_pointer add(Arguments&&... arguments) {
    const auto step = Step::create(request, std::forward<Arguments>(arguments)...);
    graph.insert_node(step);
    if (graph.nodes().size() > 1)
      graph.insert_edge(graph.nodes()[graph.nodes().size() - 2], step);
    return step;
  }
  void submit() {
    request->set_physical_operation_count(graph.nodes().size());
    request->set_submitted();
    static_cast<void>(dispatch_operations(graph));
  }

  const std::shared_ptr<opencl_1_2_device> device =
      std::make_shared<opencl_1_2_device>(skerv::opencl::find_devices<version::v1_2>().front());
  std::shared_ptr<logical_ir::logical_operation> request =
      logical_ir::free_memory::create(std::make_shared<library_memory>(data_type::int16v2_, 2, ""));
  physical_graph graph;
};

TEST_F(dispatching, changes_the_byte_order_of_a_block_on_a_device) {
  using namespace physical_ir;
  std::array<std::uint8_t, 8> bytes{1, 2, 3, 4, 5, 6, 7, 8};
  const auto block = std::make_shared<device_memory>(device);
  const auto users = std::make_shared<host_memory>();
  users->set_user_allocation(bytes.data(), data_type::int16v2_, 2);
  add<allocate_device_memory>(block, data_type::int16v2_, 2);
  add<copy_host_to_device>(users, block, 0, 0, 2);
  add<convert_endianness_device>(block);
  add<copy_device_to_host>(block, users, 0, 0, 2);
  add<free_device_memory>(block);
  submit();
  request->wait_until_complete();
  EXPECT_EQ(request->get_error(), nullptr);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 8>{2, 1, 4, 3, 6, 5, 8, 7}));
}

TEST_F(dispatching, starts_no_piece_of_a_graph_that_cannot_all_be_handed_over) {
  using namespace physical_ir;
  testing::internal::CaptureStderr();
  const auto unknown = std::make_shared<fake_device>();
  const auto block = std::make_shared<device_memory>(device);
  scripted::forget_calls();
  const auto first = add<allocate_device_memory>(block, data_type::int16v2_, 2);
  const auto stranger = free_host_memory::create(request, unknown, std::make_shared<host_memory>());
  graph.insert_node(stranger);
  EXPECT_EQ(message_of([&] { submit(); }), "Unsupported device type found.");
  graph.insert_edge(first, stranger);
  EXPECT_EQ(message_of([&] { static_cast<void>(dispatch_operations(graph)); }),
            "DAG node does not exist, but it was expected to exist.");
  device->get_dispatcher().wait_until_idle();
  EXPECT_TRUE(scripted::take_calls().empty());
  graph = {};
  request.reset();
  testing::internal::GetCapturedStderr();
}

} // namespace
} // namespace oryn::tarva::library
