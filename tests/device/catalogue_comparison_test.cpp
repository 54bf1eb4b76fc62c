// Every property of every device that the environment offers, under each version it is offered as, against
// what OpenCL itself says of the same device in the same process. A query that the implementation refuses has
// to be an error of that property alone. Without a device it is skipped, by status 77, unless there has to be
// one.
#define CL_TARGET_OPENCL_VERSION 220
#include "tests/device/caller.h"

#include <CL/cl.h>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

namespace {

using namespace caller;

enum class form { number, flag, text, words, parts, sizes, bit, equals, embedded, full };

struct row {
  const char* key;
  cl_device_info query;
  form as;
  std::uint64_t operand = 0;
};

// A list of children of one node, and the versions that have them: 1 for 1.0 to 6 for 2.2.
struct block {
  std::string parent;
  int first, last;
  std::vector<row> rows;
};

#define ASK(query, as)                                                                                       \
  { #query, query, form::as }
#define TYPE(type)                                                                                           \
  { "CL_DEVICE_TYPE_" #type, CL_DEVICE_TYPE, form::equals, CL_DEVICE_TYPE_##type }
#define FLOAT(kind, suffix, mask)                                                                            \
  { "CL_DEVICE_" #kind "_FP_CONFIG_" suffix, CL_DEVICE_##kind##_FP_CONFIG, form::bit, mask }
#define FLOATS(kind)                                                                                         \
  FLOAT(kind, "DENORM", CL_FP_DENORM), FLOAT(kind, "INF_NAN", CL_FP_INF_NAN),                                \
      FLOAT(kind, "ROUND_TO_NEAREST", CL_FP_ROUND_TO_NEAREST),                                               \
      FLOAT(kind, "ROUND_TO_ZERO", CL_FP_ROUND_TO_ZERO), FLOAT(kind, "ROUND_TO_INF", CL_FP_ROUND_TO_INF),    \
      FLOAT(kind, "FMA", CL_FP_FMA)
#define BIT(node, suffix, mask)                                                                              \
  { #node "_" suffix, node, form::bit, mask }
#define CACHE(suffix, type)                                                                                  \
  { "CL_DEVICE_GLOBAL_MEM_CACHE_TYPE_" suffix, CL_DEVICE_GLOBAL_MEM_CACHE_TYPE, form::equals, type }
#define WIDTHS(kind)                                                                                         \
  ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_CHAR, number), ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_SHORT, number),     \
      ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_INT, number), ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_LONG, number),   \
      ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_FLOAT, number),                                                    \
      ASK(CL_DEVICE_##kind##_VECTOR_WIDTH_DOUBLE, number)

constexpr const char* OPENCL = "OPENCL";
constexpr const char* IMAGES = "CL_DEVICE_IMAGE_SUPPORT";

// clang-format off
const std::vector<block> BLOCKS = {
  {OPENCL, 1, 6, {
    TYPE(DEFAULT), TYPE(CPU), TYPE(GPU), TYPE(ACCELERATOR),
    ASK(CL_DEVICE_VENDOR_ID, number), ASK(CL_DEVICE_MAX_COMPUTE_UNITS, number),
    ASK(CL_DEVICE_MAX_WORK_ITEM_DIMENSIONS, number), ASK(CL_DEVICE_MAX_WORK_GROUP_SIZE, number),
    ASK(CL_DEVICE_MAX_WORK_ITEM_SIZES, sizes), WIDTHS(PREFERRED), ASK(CL_DEVICE_MAX_CLOCK_FREQUENCY, number),
    ASK(CL_DEVICE_ADDRESS_BITS, number), ASK(CL_DEVICE_MAX_MEM_ALLOC_SIZE, number),
    ASK(CL_DEVICE_IMAGE_SUPPORT, flag), ASK(CL_DEVICE_MAX_PARAMETER_SIZE, number),
    ASK(CL_DEVICE_MAX_SAMPLERS, number), ASK(CL_DEVICE_MEM_BASE_ADDR_ALIGN, number),
    ASK(CL_DEVICE_GLOBAL_MEM_CACHELINE_SIZE, number), ASK(CL_DEVICE_GLOBAL_MEM_CACHE_SIZE, number),
    ASK(CL_DEVICE_GLOBAL_MEM_SIZE, number), ASK(CL_DEVICE_MAX_CONSTANT_BUFFER_SIZE, number),
    ASK(CL_DEVICE_MAX_CONSTANT_ARGS, number), ASK(CL_DEVICE_LOCAL_MEM_SIZE, number),
    ASK(CL_DEVICE_ERROR_CORRECTION_SUPPORT, flag), ASK(CL_DEVICE_PROFILING_TIMER_RESOLUTION, number),
    ASK(CL_DEVICE_ENDIAN_LITTLE, flag), ASK(CL_DEVICE_AVAILABLE, flag), ASK(CL_DEVICE_COMPILER_AVAILABLE, flag),
    ASK(CL_DEVICE_NAME, text), ASK(CL_DEVICE_VENDOR, text), ASK(CL_DRIVER_VERSION, text),
    {"CL_DEVICE_PROFILE_FULL", CL_DEVICE_PROFILE, form::full},
    {"CL_DEVICE_PROFILE_EMBEDDED", CL_DEVICE_PROFILE, form::embedded},
    ASK(CL_DEVICE_VERSION, text), ASK(CL_DEVICE_EXTENSIONS, words)}},
  {OPENCL, 2, 6, {
    ASK(CL_DEVICE_PREFERRED_VECTOR_WIDTH_HALF, number), WIDTHS(NATIVE),
    ASK(CL_DEVICE_NATIVE_VECTOR_WIDTH_HALF, number), ASK(CL_DEVICE_OPENCL_C_VERSION, text)}},
  {OPENCL, 2, 3, {ASK(CL_DEVICE_HOST_UNIFIED_MEMORY, flag)}},
  {OPENCL, 2, 2, {ASK(CL_DEVICE_MIN_DATA_TYPE_ALIGN_SIZE, number)}},
  {OPENCL, 3, 6, {
    TYPE(CUSTOM), ASK(CL_DEVICE_LINKER_AVAILABLE, flag), ASK(CL_DEVICE_BUILT_IN_KERNELS, parts),
    ASK(CL_DEVICE_PREFERRED_INTEROP_USER_SYNC, flag), ASK(CL_DEVICE_PRINTF_BUFFER_SIZE, number)}},
  {OPENCL, 4, 6, {
    ASK(CL_DEVICE_MAX_GLOBAL_VARIABLE_SIZE, number), ASK(CL_DEVICE_GLOBAL_VARIABLE_PREFERRED_TOTAL_SIZE, number),
    ASK(CL_DEVICE_MAX_PIPE_ARGS, number), ASK(CL_DEVICE_PIPE_MAX_ACTIVE_RESERVATIONS, number),
    ASK(CL_DEVICE_PIPE_MAX_PACKET_SIZE, number), ASK(CL_DEVICE_PREFERRED_PLATFORM_ATOMIC_ALIGNMENT, number),
    ASK(CL_DEVICE_PREFERRED_GLOBAL_ATOMIC_ALIGNMENT, number),
    ASK(CL_DEVICE_PREFERRED_LOCAL_ATOMIC_ALIGNMENT, number)}},
  {OPENCL, 5, 6, {
    ASK(CL_DEVICE_IL_VERSION, text), ASK(CL_DEVICE_MAX_NUM_SUB_GROUPS, number),
    ASK(CL_DEVICE_SUB_GROUP_INDEPENDENT_FORWARD_PROGRESS, flag)}},
  {IMAGES, 1, 6, {
    ASK(CL_DEVICE_MAX_READ_IMAGE_ARGS, number), ASK(CL_DEVICE_IMAGE2D_MAX_WIDTH, number),
    ASK(CL_DEVICE_IMAGE2D_MAX_HEIGHT, number), ASK(CL_DEVICE_IMAGE3D_MAX_WIDTH, number),
    ASK(CL_DEVICE_IMAGE3D_MAX_HEIGHT, number), ASK(CL_DEVICE_IMAGE3D_MAX_DEPTH, number)}},
  {IMAGES, 1, 3, {ASK(CL_DEVICE_MAX_WRITE_IMAGE_ARGS, number)}},
  {IMAGES, 3, 6, {ASK(CL_DEVICE_IMAGE_MAX_BUFFER_SIZE, number), ASK(CL_DEVICE_IMAGE_MAX_ARRAY_SIZE, number)}},
  {IMAGES, 4, 6, {
    ASK(CL_DEVICE_IMAGE_PITCH_ALIGNMENT, number), ASK(CL_DEVICE_IMAGE_BASE_ADDRESS_ALIGNMENT, number),
    ASK(CL_DEVICE_MAX_READ_WRITE_IMAGE_ARGS, number)}},
  {"CL_DEVICE_SINGLE_FP_CONFIG", 1, 6, {FLOATS(SINGLE)}},
  {"CL_DEVICE_SINGLE_FP_CONFIG", 2, 6, {FLOAT(SINGLE, "SOFTWARE_EMULATED", CL_FP_SOFT_FLOAT)}},
  {"CL_DEVICE_SINGLE_FP_CONFIG", 3, 6, {
    FLOAT(SINGLE, "CORRECTLY_ROUNDED_DIVIDE_SQRT", CL_FP_CORRECTLY_ROUNDED_DIVIDE_SQRT)}},
  {"CL_DEVICE_DOUBLE_FP_CONFIG", 1, 6, {FLOATS(DOUBLE)}},
  {"CL_DEVICE_DOUBLE_FP_CONFIG", 2, 6, {FLOAT(DOUBLE, "SOFTWARE_EMULATED", CL_FP_SOFT_FLOAT)}},
  {"CL_DEVICE_GLOBAL_MEM_CACHE_TYPE", 1, 6, {
    CACHE("NONE", CL_NONE), CACHE("READ_ONLY", CL_READ_ONLY_CACHE), CACHE("READ_WRITE", CL_READ_WRITE_CACHE)}},
  {"CL_DEVICE_EXECUTION_CAPABILITIES", 1, 6, {
    BIT(CL_DEVICE_EXECUTION_CAPABILITIES, "EXEC_KERNEL", CL_EXEC_KERNEL),
    BIT(CL_DEVICE_EXECUTION_CAPABILITIES, "EXEC_NATIVE_KERNEL", CL_EXEC_NATIVE_KERNEL)}},
  {"CL_DEVICE_QUEUE_ON_HOST_PROPERTIES", 1, 6, {
    BIT(CL_DEVICE_QUEUE_ON_HOST_PROPERTIES, "OUT_OF_ORDER_EXEC", CL_QUEUE_OUT_OF_ORDER_EXEC_MODE_ENABLE),
    BIT(CL_DEVICE_QUEUE_ON_HOST_PROPERTIES, "PROFILING", CL_QUEUE_PROFILING_ENABLE)}},
  {"CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES", 4, 6, {
    BIT(CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES, "OUT_OF_ORDER_EXEC", CL_QUEUE_OUT_OF_ORDER_EXEC_MODE_ENABLE),
    BIT(CL_DEVICE_QUEUE_ON_DEVICE_PROPERTIES, "PROFILING", CL_QUEUE_PROFILING_ENABLE),
    ASK(CL_DEVICE_QUEUE_ON_DEVICE_PREFERRED_SIZE, number), ASK(CL_DEVICE_QUEUE_ON_DEVICE_MAX_SIZE, number),
    ASK(CL_DEVICE_MAX_ON_DEVICE_QUEUES, number), ASK(CL_DEVICE_MAX_ON_DEVICE_EVENTS, number)}},
  {"CL_DEVICE_SVM_CAPABILITIES", 4, 6, {
    BIT(CL_DEVICE_SVM_CAPABILITIES, "COARSE_GRAIN_BUFFER", CL_DEVICE_SVM_COARSE_GRAIN_BUFFER),
    BIT(CL_DEVICE_SVM_CAPABILITIES, "FINE_GRAIN_BUFFER", CL_DEVICE_SVM_FINE_GRAIN_BUFFER),
    BIT(CL_DEVICE_SVM_CAPABILITIES, "FINE_GRAIN_SYSTEM", CL_DEVICE_SVM_FINE_GRAIN_SYSTEM),
    BIT(CL_DEVICE_SVM_CAPABILITIES, "ATOMICS", CL_DEVICE_SVM_ATOMICS)}},
};
// clang-format on

// The loader, opened the way that keeps it out of the implementations' sight.
class raw_opencl {
public:
  raw_opencl() : library_(dlopen("libOpenCL.so.1", RTLD_NOW | RTLD_LOCAL)) {
    cl_uint count = 0;
    if (library_ == nullptr || find<decltype(clGetPlatformIDs)>("clGetPlatformIDs")(0, nullptr, &count) != 0)
      return;
    std::vector<cl_platform_id> platforms(count);
    find<decltype(clGetPlatformIDs)>("clGetPlatformIDs")(count, platforms.data(), nullptr);
    auto* get_devices = find<decltype(clGetDeviceIDs)>("clGetDeviceIDs");
    for (cl_platform_id platform : platforms) {
      if (get_devices(platform, CL_DEVICE_TYPE_ALL, 0, nullptr, &count) != CL_SUCCESS)
        continue;
      const std::size_t before = devices.size();
      devices.resize(before + count);
      get_devices(platform, CL_DEVICE_TYPE_ALL, count, devices.data() + before, nullptr);
    }
  }

  // The bytes of an answer; nothing if it is refused.
  std::unique_ptr<std::string> ask(cl_device_id device, cl_device_info query) const {
    auto* get_info = find<decltype(clGetDeviceInfo)>("clGetDeviceInfo");
    std::size_t size = 0;
    if (get_info(device, query, 0, nullptr, &size) != CL_SUCCESS)
      return nullptr;
    auto answer = std::make_unique<std::string>(size, '\0');
    return get_info(device, query, size, answer->data(), nullptr) == CL_SUCCESS ? std::move(answer) : nullptr;
  }

  std::string text(cl_device_id device, cl_device_info query) const {
    const auto answer = ask(device, query);
    return answer == nullptr ? "" : answer->c_str();
  }

  std::vector<cl_device_id> devices;

private:
  template <class Function>
  Function* find(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(library_, name));
  }

  void* library_;
};

