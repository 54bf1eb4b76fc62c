// What each exported function says to bad arguments: the checks in their order, each with its exact text and
// code. A row mends what the row before it was refused for and leaves all later arguments bad.
#include "tests/scripted/scripted_test.h"

#include <cstdlib>
#include <iostream>
#include <sstream>

namespace scripted {

using namespace caller;

namespace {

// An address that was never a handle and cannot be read.
constexpr struct {
  template <class T>
  operator T*() const {
    return reinterpret_cast<T*>(16);
  }
} unknown;

// Good arguments, and a place for everything that a call could write.
struct scene {
  caller::device device;
  caller::program program;
  caller::kernel kernel;
  caller::memory ints, floats;
  caller::property root;
  std::int32_t value = 1;
  tarva_abi_launch_range_s no_range{0, {1, 1, 1}}, range{TARVA_ABI_LAUNCH_GROUPS, {1}};
  tarva_abi_tree_format_s no_format{3, 1, 1, 1, 1, 1, 1};
  tarva_abi_ir_header_s no_header{3, nullptr, 0};

  struct {
    tarva_abi_device_array_s* devices;
    tarva_abi_property_s* property;
    tarva_abi_program_s* program;
    tarva_abi_kernel_s* kernel;
    tarva_abi_memory_s* memory;
    tarva_abi_future_s* future;
    tarva_abi_error_s* error;
    tarva_abi_build_result_s* build;
    tarva_abi_property_array_s* properties;
    char* text;
    std::uint64_t supported;
    long code;
  } out;

