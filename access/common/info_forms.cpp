#include "access/common/info_forms.h"

#include "access/common/errors.h"

namespace oryn::skerv::common {

void throw_scalar_size(std::size_t expected, std::size_t reported) {
  throw bad_implementation(
      "OpenCL implementation did not provide expected size of data.  Expected: " + std::to_string(expected) +
      " bytes, but implementation provided " + std::to_string(reported) + " bytes.");
}

void throw_array_size(std::size_t count, std::size_t expected, std::size_t reported) {
  throw bad_implementation(
      "Expected to read an array of " + std::to_string(count) +
      " elements from the OpenCL implementation.  Implementation reported the array to be " +
      std::to_string(reported) + " bytes, but expected the array to be " + std::to_string(expected) +
      " bytes.");
}

void throw_size_changed() {
  throw bad_implementation(
      "The result size for the query changed between the time the size was queried, and data was populated.  Either this query is extremely dynamic, and a bug should be filed against SKERV, or there is a bug in your OpenCL implementation.");
}

void throw_not_divisible(std::size_t reported, std::size_t element_size) {
  throw bad_implementation(
      "Expected to read an array of values from the OpenCL implementation, but the size of the array is not evenly divisible by the size of array elements. Implementation reported size: " +
      std::to_string(reported) + " bytes, each element size is expected to be " +
      std::to_string(element_size) + " bytes.");
}

void throw_too_many_elements() {
  throw bad_implementation(
      "Attempted to work around Khronos public bug #1510, and the number of array values in the result has exceeded the number of bytes representable by size_t / 2.  File a bug.");
}

void throw_absurd_size(std::size_t reported) {
  throw bad_implementation("OpenCL implementation reported a size of " + std::to_string(reported) +
                           " bytes for a query result, which is more than any such result takes.");
}

} // namespace oryn::skerv::common