// A value in one line: its data type, and its elements each in brackets.
std::string line(tarva_abi_data_type type, const std::vector<std::string>& elements) {
  std::string result = std::to_string(type);
  for (const std::string& element : elements)
    result += " [" + element + "]";
  return result;
}

std::string number_line(std::uint64_t number) {
  return line(TARVA_ABI_TYPE_UINT64, {std::to_string(number)});
}
std::string flag_line(bool flag) {
  return line(TARVA_ABI_TYPE_BOOLEAN, {flag ? "1" : "0"});
}

std::string list_line(std::string text, bool at_blanks) {
  std::vector<std::string> parts;
  std::istringstream in(at_blanks ? text : text + ';');
  for (std::string part; at_blanks ? bool(in >> part) : bool(std::getline(in, part, ';'));)
    if (!part.empty())
      parts.push_back(part);
  return line(TARVA_ABI_TYPE_STRING, parts);
}

const char* const REFUSED = "refused";
const char* const NO_VALUE = "no value";

// What the property has to say.
std::string expected(const raw_opencl& raw, cl_device_id device, const row& asked) {
  const auto answer = raw.ask(device, asked.query);
  if (answer == nullptr)
    return REFUSED;
  std::uint64_t number = 0;
  std::memcpy(&number, answer->data(), std::min(sizeof number, answer->size()));
  const std::string text = answer->c_str();
  switch (asked.as) {
  case form::number:
    return number_line(number);
  case form::flag:
    return flag_line(number != 0);
  case form::text:
    return line(TARVA_ABI_TYPE_STRING, {text});
  case form::words:
    return list_line(text, true);
  case form::parts:
    return list_line(text, false);
  case form::bit:
    return flag_line((number & asked.operand) != 0);
  case form::equals:
    return flag_line(number == asked.operand);
  case form::embedded:
    return flag_line(text == "EMBEDDED_PROFILE");
  case form::full:
    return flag_line(text != "EMBEDDED_PROFILE");
  case form::sizes:
    break;
  }
  std::vector<std::string> sizes;
  for (std::size_t at = 0; at + sizeof(std::size_t) <= answer->size(); at += sizeof(std::size_t)) {
    std::size_t size = 0;
    std::memcpy(&size, answer->data() + at, sizeof size);
    sizes.push_back(std::to_string(size));
  }
  return line(TARVA_ABI_TYPE_UINT64, sizes);
}

