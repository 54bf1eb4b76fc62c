// Queues, events, programs and kernels as the library's own objects.
#include "capability/executor.h"
#include "tests/capability/fake_opencl.h"

#include <algorithm>
#include <array>
#include <new>
#include <string>

namespace capability_test {
namespace {

using qv::operation;

std::size_t count(const void* function) {
  return static_cast<std::size_t>(std::count_if(
      calls.begin(), calls.end(), [=](const recorded& one) { return one.function == function; }));
}

class objects : public ::testing::Test {
protected:
  objects() {
    fake = &opencl_;
    device_.cl = fake_functions();
    device_.cl.get_kernel_info = [](cl_kernel, cl_kernel_info name, std::size_t size, void* target,
                                    std::size_t* size_ret) {
      constexpr cl_uint parameters = 6;
      return name == CL_KERNEL_NUM_ARGS ? give(&parameters, sizeof parameters, size, target, size_ret)
                                        : CL_INVALID_VALUE;
    };
    calls.clear();
  }
  ~objects() override {
    program_->forget_kernels(device_.cl); // none may outlive its device
  }

  qv::kernel_object* make_kernel(const char* name = "k") {
    cl_int status = 77;
    auto* const made = qv::kernel_object::make(device_, *program_, name, status);
    EXPECT_EQ(status, CL_SUCCESS);
    return made;
  }
  cl_int launch(qv::kernel_object* kernel, cl_uint event_count = 0, void* const* events = nullptr) {
    qv::enqueue_nd_range_kernel_record record{};
    const std::size_t size = 1;
    record.command_queue = queue_;
    record.kernel = kernel;
    record.work_dim = 1;
    record.global_work_size = &size;
    record.num_events_in_wait_list = event_count;
    record.event_wait_list = events;
    return status_of<operation::enqueue_nd_range_kernel>(device_, record);
  }
  cl_int set(qv::kernel_object* kernel, cl_uint index, std::size_t size, const void* value) {
    return kernel->set_argument(device_, index, size, value);
  }

