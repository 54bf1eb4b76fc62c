// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What each exported function says to bad arguments: the checks in their order, each with its exact text and
// code. A call mends what the call before it was refused for and leaves all later arguments bad.
#include "tests/scripted/one_process.h"

#include <iostream>
#include <sstream>

namespace scripted {

namespace {

// An address that was never a handle and cannot be read.
constexpr struct {
  template <class T>
  operator T*() const {
    return reinterpret_cast<T*>(16);
  }
} unknown;

// A place for what a call could write: all of it has 8 bytes.
constexpr std::uint64_t untouched = 0x5555555555555555;
std::uint64_t written = untouched;
constexpr struct {
  template <class T>
  operator T*() const {
    return reinterpret_cast<T*>(&written);
  }
} out;

const outcome unknown_handle = runtime_failure("Lookup of internal type map failed.");
const outcome unknown_type = runtime_failure("Unknown data type.");
const outcome unknown_ir = runtime_failure("Unknown IR type.");
const outcome missing_value = logic_failure("NULL pointer provided as a pointer to a value, but "
                                            "the data type has a non-zero size.");
const outcome unknown_header = logic_failure("Unknown IR header type.");
const outcome missing_options =
    logic_failure("Attempting to make a string of the options, but the options argument is NULL.");
const std::string no_root =
    "property argument is NULL, but expected a memory location to write the result property.";

// Has good arguments, and gathers what went wrong and what the log has to hold.
struct argument_checks {
  void run() {
    check_devices_and_programs();
    check_launches();
    check_memory();
    check_errors_and_properties();
    check_what_has_no_result();
    // What may be NULL is.
    tarva_abi_free_device_array(nullptr, nullptr);
    tarva_abi_free_property_array(nullptr, nullptr);
    tarva_abi_free_build_result(nullptr, nullptr);
    tarva_abi_free_property_tree_string(nullptr, nullptr);
  }

  std::string lines;
  std::ostringstream faults;

  void expect(const outcome& expected, const outcome& ended) {
    if (ended != expected)
      faults << "expected " << expected << "\n     got " << ended << "\n";
    if (written != untouched)
      faults << "wrote a result in spite of: " << expected << "\n";
    lines +=
        "[tarva] [error] Caught an exception within TARVA that will be converted into an error object: " +
        expected.message + "\n";
  }
  // The functions without a result leave a line and nothing else: for NULL, for a live handle of another kind,
  // and for what was never a handle. An empty message is no line.
  template <class Record>
  void refuse(void (*function)(void*, Record*), void* other, const std::array<std::string, 3>& messages) {
    Record* const bad[] = {nullptr, static_cast<Record*>(other), unknown};
    for (std::size_t i = 0; i < 3; ++i) {
      function(nullptr, bad[i]);
      if (!messages[i].empty())
        lines += "[tarva] [error] Caught an exception within TARVA that will not be converted into an error "
                 "object: " +
                 messages[i] + " \n";
    }
  }