std::string value_line(const tarva_abi_property_s& of) {
  if (of.has_data == 0)
    return *of.name == '\0' ? "absent" : NO_VALUE;
  std::vector<std::string> elements;
  for (std::uint64_t i = 0; i < of.element_count; ++i) {
    if (of.data_type == TARVA_ABI_TYPE_STRING)
      elements.emplace_back(static_cast<const char* const*>(of.data)[i]);
    else if (of.data_type == TARVA_ABI_TYPE_BOOLEAN)
      elements.push_back(std::to_string(static_cast<const std::uint32_t*>(of.data)[i]));
    else
      elements.push_back(std::to_string(static_cast<const std::uint64_t*>(of.data)[i]));
  }
  return line(of.data_type, elements);
}

// What the property says.
std::string told(const property& parent, const std::string& key) {
  tarva_abi_property_s* found = nullptr;
  const outcome ended = call<tarva_abi_get_child_property_by_name>(parent.get(), key.c_str(), &found);
  if (ended.code != TARVA_ABI_OK)
    return ended.type == 7 ? REFUSED : ended.message;
  return value_line(*property(found));
}

using lines = std::map<std::string, std::string>;

std::string text_of(const lines& all) {
  std::string result;
  for (const auto& [key, value] : all)
    result += key + ": " + value + '\n';
  return result;
}