  fake_opencl opencl_{};
  qv::root_device device_;
  qv::queue_object* queue_ = new qv::queue_object(own_objects::as_made<cl_command_queue>());
  qv::program_object* program_ = new qv::program_object(own_objects::as_made<cl_program>(), true);
};

// Parameters 0 to 5: a buffer, a value, local memory, an image, a sampler, a queue.
TEST_F(objects, kernels_refuse_what_opencl_would_follow_blindly) {
  auto* const kernel = make_kernel();
  const auto buffer = own_objects::as_made<cl_mem>();
  const std::uint64_t number = 12345, zero = 0;
  const std::vector<char> zeros(128);
  ASSERT_TRUE(qv::add_live_buffer(buffer));
  struct row {
    cl_uint index;
    std::size_t size;
    const void* value;
    cl_int status;
  };
  for (const row& one :
       {row{0, 8, &buffer, 0}, row{0, 8, &zero, 0}, row{0, 8, nullptr, 0}, row{0, 8, &number, -38},
        row{0, 4, &number, -51}, row{0, 16, nullptr, -51}, row{1, 4, &number, 0}, row{1, 8, &number, 0},
        row{1, 4, nullptr, -50}, row{2, 64, nullptr, 0}, row{2, 8, &buffer, -50},
        row{2, 128, zeros.data(), -50}, row{3, 8, &buffer, -38}, row{3, 8, nullptr, -38},
        row{4, 8, &number, -41}, row{5, 8, nullptr, -70}}) {
    calls.clear();
    EXPECT_EQ(set(kernel, one.index, one.size, one.value), one.status) << one.index << ", " << one.size;
    EXPECT_EQ(count(id<&cl::set_kernel_arg>), one.status == CL_SUCCESS ? 1u : 0u);
  }
  // Where the implementation gives up in the end.
  device_.quirks.asserts_on_large_local_arguments = true;
  device_.local_memory_size = 1024;
  EXPECT_EQ(set(kernel, 2, 1024, nullptr), CL_SUCCESS);
  EXPECT_EQ(set(kernel, 2, 1025, nullptr), CL_OUT_OF_RESOURCES);
  // A buffer that has gone is a number like any other.
  EXPECT_EQ(set(kernel, 0, 8, &buffer), CL_SUCCESS);
  status_of<operation::release_mem_object>(device_, {buffer, 0});
  EXPECT_EQ(set(kernel, 0, 8, &buffer), CL_INVALID_MEM_OBJECT);
}

TEST_F(objects, kernels_for_launches_take_everything_and_fail_there) {
  auto* const first = make_kernel();
  const std::uint64_t number = 12345;
  device_.cl.create_kernel = [](cl_program, const char*, cl_int* status) -> cl_kernel {
    *status = CL_OUT_OF_RESOURCES;
    return nullptr;
  };
  auto* const broken = make_kernel();
  EXPECT_EQ(set(broken, 0, 4, &number), CL_SUCCESS);
  EXPECT_EQ(launch(broken), CL_OUT_OF_RESOURCES);
  cl_int status = 77;
  EXPECT_EQ(qv::kernel_object::make(device_, *program_, "another", status), nullptr);
  EXPECT_EQ(status, CL_OUT_OF_RESOURCES) << "nobody has had it yet";

  device_.cl.create_kernel = fake_functions().create_kernel;
  auto* const second = make_kernel();
  EXPECT_EQ(set(first, 0, 8, &number), CL_INVALID_MEM_OBJECT);
  EXPECT_EQ(set(second, 0, 8, &number), CL_SUCCESS);
  EXPECT_EQ(launch(second), CL_INVALID_MEM_OBJECT);
  EXPECT_EQ(set(second, 0, 8, nullptr), CL_SUCCESS);
  EXPECT_EQ(launch(second), CL_SUCCESS) << "set rightly in the end";
  for (auto* each : {first, broken, second})
    each->release(device_.cl);
}

TEST_F(objects, released_kernels_are_used_again_only_as_long_as_they_are_harmless) {
  const auto buffer = own_objects::as_made<cl_mem>();
  const std::uint32_t number = 1;
  device_.cl.get_kernel_arg_info = nullptr;
  ASSERT_TRUE(qv::add_live_buffer(buffer));
  const auto use = [&](const char* name = "k") {
    auto* const kernel = make_kernel(name);
    set(kernel, 0, 8, &buffer);
    for (cl_uint index = 1; index < 6; ++index)
      set(kernel, index, 4, &number);
    return kernel;
  };
  auto* kernel = use();
  EXPECT_EQ(launch(kernel), CL_SUCCESS);
  kernel->release(device_.cl);
  calls.clear();
  kernel = make_kernel();
  EXPECT_EQ(count(id<&cl::create_kernel>), 0u);
  EXPECT_EQ(set(kernel, 0, 8, &buffer), CL_SUCCESS);
  EXPECT_EQ(launch(kernel), CL_INVALID_KERNEL_ARGS) << "it still has those of its last use";
  kernel->release(device_.cl);
  calls.clear();

  status_of<operation::release_mem_object>(device_, {buffer, 0});
  EXPECT_EQ(count(id<&cl::release_kernel>), 1u) << "it held the buffer";
  use()->release(device_.cl);
  calls.clear();
  qv::build_program_record build{};
  build.program = program_;
  status_of<operation::build_program>(device_, build);
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].function, id<&cl::release_kernel>) << "it would be in the way";

  constexpr std::size_t names = 100, kept = 64;
  for (std::size_t i = 0; i < names; ++i)
    use(std::to_string(i).c_str())->release(device_.cl);
  calls.clear();
  program_->release(device_.cl);
  EXPECT_EQ(count(id<&cl::release_kernel>), kept);
  program_ = new qv::program_object(own_objects::as_made<cl_program>(), true);
}