  outcome ask(tarva_abi_device_s* on, std::uint64_t type, const char* options, std::uint64_t* supported) {
    return call<tarva_abi_check_device_ir_support>(on, &no_header, type, "x", std::uint64_t{1}, options,
                                                   supported);
  }
  outcome load_ir(tarva_abi_device_s* on, std::uint64_t type, const char* options,
                  tarva_abi_build_result_s** result) {
    return call<tarva_abi_load_device_ir>(on, &no_header, type, "x", std::uint64_t{1}, options, nullptr,
                                          result);
  }
  // With one constant of this type and value.
  outcome load_with(std::uint64_t type, const void* constant_value) {
    const tarva_abi_specialization_constant_s constant{1, type, constant_value};
    tarva_abi_ir_header_s header{TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS, &constant, 1};
    build unused;
    return load(device, TARVA_ABI_IR_SOURCE_1_0, "x", "", unused, &header);
  }
  outcome launch_with(const tarva_abi_kernel_argument_s& argument, std::uint64_t count = 1) {
    return call<tarva_abi_kernel_call>(kernel.get(), &argument, count, &range);
  }

// A call whose argument check says this behind the name of the function.
#define CHECK(function, words, ...)                                                                          \
  expect(invalid_argument(std::string(#function ": ") + (words)), call<function>(__VA_ARGS__))

  void check_devices_and_programs() {
    CHECK(tarva_abi_get_devices,
          "devices argument is NULL, but expected a memory location to return the device array.", nullptr);
    CHECK(tarva_abi_get_device_root_property, no_root, unknown, nullptr);
    expect(unknown_handle, call<tarva_abi_get_device_root_property>(unknown, out));
    CHECK(tarva_abi_get_builtin_program,
          "program argument is NULL, but expected a memory location to write the result program.", unknown,
          nullptr);
    expect(unknown_handle, call<tarva_abi_get_builtin_program>(unknown, out));

    expect(invalid_argument("tarva_abi_check_device_ir_support : supported argument is NULL, but should "
                            "point to a valid memory location to return a result."),
           ask(unknown, 0, nullptr, nullptr));
    expect(unknown_handle, ask(unknown, 0, nullptr, out));
    expect(missing_options, ask(device.get(), 0, nullptr, out));
    expect(unknown_ir, ask(device.get(), 10, "", out));
    expect(unknown_header, ask(device.get(), 9, "", out));
    expect(invalid_argument("tarva_abi_load_device_ir : result argument is NULL, but should point to "
                            "a valid memory location to return the build result."),
           load_ir(unknown, 0, nullptr, nullptr));
    expect(unknown_handle, load_ir(unknown, 0, nullptr, out));
    expect(missing_options, load_ir(device.get(), 0, nullptr, out));
    expect(unknown_ir, load_ir(device.get(), 0, "", out));
    expect(unknown_header, load_ir(device.get(), 1, "", out));
    expect(unknown_type, load_with(69, nullptr));
    expect(missing_value, load_with(TARVA_ABI_TYPE_INT32, nullptr));

    CHECK(tarva_abi_get_program_root_property, no_root, unknown, nullptr);
    expect(unknown_handle, call<tarva_abi_get_program_root_property>(unknown, out));
    CHECK(tarva_abi_get_kernel,
          "kernel argument is NULL, but expected a memory location to write the result kernel.", unknown,
          nullptr, nullptr);
    CHECK(tarva_abi_get_kernel,
          "kernel name argument is NULL, but expected a kernel name string to extract the kernel.", unknown,
          nullptr, out);
    expect(unknown_handle, call<tarva_abi_get_kernel>(unknown, "none", out));
    expect(other_failure("Kernel name not found in the program."),
           call<tarva_abi_get_kernel>(program.get(), "none", out));
    CHECK(tarva_abi_get_kernel_root_property, no_root, unknown, nullptr);
    expect(unknown_handle, call<tarva_abi_get_kernel_root_property>(unknown, out));
  }

  void check_launches() {
    const tarva_abi_launch_range_s no_range{0, {1, 1, 1}};
    CHECK(tarva_abi_kernel_call, "argument array is NULL but number of arguments is not zero.", unknown,
          nullptr, 1, nullptr);
    CHECK(tarva_abi_kernel_call, "launch range is NULL, so there is no way to execute the kernel.", unknown,
          nullptr, 0, nullptr);
    expect(unknown_handle, call<tarva_abi_kernel_call>(unknown, nullptr, 0, &no_range));
    CHECK(tarva_abi_kernel_call, "Unknown launch type provided in the launch range argument.", kernel.get(),
          nullptr, 0, &no_range);
    expect(runtime_failure("Unsupported argument type."), launch_with({4, 0, 0}));
    expect(unknown_type, launch_with({TARVA_ABI_ARGUMENT_VALUE, 0, 0}));
    expect(missing_value, launch_with({TARVA_ABI_ARGUMENT_VALUE, TARVA_ABI_TYPE_INT8, 0}));
    expect(unknown_handle, launch_with({TARVA_ABI_ARGUMENT_MEMORY, 0, 0}));
    expect(unknown_type, launch_with({TARVA_ABI_ARGUMENT_LOCAL_MEMORY, 69, 1}));
    expect(runtime_failure("Maximum work dimension is 3, but work-dimension of 4 was provided."),
           launch(kernel, {}, {TARVA_ABI_LAUNCH_GLOBAL_SIZE, {4, 1, 1, 1}}));
    expect({TARVA_ABI_LOGIC_FAILURE, 3,
            "The number of kernel arguments is 18446744073709551615, but no process can hold as many."},
           launch_with({}, ~std::uint64_t{0}));
  }

  void check_memory() {
    const std::string no_future =
        "future argument is NULL, but expected a memory location to store the returned future object.";
    std::int32_t value = 1;
    CHECK(tarva_abi_memory_allocate_typed,
          "allocation result argument is NULL, but expected a memory location to return the memory object.",
          nullptr, 0, 1, nullptr);
    for (const std::uint64_t type : {0, 69})
      expect(unknown_type, call<tarva_abi_memory_allocate_typed>(nullptr, type, 1, out));
    for (const std::uint64_t count : {std::uint64_t{1} << 62, ~std::uint64_t{0} / 4 + 2, ~std::uint64_t{0}})
      expect(logic_failure("Memory allocation of " + std::to_string(count) +
                           " elements of 4 bytes would overflow the address space."),
             call<tarva_abi_memory_allocate_typed>(nullptr, TARVA_ABI_TYPE_INT32, count, out));
    CHECK(tarva_abi_get_memory_root_property, no_root, unknown, nullptr);
    expect(unknown_handle, call<tarva_abi_get_memory_root_property>(unknown, out));
    CHECK(tarva_abi_fill_memory,
          "value argument is NULL, but expected a memory location that contains a value to write.", unknown,
          nullptr, 9, 9);
    expect(unknown_handle, call<tarva_abi_fill_memory>(unknown, &value, 9, 9));
    expect(unknown_handle, copy({}, 9, floats, 9, 9));
    expect(unknown_handle, copy(ints, 9, {}, 9, 9));
    expect(logic_failure("Cannot copy between memory objects with different types."),
           copy(ints, 9, floats, 9, 9));
    CHECK(tarva_abi_async_read_memory, no_future, unknown, 9, 9, nullptr, nullptr);
    CHECK(tarva_abi_async_read_memory,
          "dest argument is NULL, but expected a memory location to write memory contents.", unknown, 9, 9,
          nullptr, out);
    expect(unknown_handle, call<tarva_abi_async_read_memory>(unknown, 9, 9, &value, out));
    CHECK(tarva_abi_async_write_memory, no_future, unknown, 9, 9, nullptr, nullptr);
    CHECK(tarva_abi_async_write_memory,
          "src argument is NULL, but expected a memory location to read memory contents.", unknown, 9, 9,
          nullptr, out);
    expect(unknown_handle, call<tarva_abi_async_write_memory>(unknown, 9, 9, &value, out));
    CHECK(tarva_abi_wait_future,
          "The argument future_error_code is NULL and a memory location to return an error code is required.",
          unknown, nullptr, out);
    expect(unknown_handle, call<tarva_abi_wait_future>(unknown, out, out));
  }

  void check_errors_and_properties() {
    const tarva_abi_tree_format_s no_format{3, 1, 1, 1, 1, 1, 1};
    const auto of_memory = root<tarva_abi_get_memory_root_property>(ints);
    CHECK(tarva_abi_get_error_root_property, no_root, unknown, nullptr);
    expect(unknown_handle, call<tarva_abi_get_error_root_property>(unknown, out));
    CHECK(tarva_abi_get_nested_error,
          "nested_error argument is NULL, but expected a memory location to write the nested error.", unknown,
          nullptr);
    expect(unknown_handle, call<tarva_abi_get_nested_error>(unknown, out));
    CHECK(tarva_abi_get_child_property_by_name,
          "parent property argument is NULL, but expected a property to search for its child.", nullptr,
          nullptr, nullptr);
    CHECK(tarva_abi_get_child_property_by_name,
          "property name argument is NULL, but expected the name of a property to search.", unknown, nullptr,
          nullptr);
    CHECK(tarva_abi_get_child_property_by_name,
          "property return pointer is NULL, but expected a memory location to write the result.", unknown,
          "NAME", nullptr);
    expect(unknown_handle, call<tarva_abi_get_child_property_by_name>(unknown, "NAME", out));
    expect(runtime_failure("tarva_abi_get_all_children_properties: parent property is NULL, but "
                           "expected a property to query for its children."),
           call<tarva_abi_get_all_children_properties>(nullptr, nullptr));
    expect(runtime_failure("tarva_abi_get_all_children_properties: property array return pointer is "
                           "NULL, but expected a memory location to return the result."),
           call<tarva_abi_get_all_children_properties>(unknown, nullptr));
    expect(unknown_handle, call<tarva_abi_get_all_children_properties>(unknown, out));
    CHECK(tarva_abi_get_property_tree_string, "property argument is NULL, but a property is expected.",
          nullptr, nullptr, nullptr);
    CHECK(tarva_abi_get_property_tree_string,
          "format argument is NULL, but a pointer to a property formatting argument is expected.", unknown,
          nullptr, nullptr);
    CHECK(tarva_abi_get_property_tree_string,
          "string return argument is NULL, but a memory location to return the property tree string is "
          "required.",
          unknown, &no_format, nullptr);
    expect(unknown_handle, call<tarva_abi_get_property_tree_string>(unknown, &no_format, out));
    CHECK(tarva_abi_get_property_tree_string, "Unknown property tree string format provided.",
          of_memory.get(), &no_format, out);
  }

#undef CHECK

  void check_what_has_no_result() {
    const auto counted = [](const std::string& kind) {
      return std::array<std::string, 3>{"ABI " + kind + " argument is nullptr and this was not expected.",
                                        "ABI " + kind + " argument is not actually a " + kind + " object.",
                                        "ABI type argument is not found."};
    };
    const auto& lookup = unknown_handle.message;
    const std::string property = "Property is not found.  Is this a double-delete or an invalid entry?";
    refuse(tarva_abi_retain_device, ints.get(), counted("device"));
    refuse(tarva_abi_release_device, ints.get(), counted("device"));
    refuse(tarva_abi_retain_program, ints.get(), counted("program"));
    refuse(tarva_abi_release_program, ints.get(), counted("program"));
    refuse(tarva_abi_retain_kernel, ints.get(), counted("kernel"));
    refuse(tarva_abi_release_kernel, ints.get(), counted("kernel"));
    refuse(tarva_abi_retain_memory, kernel.get(), counted("memory"));
    refuse(tarva_abi_release_memory, kernel.get(), {lookup, lookup, lookup});
    refuse(tarva_abi_abandon_future, ints.get(), {lookup, lookup, lookup});
    refuse(tarva_abi_free_error, ints.get(),
           {"", "ABI error argument is not actually an error object.",
            "ABI type argument is not found.  Is this a double-delete or an invalid entry?"});
    refuse(tarva_abi_free_property, ints.get(), {"", property, property});
  }

  const caller::device device = std::move(devices().front());
  const caller::program program = compile(device, source);
  const caller::kernel kernel = find_kernel(program, "flag");
  const memory ints = allocate(TARVA_ABI_TYPE_INT32, 4), floats = allocate(TARVA_ABI_TYPE_FLOAT, 4);
  const tarva_abi_launch_range_s range{TARVA_ABI_LAUNCH_GROUPS, {1}};
  tarva_abi_ir_header_s no_header{3, nullptr, 0};
};

void check_arguments() {
  log_to_console("warn");
  ::testing::internal::CaptureStderr();
  // To learn what a kernel's parameters take provokes errors, which are not worth a line.
  before_call(op::set_kernel_arg, 1, [] { raise_context_error(0, "provoked"); });
  argument_checks checks;
  checks.run();
  std::istringstream log(::testing::internal::GetCapturedStderr());
  std::string log_lines;
  for (std::string line; std::getline(log, line);)
    log_lines += line.substr(std::min(line.find("[tarva]"), line.size())) + "\n";
  if (log_lines != checks.lines)
    checks.faults << "expected log:\n" << checks.lines << "written log:\n" << log_lines;
  std::cerr << checks.faults.str();
}

TEST(argument_checks, each_has_its_place_its_words_its_code_and_its_line_in_the_log) {
  EXPECT_EXIT(run(check_arguments), ExitedWithCode(0), ::testing::Eq(""));
}

} // namespace

} // namespace scripted
