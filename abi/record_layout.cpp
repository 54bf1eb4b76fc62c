#include "include/tarva_abi.h"

#include <cstddef>
#include <type_traits>

// Callers of other languages lay these records out by hand, word by word, so no field may ever move.
namespace {

constexpr std::size_t word = 8;

template <typename record>
constexpr bool has_words(std::size_t count) {
  return sizeof(record) == count * word && alignof(record) == word && std::is_standard_layout_v<record>;
}

static_assert(has_words<tarva_abi_property_s>(8));
static_assert(offsetof(tarva_abi_property_s, name) == 1 * word);
static_assert(offsetof(tarva_abi_property_s, has_data) == 4 * word);
static_assert(offsetof(tarva_abi_property_s, data_type) == 5 * word);
static_assert(offsetof(tarva_abi_property_s, data) == 7 * word);
static_assert(has_words<tarva_abi_device_array_s>(2));
static_assert(offsetof(tarva_abi_device_array_s, devices) == 1 * word);
static_assert(has_words<tarva_abi_property_array_s>(2));
static_assert(offsetof(tarva_abi_property_array_s, properties) == 1 * word);
static_assert(has_words<tarva_abi_build_result_s>(3));
static_assert(offsetof(tarva_abi_build_result_s, build_log) == 1 * word);
static_assert(has_words<tarva_abi_specialization_constant_s>(3));
static_assert(offsetof(tarva_abi_specialization_constant_s, value) == 2 * word);
static_assert(has_words<tarva_abi_ir_header_s>(3));
static_assert(offsetof(tarva_abi_ir_header_s, constants) == 1 * word);
static_assert(has_words<tarva_abi_kernel_argument_s>(3));
static_assert(has_words<tarva_abi_launch_range_s>(11));
static_assert(offsetof(tarva_abi_launch_range_s, words) == 1 * word);
static_assert(has_words<tarva_abi_tree_format_s>(7));
static_assert(offsetof(tarva_abi_tree_format_s, show_type) == 4 * word);
static_assert(sizeof(long) == sizeof(tarva_abi_result));

// Nor may an enumerator. These would show that one has been put in or taken out.
static_assert(TARVA_ABI_RUNTIME_FAILURE == -4 && TARVA_ABI_OBJECT_FUTURE == 6);
static_assert(TARVA_ABI_TYPE_STRING == 1 && TARVA_ABI_TYPE_UINT8V2 == 14 && TARVA_ABI_TYPE_DOUBLE16 == 68);
static_assert(TARVA_ABI_IR_SOURCE_1_0 == 1 && TARVA_ABI_IR_SPIR_V == 8 && TARVA_ABI_IR_DEVICE_BINARY == 9);
static_assert(TARVA_ABI_IR_HEADER_SPECIALIZATION_CONSTANTS == 2 && TARVA_ABI_ARGUMENT_LOCAL_MEMORY == 3);
static_assert(TARVA_ABI_LAUNCH_GROUP_PER_UNIT_SIZED == 6 && TARVA_ABI_TREE_XML == 2);

} // namespace