TEST_F(objects, queues_that_cannot_be_finished_fail_through_their_events) {
  device_.cl.finish = [](cl_command_queue) -> cl_int { return CL_OUT_OF_RESOURCES; };
  device_.cl.get_event_info = [](cl_event, cl_event_info, std::size_t size, void* target,
                                 std::size_t* size_ret) {
    constexpr cl_int status = CL_RUNNING;
    return give(&status, sizeof status, size, target, size_ret);
  };
  qv::enqueue_fill_buffer_record record{};
  void* event = nullptr;
  record.command_queue = queue_;
  record.event = &event;
  EXPECT_EQ(status_of<operation::enqueue_fill_buffer>(device_, record), CL_SUCCESS);
  const qv::binding bound{&device_, &qv::commands_of_capability(6)};
  const auto enqueue = [&](void** place) {
    record.event = place;
    qv::call_command(bound, qv::command_number(operation::enqueue_fill_buffer, 6), &record);
    return record.status;
  };
  ASSERT_EQ(enqueue(&event), CL_SUCCESS);
  bool is_finished = true;
  EXPECT_EQ(queue_->finish(device_.cl, is_finished), CL_SUCCESS);
  EXPECT_FALSE(is_finished);
  EXPECT_EQ(count(id<&cl::wait_for_events>), 2u);
  EXPECT_EQ(static_cast<qv::event_object*>(event)->failure(), CL_OUT_OF_RESOURCES);
  EXPECT_EQ(launch(make_kernel(), 1, &event), CL_EXEC_STATUS_ERROR_FOR_EVENTS_IN_WAIT_LIST);
  cl_int told = 77;
  qv::record<operation::get_event_info> asked{event, sizeof told, &told, nullptr, 0, 0x11D3};
  qv::call_command(bound, qv::command_number(operation::get_event_info, 6), &asked);
  EXPECT_EQ(told, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(enqueue(nullptr), CL_SUCCESS);
  EXPECT_EQ(queue_->finish(device_.cl, is_finished), CL_OUT_OF_RESOURCES) << "there is no event to tell";
  queue_ = nullptr;
  record.command_queue = nullptr;
  EXPECT_EQ(enqueue(nullptr), CL_INVALID_COMMAND_QUEUE);
  EXPECT_EQ(launch(nullptr), CL_INVALID_COMMAND_QUEUE);
}

// As long as it is not there nothing is asked of it that might wait for its answer.
TEST_F(objects, lost_devices_are_left_alone_until_they_are_back) {
  opencl_.platforms = {fake_platform()};
  opencl_.platforms[0].devices = {plain_device("OpenCL 3.0")};
  qv::opencl_functions cl = device_.cl;
  cl.finish = [](cl_command_queue) -> cl_int { return CL_DEVICE_NOT_AVAILABLE; };
  const qv::root_device device = qv::find_root_devices(cl, {}).at(0);
  auto& available = opencl_.platforms[0].devices[0].numbers[CL_DEVICE_AVAILABLE];
  const own_objects own(device);
  qv::enqueue_transfer_buffer_record write{};
  write.command_queue = own.queue;
  const auto buffer = [&] {
    qv::create_buffer_record record{};
    calls.clear();
    qv::call_command({&device, &qv::commands_of_capability(3)}, 3, &record);
    EXPECT_EQ(calls.empty(), record.status != CL_SUCCESS);
    return record;
  };
  void* const made = buffer().result;
  qv::object_record finished{own.queue, 77}, released{made, 77};
  qv::call_command({&device, &qv::commands_of_capability(3)}, 39, &finished);
  EXPECT_EQ(finished.status, CL_SUCCESS);
  EXPECT_EQ(buffer().status, CL_SUCCESS) << "it is there all the same";
  cl_int status = 77;
  qv::kernel_object::make(device, *own.program, "kept", status)->release(cl);
  qv::call_command({&device, &qv::commands_of_capability(3)}, 39, &finished);
  available = 0;
  EXPECT_EQ(buffer().status, CL_DEVICE_NOT_AVAILABLE);
  EXPECT_EQ(status_of<operation::enqueue_write_buffer>(device, write), CL_DEVICE_NOT_AVAILABLE);
  calls.clear();
  qv::call_command({&device, &qv::commands_of_capability(3)}, 65, &released);
  EXPECT_EQ(released.status, CL_SUCCESS);
  EXPECT_TRUE(calls.empty());
  constexpr int kept = 64;
  for (int i = 0; i < kept; ++i)
    make_kernel(std::to_string(i).c_str())->release(device_.cl);
  EXPECT_EQ(count(id<&cl::release_kernel>), 0u) << "to make room for those of another device";
  available = 1;
  EXPECT_EQ(buffer().status, CL_SUCCESS);
  EXPECT_EQ(status_of<operation::enqueue_write_buffer>(device, write), CL_SUCCESS);
}

TEST_F(objects, implementations_that_throw_or_lie_have_failed) {
  device_.cl.build_program = [](cl_program, cl_uint, const cl_device_id*, const char*,
                                void(CL_CALLBACK*)(cl_program, void*),
                                void*) -> cl_int { throw std::bad_alloc(); };
  device_.cl.create_program_with_source = [](cl_context, cl_uint, const char**, const std::size_t*,
                                             cl_int*) -> cl_program { throw 1; };
  qv::build_program_record build{};
  build.program = program_;
  EXPECT_EQ(status_of<operation::build_program>(device_, build), CL_OUT_OF_HOST_MEMORY);
  const char* text = "";
  EXPECT_EQ(status_of<operation::create_program_with_source>(device_, {nullptr, &text, nullptr, &text, 0, 1}),
            CL_OUT_OF_RESOURCES);
  device_.cl.create_kernels_in_program = [](cl_program, cl_uint, cl_kernel* kernels,
                                            cl_uint* count) -> cl_int {
    *kernels = nullptr;
    *count = 1;
    return CL_SUCCESS;
  };
  void* kernel = nullptr;
  qv::create_kernels_in_program_record made{program_, &kernel, nullptr, 0, 1};
  qv::create_kernels_in_program(device_, made);
  EXPECT_EQ(made.status, CL_OUT_OF_RESOURCES);
}

TEST_F(objects, sizes_that_only_the_attributes_tell_are_told) {
  using sizes = std::array<std::size_t, 3>;
  static sizes fixed;
  static std::string attributes;
  static int asked = 0;
  device_.cl.get_kernel_work_group_info = [](cl_kernel, cl_device_id, cl_kernel_work_group_info,
                                             std::size_t size, void* target, std::size_t* size_ret) {
    return give(&fixed, sizeof fixed, size, target, size_ret);
  };
  device_.cl.get_kernel_info = [](cl_kernel, cl_kernel_info name, std::size_t size, void* target,
                                  std::size_t* size_ret) {
    asked += name == CL_KERNEL_ATTRIBUTES ? 1 : 0;
    return give(attributes.c_str(), attributes.size() + 1, size, target, size_ret);
  };
  using row = std::tuple<sizes, const char*, sizes>;
  for (const auto& [by_query, text, expected] :
       {row{{0, 0, 0}, "reqd_work_group_size(8,4,2),work_group_size_hint(1,1,1)", {8, 4, 2}},
        row{{0, 0, 0}, "x __attribute__((reqd_work_group_size( 8, 4 ,2 )))", {8, 4, 2}},
        row{{1, 2, 3}, "reqd_work_group_size(8,4,2)", {1, 2, 3}}, row{{0, 0, 0}, "", {0, 0, 0}},
        row{{0, 0, 0}, "reqd_work_group_size(8,4)", {0, 0, 0}},
        row{{0, 0, 0}, "reqd_work_group_size(8,99999999999999999999,1)", {0, 0, 0}},
        row{{0, 0, 0}, "work_group_size_hint(8,4,2)", {0, 0, 0}}}) {
    fixed = by_query;
    attributes = text;
    asked = 0;
    auto* const kernel = make_kernel(text);
    for (int i = 0; i < 2; ++i) {
      sizes told{};
      qv::record<operation::get_kernel_work_group_info> query{
          nullptr, kernel, sizeof told, &told, nullptr, 0, CL_KERNEL_COMPILE_WORK_GROUP_SIZE};
      qv::get_kernel_work_group_info(device_, query);
      EXPECT_EQ(told, expected) << text;
    }
    EXPECT_LE(asked, 2) << "the length and the text";
  }
}

// To programs from source alone, unseen by who asks for the options, and only where it is known.
TEST_F(objects, a_build_option_is_added_where_that_is_needed) {
  device_.quirks.build_option = "-extra";
  static std::string options;
  device_.cl.build_program = [](cl_program, cl_uint, const cl_device_id*, const char* given,
                                void(CL_CALLBACK*)(cl_program, void*), void*) {
    options = given == nullptr ? "none" : given;
    calls.emplace_back();
    return options == "-extra -old" ? CL_INVALID_BUILD_OPTIONS : CL_SUCCESS;
  };
  qv::build_program_record build{};
  for (const auto& [is_from_source, given, expected] : {std::tuple{true, "-D", "-extra -D"},
                                                        {false, "-w", "-w"},
                                                        {false, nullptr, "none"},
                                                        {true, nullptr, "-extra"},
                                                        {true, "-extra", "-extra"},
                                                        {true, "-old", "-old"}}) {
    qv::program_object program(own_objects::as_made<cl_program>(), is_from_source);
    build.program = &program;
    build.options = given;
    status_of<operation::build_program>(device_, build);
    EXPECT_EQ(options, expected);
    const std::optional<std::string> told = program.callers_options();
    EXPECT_EQ(told.value_or(expected), given == nullptr ? is_from_source ? "" : "none" : given);
  }
}

} // namespace
} // namespace capability_test