// One device under one version, and the raw device that it is.
struct pair {
  const raw_opencl& raw;
  cl_device_id device;
  int version;
};

bool has_images(const pair& of) {
  return expected(of.raw, of.device, ASK(CL_DEVICE_IMAGE_SUPPORT, flag)) == flag_line(true);
}

lines expected_children(const pair& of, const std::string& parent) {
  lines result;
  for (const block& each : BLOCKS) {
    if (of.version < each.first || of.version > each.last)
      continue;
    if (parent == OPENCL && each.parent != OPENCL && each.parent != IMAGES)
      result[each.parent] = NO_VALUE;
    if (parent == each.parent && (parent != IMAGES || has_images(of)))
      for (const row& child : each.rows)
        result[child.key] = expected(of.raw, of.device, child);
  }
  return result;
}

// Of the children that the library lists. Where one is refused it cannot list any; then of those that it has
// to have.
lines told_children(const property& parent, const lines& wanted) {
  lines result;
  tarva_abi_property_array_s* found = nullptr;
  const outcome ended = call<tarva_abi_get_all_children_properties>(parent.get(), &found);
  if (ended.code == TARVA_ABI_OK) {
    for (std::uint64_t i = 0; i < found->count; ++i) {
      const property child(found->properties[i]);
      if (*child->name != '\0')
        result[child->name] = value_line(*child);
    }
    tarva_abi_free_property_array(nullptr, found);
    return result;
  }
  EXPECT_EQ(ended.type, 7U) << ended;
  for (const auto& [key, value] : wanted)
    result[key] = told(parent, key);
  return result;
}

