#include "access/common/errors.h"
#include "access/common/info_forms.h"
#include "access/common/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

using namespace oryn::skerv::common;

namespace {

// The exact class is thrown, with its base, text and status.
template <typename Class, typename Base>
void expect_status(std::int32_t status, const std::string& message) {
  SCOPED_TRACE(status);
  static_assert(std::is_base_of_v<Base, Class> && std::is_base_of_v<opencl_error, Base>);
  EXPECT_EQ(status_message(status), message);
  EXPECT_EQ(Class().what(), message);
  try {
    check_status(status);
    FAIL() << "nothing was thrown";
  } catch (const opencl_error& fault) {
    EXPECT_EQ(typeid(fault), typeid(Class));
    EXPECT_EQ(fault.what(), message);
    EXPECT_EQ(fault.get_status(), status);
  }
}

// clang-format off
TEST(errors, every_named_status_has_its_class) {
  expect_status<device_not_found, logic_error>(-1, "No matching device was found.");
  expect_status<image_format_not_supported, logic_error>(-10, "Image format is not supported by the device.");
  expect_status<build_program_failure, runtime_error>(-11, "Failed to build the program.");
  expect_status<map_failure, runtime_error>(-12, "Failed to map memory into host address space.");
  expect_status<misaligned_sub_buffer_offset, runtime_error>(-13, "Sub-buffer is misaligned.");
  expect_status<exec_status_error_for_events_in_wait_list, runtime_error>(-14, "An operation that blocked depended upon a failed event.");
  expect_status<compile_program_failure, logic_error>(-15, "Failed to compile the program.");
  expect_status<linker_not_available, logic_error>(-16, "Linker is not actually available.");
  expect_status<link_program_failure, runtime_error>(-17, "Failed to link compiled binaries, or libraries.");
  expect_status<device_partition_failed, runtime_error>(-18, "Could not further partition the device.");
  expect_status<kernel_arg_info_not_available, logic_error>(-19, "Kernel argument information is not available for the kernel.");
  expect_status<device_not_available, runtime_error>(-2, "Device is not available.");
  expect_status<compiler_not_available, logic_error>(-3, "A compiler is not available.");
  expect_status<invalid_value, logic_error>(-30, "One of the values is not valid.");
  expect_status<invalid_device_type, logic_error>(-31, "Invalid device type value provided.");
  expect_status<invalid_platform, logic_error>(-32, "Platform is invalid.  You should never get this error.  Please file a bug report.");
  expect_status<invalid_device, logic_error>(-33, "Device argument is not valid.");
  expect_status<invalid_context, logic_error>(-34, "Context provided was not the right one or invalid.");
  expect_status<invalid_queue_properties, logic_error>(-35, "Queue properties are not supported by the device.");
  expect_status<invalid_command_queue, logic_error>(-36, "Command-queue provided is not a valid command-queue.");
  expect_status<invalid_host_ptr, logic_error>(-37, "Host pointer is null, but a non-null pointer was expected.");
  expect_status<invalid_mem_object, logic_error>(-38, "Memory object argument (buffer?) is not valid.");
  expect_status<invalid_image_format_descriptor, logic_error>(-39, "Image format is invalid or missing.");
  expect_status<mem_object_allocation_failure, runtime_error>(-4, "Failed to allocate memory.");
  expect_status<invalid_image_size, logic_error>(-40, "Image dimensions specified exceed maximum supported by device.");
  expect_status<invalid_sampler, logic_error>(-41, "Sampler object is not valid.");
  expect_status<invalid_binary, runtime_error>(-42, "Invalid program binary encountered, or incorrect binary for device.");
  expect_status<invalid_build_options, logic_error>(-43, "Build options provided are not valid.");
  expect_status<invalid_program, logic_error>(-44, "Program argument is not valid.");
  expect_status<invalid_program_executable, logic_error>(-45, "No successfully built executable for the program.");
  expect_status<invalid_kernel_name, logic_error>(-46, "Kernel name not found in the program.");
  expect_status<invalid_kernel_definition, logic_error>(-47, "Kernel definition is not valid for all devices provided.");
  expect_status<invalid_kernel, logic_error>(-48, "Provided argument is not a valid kernel.");
  expect_status<invalid_arg_index, logic_error>(-49, "Argument index is not valid.");
  expect_status<out_of_resources, runtime_error>(-5, "Failed to allocate resources on the device.");
  expect_status<invalid_arg_value, logic_error>(-50, "Provided argument value is not valid.");
  expect_status<invalid_arg_size, logic_error>(-51, "Argument size provided does not match size for provided data type.");
  expect_status<invalid_kernel_args, logic_error>(-52, "Kernel argument values are not specified, or memory region doesn't match.");
  expect_status<invalid_work_dimension, logic_error>(-53, "Work dimension value is out-of-range.");
  expect_status<invalid_work_group_size, logic_error>(-54, "Work-group size does not match expected size, or is invalid.");
  expect_status<invalid_work_item_size, logic_error>(-55, "Work-item size exceeds device maximum in some dimension.");
  expect_status<invalid_global_offset, logic_error>(-56, "Global offset overflows size_t type.");
  expect_status<invalid_event_wait_list, logic_error>(-57, "Invalid event wait list provided.");
  expect_status<invalid_event, logic_error>(-58, "Invalid event provided.");
  expect_status<invalid_operation, logic_error>(-59, "Operation is not supported, or violates permissions.");
  expect_status<out_of_host_memory, runtime_error>(-6, "Failed to allocate memory on the host.");
  expect_status<invalid_gl_object, logic_error>(-60, "GL object does not exist, or is an incorrect type, or is not properly associated.");
  expect_status<invalid_buffer_size, logic_error>(-61, "Buffer size is zero, or too large.");
  expect_status<invalid_mip_level, logic_error>(-62, "MIP level is out-of-range or not supported.");
  expect_status<invalid_global_work_size, logic_error>(-63, "Global work size dimensions are out-of-range or not provided.");
  expect_status<invalid_property, logic_error>(-64, "Context property is not supported.");
  expect_status<invalid_image_descriptor, logic_error>(-65, "Invalid or missing image descriptor.");
  expect_status<invalid_compiler_options, logic_error>(-66, "Compiler options provided are not valid.");
  expect_status<invalid_linker_options, logic_error>(-67, "Linker options provided are not valid.");
  expect_status<invalid_device_partition_count, logic_error>(-68, "Invalid partitioning of devices.");
  expect_status<invalid_pipe_size, logic_error>(-69, "Pipe packet size is out-of-range.");
  expect_status<profiling_info_not_available, logic_error>(-7, "Event could not be profiled, or command-queue does not support profiling.");
  expect_status<invalid_device_queue, logic_error>(-70, "Invalid device queue argument provided.");
  expect_status<invalid_spec_id, logic_error>(-71, "Invalid device queue argument provided.");
  expect_status<max_size_restriction_exceeded, logic_error>(-72, "Size of memory object exceeds the maximum size restriction that was set.");
  expect_status<mem_copy_overlap, logic_error>(-8, "Memory copy source and destination regions overlap.");
  expect_status<image_format_mismatch, logic_error>(-9, "Image formats do not match.");
}
// clang-format on

TEST(errors, other_statuses_are_unknown) {
  EXPECT_NO_THROW(check_status(0));
  EXPECT_EQ(status_message(0), "Success.");
  for (const std::int32_t status : {-20, -25, -29, -73, -1000, 1, 2147483647, -2147483647 - 1}) {
    SCOPED_TRACE(status);
    EXPECT_EQ(status_message(status), "Unknown error.");
    try {
      check_status(status);
      FAIL() << "nothing was thrown";
    } catch (const unknown_opencl_error& fault) {
      EXPECT_EQ(fault.what(), "Unknown OpenCL Error Code: " + std::to_string(status));
      EXPECT_EQ(fault.get_status(), status);
    }
  }
  static_assert(!std::is_base_of_v<opencl_error, unknown_opencl_error>);
  static_assert(!std::is_base_of_v<opencl_error, bad_implementation>);
  static_assert(std::is_base_of_v<error, unknown_opencl_error> &&
                std::is_base_of_v<error, bad_implementation>);
}

using words = std::vector<std::string>;

TEST(text, lists_are_cut_and_joined) {
  EXPECT_EQ(split_on_whitespace(" cl_khr_a   cl_khr_b\t\v\f\r\n"), (words{"cl_khr_a", "cl_khr_b"}));
  EXPECT_EQ(split_on_whitespace(" \n"), words{});
  EXPECT_EQ(split_on_semicolon(";first;;second name;"), (words{"first", "second name"}));
  EXPECT_EQ(split_on_semicolon(""), words{});
  EXPECT_EQ(join_with_semicolon({"a", "", "b"}), "a;;b");
  EXPECT_EQ(join_with_semicolon({"a", "a"}), "a;a");
  EXPECT_EQ(join_with_semicolon({}), "");
}

TEST(text, an_extension_matches_what_it_begins) {
  EXPECT_TRUE(has_extension({"cl_khr_fp64", "cl_khr_il_program"}, "cl_khr_il_program"));
  EXPECT_TRUE(has_extension({"CL_KHR_IL"}, "cl_khr_il_program"));
  EXPECT_TRUE(has_extension({"cl_khr_il"}, "CL_KHR_IL_PROGRAM"));
  EXPECT_FALSE(has_extension({"cl_khr_il_program_2"}, "cl_khr_il_program"));
  EXPECT_FALSE(has_extension({"khr_il_program", "cl_khr_spir"}, "cl_khr_il_program"));
  EXPECT_FALSE(has_extension({}, "cl_khr_spir"));
}

// Answers the size query and then each further call in turn, filling the buffer with counting bytes.
struct scripted_query {
  std::vector<std::size_t> reports;
  mutable std::vector<std::size_t> asked{};