  template <auto Function, class... Arguments>
  outcome check_ir(tarva_abi_device_s* on, tarva_abi_ir_header_s* header, std::uint64_t type,
                   const char* options, Arguments... rest) {
    return call<Function>(on, header, type, "x", std::uint64_t{1}, options, rest...);
  }
  outcome launch_with(const tarva_abi_kernel_argument_s& argument, std::uint64_t count = 1) {
    return call<tarva_abi_kernel_call>(kernel.get(), &argument, count, &range);
  }
  // With one constant of this type and value.
  outcome load_with(std::uint64_t type, const void* constant_value) {
    const tarva_abi_specialization_constant_s constant{1, type, constant_value};
    tarva_abi_ir_header_s header{TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS, &constant, 1};
    return check_ir<tarva_abi_load_device_ir>(device.get(), &header, 1, "", "", &out.build);
  }
};

struct row {
  outcome expected;
  outcome (*run)(scene& s);
};

#define CALL(...)                                                                                            \
  [](scene& s) {                                                                                             \
    static_cast<void>(s);                                                                                    \
    return (__VA_ARGS__);                                                                                    \
  }
// A call that ends like this, and one whose argument check says this behind the name of the function.
#define ROW(expected, function, ...)                                                                         \
  { expected, CALL(call<function>(__VA_ARGS__)) }
#define CHECK(function, words, ...) ROW(invalid_argument(#function ": " words), function, __VA_ARGS__)

const outcome unknown_handle = runtime_failure("Lookup of internal type map failed.");
const outcome unknown_type = runtime_failure("Unknown data type.");
const outcome unknown_ir = runtime_failure("Unknown IR type.");
const outcome missing_value = logic_failure("NULL pointer provided as a pointer to a value, but "
                                            "the data type has a non-zero size.");
const outcome unknown_header = logic_failure("Unknown IR header type.");
const outcome missing_options =
    logic_failure("Attempting to make a string of the options, but the options argument is NULL.");

#define NO_ROOT                                                                                              \
  "property argument is NULL, but expected a memory "                                                        \
  "location to write the result property."

const row device_and_program_rows[] = {
    CHECK(tarva_abi_get_devices,
          "devices argument is NULL, but expected a memory location to return the device array.", nullptr),
    CHECK(tarva_abi_get_device_root_property, NO_ROOT, unknown, nullptr),
    ROW(unknown_handle, tarva_abi_get_device_root_property, unknown, &s.out.property),
    CHECK(tarva_abi_get_builtin_program,
          "program argument is NULL, but expected a memory location to write the result program.", unknown,
          nullptr),
    ROW(unknown_handle, tarva_abi_get_builtin_program, unknown, &s.out.program),
    {invalid_argument("tarva_abi_check_device_ir_support : supported argument is NULL, but should "
                      "point to a valid memory location to return a result."),
     CALL(s.check_ir<tarva_abi_check_device_ir_support>(unknown, &s.no_header, 0, nullptr, nullptr))},
    {unknown_handle, CALL(s.check_ir<tarva_abi_check_device_ir_support>(unknown, &s.no_header, 0, nullptr,
                                                                        &s.out.supported))},
    {missing_options, CALL(s.check_ir<tarva_abi_check_device_ir_support>(s.device.get(), &s.no_header, 0,
                                                                         nullptr, &s.out.supported))},
    {unknown_ir, CALL(s.check_ir<tarva_abi_check_device_ir_support>(s.device.get(), &s.no_header, 10, "",
                                                                    &s.out.supported))},
    {unknown_header, CALL(s.check_ir<tarva_abi_check_device_ir_support>(s.device.get(), &s.no_header, 9, "",
                                                                        &s.out.supported))},
    {invalid_argument("tarva_abi_load_device_ir : result argument is NULL, but should point to "
                      "a valid memory location to return the build result."),
     CALL(s.check_ir<tarva_abi_load_device_ir>(unknown, &s.no_header, 0, nullptr, nullptr, nullptr))},
    {unknown_handle,
     CALL(s.check_ir<tarva_abi_load_device_ir>(unknown, &s.no_header, 0, nullptr, nullptr, &s.out.build))},
    {missing_options, CALL(s.check_ir<tarva_abi_load_device_ir>(s.device.get(), &s.no_header, 0, nullptr,
                                                                nullptr, &s.out.build))},
    {unknown_ir,
     CALL(s.check_ir<tarva_abi_load_device_ir>(s.device.get(), &s.no_header, 0, "", nullptr, &s.out.build))},
    {unknown_header,
     CALL(s.check_ir<tarva_abi_load_device_ir>(s.device.get(), &s.no_header, 1, "", nullptr, &s.out.build))},
    {unknown_type, CALL(s.load_with(69, nullptr))},
    {missing_value, CALL(s.load_with(TARVA_ABI_TYPE_INT32, nullptr))},
    {logic_failure("IR is not supported by the device."),
     CALL(s.check_ir<tarva_abi_load_device_ir>(s.device.get(), nullptr, 5, "", nullptr, &s.out.build))},
    CHECK(tarva_abi_get_program_root_property, NO_ROOT, unknown, nullptr),
    ROW(unknown_handle, tarva_abi_get_program_root_property, unknown, &s.out.property),
    CHECK(tarva_abi_get_kernel,
          "kernel argument is NULL, but expected a memory location to write the result kernel.", unknown,
          nullptr, nullptr),
    CHECK(tarva_abi_get_kernel,
          "kernel name argument is NULL, but expected a kernel name string to extract the kernel.", unknown,
          nullptr, &s.out.kernel),
    ROW(unknown_handle, tarva_abi_get_kernel, unknown, "none", &s.out.kernel),
    {other_failure("Kernel name not found in the program."),
     CALL(call<tarva_abi_get_kernel>(s.program.get(), "none", &s.out.kernel))},
    CHECK(tarva_abi_get_kernel_root_property, NO_ROOT, unknown, nullptr),
    ROW(unknown_handle, tarva_abi_get_kernel_root_property, unknown, &s.out.property),
};

const row launch_rows[] = {
    CHECK(tarva_abi_kernel_call, "argument array is NULL but number of arguments is not zero.", unknown,
          nullptr, 1, nullptr),
    CHECK(tarva_abi_kernel_call, "launch range is NULL, so there is no way to execute the kernel.", unknown,
          nullptr, 0, nullptr),
    ROW(unknown_handle, tarva_abi_kernel_call, unknown, nullptr, 0, &s.no_range),
    CHECK(tarva_abi_kernel_call, "Unknown launch type provided in the launch range argument.", s.kernel.get(),
          nullptr, 0, &s.no_range),
    {runtime_failure("Unsupported argument type."), CALL(s.launch_with({4, 0, 0}))},
    {unknown_type, CALL(s.launch_with({TARVA_ABI_ARGUMENT_VALUE, 0, 0}))},
    {missing_value, CALL(s.launch_with({TARVA_ABI_ARGUMENT_VALUE, TARVA_ABI_TYPE_INT8, 0}))},
    {unknown_handle, CALL(s.launch_with({TARVA_ABI_ARGUMENT_MEMORY, 0, 0}))},
    {unknown_type, CALL(s.launch_with({TARVA_ABI_ARGUMENT_LOCAL_MEMORY, 69, 1}))},
    {runtime_failure("Maximum work dimension is 3, but work-dimension of 4 was provided."),
     CALL(launch(s.kernel, {}, {TARVA_ABI_LAUNCH_GLOBAL_SIZE, {4, 1, 1, 1}}))},
    {{TARVA_ABI_LOGIC_FAILURE, 3,
      "The number of kernel arguments is 18446744073709551615, but no process can hold as many."},
     CALL(s.launch_with({}, ~std::uint64_t{0}))},
};

const row memory_rows[] = {
    CHECK(tarva_abi_memory_allocate_typed,
          "allocation result argument is NULL, but expected a memory location to return the memory object.",
          nullptr, 0, 1, nullptr),
    ROW(unknown_type, tarva_abi_memory_allocate_typed, nullptr, 0, 1, &s.out.memory),
    CHECK(tarva_abi_get_memory_root_property, NO_ROOT, unknown, nullptr),
    ROW(unknown_handle, tarva_abi_get_memory_root_property, unknown, &s.out.property),
    CHECK(tarva_abi_fill_memory,
          "value argument is NULL, but expected a memory location that contains a value to write.", unknown,
          nullptr, 9, 9),
    ROW(unknown_handle, tarva_abi_fill_memory, unknown, &s.value, 9, 9),
    {unknown_handle, CALL(copy({}, 9, s.floats, 9, 9))},
    {unknown_handle, CALL(copy(s.ints, 9, {}, 9, 9))},
    {logic_failure("Cannot copy between memory objects with different types."),
     CALL(copy(s.ints, 9, s.floats, 9, 9))},
    CHECK(tarva_abi_async_read_memory,
          "future argument is NULL, but expected a memory location to store the returned future object.",
          unknown, 9, 9, nullptr, nullptr),
    CHECK(tarva_abi_async_read_memory,
          "dest argument is NULL, but expected a memory location to write memory contents.", unknown, 9, 9,
          nullptr, &s.out.future),
    ROW(unknown_handle, tarva_abi_async_read_memory, unknown, 9, 9, &s.value, &s.out.future),
    CHECK(tarva_abi_async_write_memory,
          "future argument is NULL, but expected a memory location to store the returned future object.",
          unknown, 9, 9, nullptr, nullptr),
    CHECK(tarva_abi_async_write_memory,
          "src argument is NULL, but expected a memory location to read memory contents.", unknown, 9, 9,
          nullptr, &s.out.future),
    ROW(unknown_handle, tarva_abi_async_write_memory, unknown, 9, 9, &s.value, &s.out.future),
    CHECK(tarva_abi_wait_future,
          "The argument future_error_code is NULL and a memory "
          "location to return an error code is required.",
          unknown, nullptr, &s.out.error),
    ROW(unknown_handle, tarva_abi_wait_future, unknown, &s.out.code, &s.out.error),
};

const row error_and_property_rows[] = {
    CHECK(tarva_abi_get_error_root_property, NO_ROOT, unknown, nullptr),
    ROW(unknown_handle, tarva_abi_get_error_root_property, unknown, &s.out.property),
    CHECK(tarva_abi_get_nested_error,
          "nested_error argument is NULL, but expected a memory location to write the nested error.", unknown,
          nullptr),
    ROW(unknown_handle, tarva_abi_get_nested_error, unknown, &s.out.error),
    CHECK(tarva_abi_get_child_property_by_name,
          "parent property argument is NULL, but expected a property to search for its child.", nullptr,
          nullptr, nullptr),
    CHECK(tarva_abi_get_child_property_by_name,
          "property name argument is NULL, but expected the name of a property to search.", unknown, nullptr,
          nullptr),
    CHECK(tarva_abi_get_child_property_by_name,
          "property return pointer is NULL, but expected a memory location to write the result.", unknown,
          "NAME", nullptr),
    ROW(unknown_handle, tarva_abi_get_child_property_by_name, unknown, "NAME", &s.out.property),
    {runtime_failure("tarva_abi_get_all_children_properties: parent property is NULL, but "
                     "expected a property to query for its children."),
     CALL(call<tarva_abi_get_all_children_properties>(nullptr, nullptr))},
    {runtime_failure("tarva_abi_get_all_children_properties: property array return pointer is "
                     "NULL, but expected a memory location to return the result."),
     CALL(call<tarva_abi_get_all_children_properties>(unknown, nullptr))},
    ROW(unknown_handle, tarva_abi_get_all_children_properties, unknown, &s.out.properties),
    CHECK(tarva_abi_get_property_tree_string, "property argument is NULL, but a property is expected.",
          nullptr, nullptr, nullptr),
    CHECK(tarva_abi_get_property_tree_string,
          "format argument is NULL, but a pointer to a property formatting argument is expected.", unknown,
          nullptr, nullptr),
    CHECK(tarva_abi_get_property_tree_string,
          "string return argument is NULL, but a memory location to "
          "return the property tree string is required.",
          unknown, &s.no_format, nullptr),
    ROW(unknown_handle, tarva_abi_get_property_tree_string, unknown, &s.no_format, &s.out.text),
    CHECK(tarva_abi_get_property_tree_string, "Unknown property tree string format provided.", s.root.get(),
          &s.no_format, &s.out.text),
};

#undef CHECK
#undef ROW
#undef NO_ROOT
#undef CALL

std::string converted(const std::string& message) {
  return "[tarva] [error] Caught an exception within TARVA that will be converted into an error object: " +
         message + "\n";
}

// The functions without a result leave a line and nothing else: for NULL, for a live handle of another kind,
// and for what was never a handle. An empty message is no line.
template <class Record>
void refuse(std::string& lines, void (*function)(void*, Record*), void* other,
            const std::array<std::string, 3>& messages) {
  Record* const bad[] = {nullptr, static_cast<Record*>(other), unknown};
  for (std::size_t i = 0; i < 3; ++i) {
    function(nullptr, bad[i]);
    if (!messages[i].empty())
      lines +=
          "[tarva] [error] Caught an exception within TARVA that will not be converted into an error object: " +
          messages[i] + " \n";
  }
}

std::string refuse_all(scene& s) {
  const auto counted = [](const std::string& kind) {
    return std::array<std::string, 3>{"ABI " + kind + " argument is nullptr and this was not expected.",
                                      "ABI " + kind + " argument is not actually a " + kind + " object.",
                                      "ABI type argument is not found."};
  };
  const std::array<std::string, 3> lookup{unknown_handle.message, unknown_handle.message,
                                          unknown_handle.message};
  const std::string property = "Property is not found.  Is this a double-delete or an invalid entry?";
  void* const memory = s.ints.get();
  std::string lines;
  refuse(lines, tarva_abi_retain_device, memory, counted("device"));
  refuse(lines, tarva_abi_release_device, memory, counted("device"));
  refuse(lines, tarva_abi_retain_program, memory, counted("program"));
  refuse(lines, tarva_abi_release_program, memory, counted("program"));
  refuse(lines, tarva_abi_retain_kernel, memory, counted("kernel"));
  refuse(lines, tarva_abi_release_kernel, memory, counted("kernel"));
  refuse(lines, tarva_abi_retain_memory, s.kernel.get(), counted("memory"));
  refuse(lines, tarva_abi_release_memory, s.kernel.get(), lookup);
  refuse(lines, tarva_abi_abandon_future, memory, lookup);
  refuse(lines, tarva_abi_free_error, memory,
         {"", "ABI error argument is not actually an error object.",
          "ABI type argument is not found.  Is this a double-delete or an invalid entry?"});
  refuse(lines, tarva_abi_free_property, memory, {"", property, property});
  return lines;
}

// Runs all rows, and gives what the log has to hold.
std::string run_rows(std::ostream& faults) {
  scene s;
  auto all = caller::devices();
  s.device = std::move(all[0]);
  s.program = compile(s.device, source);
  s.kernel = find_kernel(s.program, "flag");
  s.ints = allocate(TARVA_ABI_TYPE_INT32, 4);
  s.floats = allocate(TARVA_ABI_TYPE_FLOAT, 4);
  s.root = root<tarva_abi_get_memory_root_property>(s.ints);
  std::memset(&s.out, 0x55, sizeof s.out);
  const auto untouched = s.out;

  std::string lines;
  const auto run = [&](const auto& rows) {
    for (const row& one : rows) {
      const outcome ended = one.run(s);
      if (ended != one.expected)
        faults << "expected " << one.expected << "\n     got " << ended << "\n";
      if (std::memcmp(&s.out, &untouched, sizeof untouched) != 0)
        faults << "wrote a result in spite of: " << one.expected << "\n";
      lines += converted(one.expected.message);
    }
  };
  run(device_and_program_rows);
  run(launch_rows);
  run(memory_rows);
  run(error_and_property_rows);
  lines += refuse_all(s);
  // What may be NULL is.
  tarva_abi_free_device_array(nullptr, nullptr);
  tarva_abi_free_property_array(nullptr, nullptr);
  tarva_abi_free_build_result(nullptr, nullptr);
  tarva_abi_free_property_tree_string(nullptr, nullptr);
  return lines;
}

[[noreturn]] void check_arguments() {
  setenv("TARVA_LOG_TARGET", "console", 1);
  setenv("TARVA_LOG_LEVEL", "error", 1);
  set_devices({{"one", {3}}});
  ::testing::internal::CaptureStderr();
  std::ostringstream faults;
  const std::string expected = run_rows(faults);
  std::istringstream log(::testing::internal::GetCapturedStderr());
  std::string written;
  for (std::string line; std::getline(log, line);)
    written += line.substr(std::min(line.find("[tarva]"), line.size())) + "\n";
  if (written != expected)
    faults << "expected log:\n" << expected << "written log:\n" << written;
  std::cerr << faults.str();
  std::exit(0);
}

TEST(argument_checks, each_has_its_place_its_words_its_code_and_its_line_in_the_log) {
  EXPECT_EXIT(check_arguments(), ::testing::ExitedWithCode(0), ::testing::Eq(""));
}

} // namespace

} // namespace scripted