void compare(const pair& of, const property& root) {
  const std::string name = expected(of.raw, of.device, ASK(CL_DEVICE_NAME, text));
  EXPECT_EQ(told(root, "NAME"), name);

  const property opencl = child(root, OPENCL);
  const std::size_t counts[] = {45, 56, 60, 69, 72, 72};
  const lines wanted = expected_children(of, OPENCL);
  EXPECT_EQ(wanted.size(), counts[of.version - 1]);
  EXPECT_EQ(text_of(told_children(opencl, wanted)), text_of(wanted));
  EXPECT_EQ(told(opencl, "DEDICATED_LOCAL_MEMORY"),
            expected(of.raw, of.device, {"", CL_DEVICE_LOCAL_MEM_TYPE, form::equals, CL_LOCAL}));

  for (const auto& [key, value] : wanted) {
    if (value != REFUSED) {
      const lines below = expected_children(of, key);
      EXPECT_EQ(text_of(told_children(child(opencl, key.c_str()), below)), text_of(below)) << key;
    }
  }
}

// Devices of one version come in the order in which OpenCL has them, if perhaps not all.
TEST(catalogue, says_what_opencl_says) {
  const raw_opencl raw;
  std::map<int, std::size_t> next;
  std::set<cl_device_id> compared;
  for (const device& each : devices()) {
    const property root = caller::root<tarva_abi_get_device_root_property>(each);
    const std::string summary = text(child(root, "FRIENDLY_SUMMARY"));
    SCOPED_TRACE(summary);
    const auto version = std::string("1.0 1.1 1.2 2.0 2.1 2.2").find(summary.substr(7, 3)) / 4 + 1;
    ASSERT_LE(version, 6U);
    const std::string start = "OpenCL " + summary.substr(7, 3) + " device named: ";
    std::size_t& i = next[static_cast<int>(version)];
    while (i < raw.devices.size() && summary != start + raw.text(raw.devices[i], CL_DEVICE_NAME))
      ++i;
    ASSERT_LT(i, raw.devices.size()) << "no such device";
    EXPECT_EQ(told(root, "FRIENDLY_SHORT_DESCRIPTION"), line(TARVA_ABI_TYPE_STRING, {summary}));
    compared.insert(raw.devices[i]);
    compare({raw, raw.devices[i++], static_cast<int>(version)}, root);
  }
  EXPECT_EQ(compared.size(), raw.devices.size()) << "devices that the library does not have";
}

} // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (devices().empty()) {
    std::printf("this environment offers no OpenCL device\n");
    return std::getenv("TARVA_TEST_NEEDS_DEVICE") == nullptr ? 77 : EXIT_FAILURE;
  }
  return RUN_ALL_TESTS();
}