  void ask(std::size_t size, void* value, std::size_t* reported) const {
    auto* bytes = static_cast<unsigned char*>(value);
    for (std::size_t i = 0; i < size; ++i)
      bytes[i] = static_cast<unsigned char>(i + 1);
    *reported = reports.at(asked.size());
    asked.push_back(size);
  }
  std::size_t ask_size() const {
    std::size_t size = 0;
    ask(0, nullptr, &size);
    return size;
  }
};

template <typename Read>
std::string fault_of(Read read) {
  try {
    read();
  } catch (const bad_implementation& fault) {
    return fault.what();
  }
  return "";
}

const std::string size_changed =
    "The result size for the query changed between the time the size was queried, and data was populated.  "
    "Either this query is extremely dynamic, and a bug should be filed against SKERV, or there is a bug in your "
    "OpenCL implementation.";

std::string not_divisible(const std::string& size) {
  return "Expected to read an array of values from the OpenCL implementation, but the size of the array is not "
         "evenly divisible by the size of array elements. Implementation reported size: " +
         size + " bytes, each element size is expected to be 8 bytes.";
}

TEST(info_forms, a_scalar_counts_only_if_the_second_report_fits) {
  for (const std::size_t first : {4, 0, 17}) {
    const scripted_query query{{first, 4}};
    EXPECT_EQ(get_scalar_info<std::uint32_t>(query), 0x04030201u);
    EXPECT_EQ(query.asked, (std::vector<std::size_t>{0, first == 0 ? 8u : 4u}));
  }
  for (const std::size_t first : {8, 4, 0}) {
    EXPECT_EQ(fault_of([&] {
                get_scalar_info<std::uint32_t>(scripted_query{{first, 8}});
              }),
              "OpenCL implementation did not provide expected size of data.  Expected: 4 bytes, but "
              "implementation provided 8 bytes.");
  }
}

TEST(info_forms, an_array_of_fixed_size_is_read_like_a_scalar) {
  const scripted_query query{{0, 24}};
  EXPECT_EQ((get_fixed_array_info<std::uint64_t, 3>(query)[2]), 0x1817161514131211u);
  EXPECT_EQ(query.asked, (std::vector<std::size_t>{0, 48}));
  EXPECT_EQ(
      fault_of([] {
        get_fixed_array_info<std::uint64_t, 3>(scripted_query{{16, 16}});
      }),
      "Expected to read an array of 3 elements from the OpenCL implementation.  Implementation reported "
      "the array to be 16 bytes, but expected the array to be 24 bytes.");
}

TEST(info_forms, a_string_loses_its_terminator) {
  EXPECT_EQ(get_string_info(scripted_query{{4, 4}}), "\1\2\3");
  EXPECT_EQ(get_string_info(scripted_query{{1, 1}}), "");
  const scripted_query empty{{0}};
  EXPECT_EQ(get_string_info(empty), "");
  EXPECT_EQ(empty.asked.size(), 1u);
  EXPECT_EQ(fault_of([] { get_string_info(scripted_query{{4, 3}}); }), size_changed);
}

TEST(info_forms, a_vector_of_reported_size) {
  EXPECT_EQ(get_vector_info<std::uint64_t>(scripted_query{{16, 16}}).at(1), 0x100f0e0d0c0b0a09u);
  EXPECT_EQ(fault_of([] { get_vector_info<std::uint64_t>(scripted_query{{12, 12}}); }), not_divisible("12"));
  EXPECT_EQ(fault_of([] { get_vector_info<std::uint64_t>(scripted_query{{16, 8}}); }), size_changed);
}

TEST(info_forms, a_vector_of_unreported_size_is_asked_for_with_growing_buffers) {
  const scripted_query growing{{0, 800, 1600, 2400}};
  const auto values = get_vector_info<std::uint64_t>(growing);
  EXPECT_EQ(values.size(), 300u);
  EXPECT_EQ(values[1], 0x100f0e0d0c0b0a09u);
  EXPECT_EQ(growing.asked, (std::vector<std::size_t>{0, 800, 1600, 3200}));

  const scripted_query empty{{0, 0}};
  EXPECT_TRUE(get_vector_info<std::uint64_t>(empty).empty());
  EXPECT_EQ(empty.asked, (std::vector<std::size_t>{0, 800}));

  // More than the buffer holds: what was not delivered is zero.
  EXPECT_EQ(get_vector_info<std::uint64_t>(scripted_query{{0, 1608}}).back(), 0u);
  EXPECT_EQ(fault_of([] { get_vector_info<std::uint64_t>(scripted_query{{0, 20}}); }), not_divisible("20"));
}

} // namespace
