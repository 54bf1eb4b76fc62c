#include "fuzz/call_player.h"

#include "tests/scripted/scripted_qv.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace fuzz {

namespace {

using op = qv::operation;

std::uint64_t call_count = 0;

// Larger than any memory object that can be made here.
constexpr std::uint64_t MAX_ELEMENTS = 512;
alignas(128) std::uint8_t host_block[MAX_ELEMENTS * 128];

constexpr std::uint64_t FAR = std::uint64_t{1} << 63;
constexpr std::uint64_t POSITIONS[] = {0, 1, 2, 3, 5, 16, 511, MAX_ELEMENTS, FAR, ~std::uint64_t{0}};
constexpr std::uint64_t SIZES[] = {1, 2, 0, 4, 8, 64, 3, 256, std::uint64_t{1} << 33, FAR};

const std::string SOURCE = R"(
  kernel void add(global int* data, int amount) {}
  kernel void sum(global int* out, global const int* a, global const int* b) {}
  kernel void scratch(global short* data, local float* room, short4 values) {}
  kernel __attribute__((reqd_work_group_size(8, 4, 2))) void fixed(global int* data) {}
  kernel void empty() {}
)";
const std::string TEXTS[] = {SOURCE, "BIN:" + SOURCE, "SPV:" + SOURCE, "BC" + SOURCE, "#error", "", "kernel"};
struct kernel_choice {
  const char* name;
  std::vector<parameter> parameters;
};
const kernel_choice KERNELS[] = {
    {"sum", {parameter::memory, parameter::memory, parameter::memory}},
    {"add", {parameter::memory, parameter::value}},
    {"scratch", {parameter::memory, parameter::local, parameter::value}},
    {"fixed", {parameter::memory}},
    {"empty", {}},
    {"copy_all", {parameter::memory}},
    {"none", {}},
    {nullptr, {}},
};
const char* const LABELS[] = {"", "a label", nullptr};
const char* const OPTIONS[] = {"", "-w", "-DX=1 -w", "-bad", nullptr};
const char* const CHILDREN[] = {"OPENCL",
                                "NAME",
                                "KERNEL_NAMES",
                                "CL_PROGRAM_BINARY",
                                "CL_DEVICE_NAME",
                                "TYPE",
                                "EXCEPTION_TYPE",
                                "EXCEPTION_MESSAGE",
                                "OBJECT_ID",
                                "none",
                                "",
                                "ROOT",
                                nullptr};

struct plan {
  void (*make)(op, int, std::int32_t);
  op operation;
  std::int32_t value;
};
// What the library has to survive. A queue that refuses a command ends the process, which is right.
constexpr plan PLANS[] = {
    {scripted::fail_event, op::enqueue_write_buffer, -5},
    {scripted::fail_event, op::enqueue_read_buffer, -5},
    {scripted::fail_event, op::enqueue_copy_buffer, -5},
    {scripted::fail_event, op::enqueue_fill_buffer, -5},
    {scripted::fail_event, op::enqueue_nd_range_kernel, -1000},
    {scripted::fail_call, op::create_buffer, -4},
    {scripted::fail_transport, op::create_buffer, -1},
    {scripted::fail_call, op::get_event_info, -6},
    {scripted::fail_call, op::get_device_info, -5},
    {scripted::fail_transport, op::get_device_info, -1},
    {scripted::fail_call, op::get_program_info, -5},
    {scripted::fail_call, op::get_program_build_info, -5},
    {scripted::fail_call, op::get_kernel_work_group_info, -5},
    {scripted::fail_call, op::create_program_with_source, -6},
    {scripted::fail_call, op::create_program_with_binary, -42},
    {scripted::fail_call, op::build_program, -11},
};

} // namespace

void demand(bool holds, const char* what) {
  if (holds)
    return;
  std::fprintf(stderr, "broken promise: %s\n", what);
  std::abort();
}

std::uint64_t call_player::calls_made() {
  return call_count;
}

template <auto Function, class... Arguments>
bool call_player::call(expected how, Arguments... arguments) {
  out<tarva_abi_error_s*> error;
  const tarva_abi_error_s* const untouched = error.value;
  const tarva_abi_result code = Function(nullptr, arguments..., &error.value);
  ++call_count;
  // A device's thread is ending the process; the engine then tells with which input.
  if (code == TARVA_ABI_UNKNOWN_FAILURE)
    std::this_thread::sleep_for(std::chrono::seconds(60));
  demand(how != expected::failure || code != TARVA_ABI_OK, "what cannot work fails");
  demand(how != expected::success || code == TARVA_ABI_OK, "what has to work works");
  switch (code) {
  case TARVA_ABI_OK:
    demand(error.value == untouched, "a success leaves the error alone");
    return true;
  case TARVA_ABI_OUT_OF_MEMORY:
    demand(!error.value, "lack of memory has no error object");
    return false;
  case TARVA_ABI_LOGIC_FAILURE:
  case TARVA_ABI_RUNTIME_FAILURE:
    demand(error.value && error.value != untouched, "a failure has an error object");
    handles_.add(error.value);
    return false;
  default:
    demand(false, "every failure is known");
    return false;
  }
}

template <auto Function, class Record, class... Arguments>
Record* call_player::make(expected how, out<Record*> made, Arguments... arguments) {
  const Record* const untouched = made.value;
  if (!call<Function>(made.wanted ? how : expected::failure, arguments..., made.where())) {
    demand(made.value == untouched, "a failure writes no result");
    return nullptr;
  }
  demand(made.value != untouched, "a success writes its result");
  return made.value;
}

template <auto Function, class Record>
void call_player::get_root() {
  auto* const of = pick<Record>();
  constexpr bool always =
      kind_of<Record> == TARVA_ABI_OBJECT_ERROR || kind_of<Record> == TARVA_ABI_OBJECT_MEMORY;
  const expected how = always && handles_.is_live(of) ? expected::success : live_only(of);
  look_at(make<Function>(how, make_out<tarva_abi_property_s*>(), of));
}

template <auto Function, class Record>
void call_player::retain() {
  auto* const handle = pick<Record>();
  handles_.retain(handle);
  Function(nullptr, handle);
  ++call_count;
}

template <auto Function, class Record>
void call_player::release() {
  auto* const handle = pick<Record>();
  handles_.release(handle);
  Function(nullptr, handle);
  ++call_count;
}

template <auto Function, class Record>
void call_player::release_all() {
  while (auto* const handle = handles_.any_live<Record>()) {
    handles_.release(handle);
    Function(nullptr, handle);
    ++call_count;
  }
}

void call_player::get_devices() {
  auto* const array = make<tarva_abi_get_devices>(expected::success, make_out<tarva_abi_device_array_s*>());
  if (!array)
    return;
  for (std::uint64_t i = 0; i < array->count; ++i)
    handles_.add(array->devices[i]);
  tarva_abi_free_device_array(nullptr, array);
}

void call_player::get_builtin_program() {
  auto* const of = pick<tarva_abi_device_s>();
  if (auto* const made = make<tarva_abi_get_builtin_program>(live_only(of), out<tarva_abi_program_s*>(), of))
    handles_.add(made);
}

// What makes a program, or does not.
struct call_player::ir_choice {
  tarva_abi_specialization_constant_s constants[2];
  tarva_abi_ir_header_s header;
  bool has_header;
  tarva_abi_ir_type type;
  const void* data;
  std::uint64_t size;
  const char* options;

  tarva_abi_ir_header_s* header_or_none() { return has_header ? &header : nullptr; }
};

call_player::ir_choice call_player::choose_ir() {
  ir_choice made{};
  for (auto& constant : made.constants)
    constant = {bytes_.below(3), bytes_.below(70), bytes_.rarely(8) ? nullptr : host_block};
  made.has_header = bytes_.rarely(3);
  made.header = {bytes_.below(4), bytes_.rarely(8) ? nullptr : made.constants, bytes_.below(3)};
  // The types follow the texts, so that half of the choices fit.
  const std::size_t text = bytes_.below(std::size(TEXTS));
  constexpr tarva_abi_ir_type FITTING[] = {TARVA_ABI_IR_SOURCE_1_0, TARVA_ABI_IR_DEVICE_BINARY,
                                           TARVA_ABI_IR_SPIR_V, TARVA_ABI_IR_SPIR_1_2};
  made.type = text < std::size(FITTING) && !bytes_.rarely(4) ? FITTING[text] : bytes_.below(11);
  made.data = bytes_.rarely(16) ? nullptr : TEXTS[text].data();
  made.size = TEXTS[text].size();
  if (bytes_.rarely(8)) {
    made.data = bytes_.data();
    made.size = bytes_.size();
  }
  made.options = bytes_.one_of(OPTIONS);
  return made;
}

void call_player::check_support() {
  auto* const on = pick<tarva_abi_device_s>();
  ir_choice ir = choose_ir();
  auto supported = make_out<std::uint64_t>();
  const expected how = supported.wanted && ir.options ? live_only(on) : expected::failure;
  const std::uint64_t untouched = supported.value;
  const bool done = call<tarva_abi_check_device_ir_support>(how, on, ir.header_or_none(), ir.type, ir.data,
                                                            ir.size, ir.options, supported.where());
  demand(done ? supported.value <= 1 : supported.value == untouched, "support is 1, 0 or not written");
}

void call_player::load_program() {
  auto* const on = pick<tarva_abi_device_s>();
  ir_choice ir = choose_ir();
  auto* const result = make<tarva_abi_load_device_ir>(
      ir.options ? live_only(on) : expected::failure, make_out<tarva_abi_build_result_s*>(), on,
      ir.header_or_none(), ir.type, ir.data, ir.size, ir.options, bytes_.one_of(LABELS));
  if (!result)
    return;
  handles_.add(result->program);
  demand(result->success <= 1, "success is 1 or 0");
  demand(!result->build_log || *result->build_log, "an empty log is none");
  tarva_abi_free_build_result(nullptr, result);
}

// The limits of launches are read here. One that cannot be read is not checked, and a launch beyond it then ends the
// process, so no failure may be pending.
void call_player::get_kernel() {
  scripted::no_failure_left();
  auto* const in = pick<tarva_abi_program_s>();
  const kernel_choice& chosen = bytes_.one_of(KERNELS);
  auto* const made = make<tarva_abi_get_kernel>(chosen.name ? live_only(in) : expected::failure,
                                                make_out<tarva_abi_kernel_s*>(), in, chosen.name);
  if (!made)
    return;
  handles_.add(made);
  parameters_[made] = chosen.parameters;
}

// Of a kind that the parameter takes: a value or a size in the place of a buffer is found by the device only,
// where it ends the process.
tarva_abi_kernel_argument_s call_player::choose_argument(parameter takes) {
  if (bytes_.rarely(32))
    return {4 + bytes_.below(2), 0, 0};
  switch (takes) {
  case parameter::value:
    return {TARVA_ABI_ARGUMENT_VALUE, 7 + bytes_.below(64),
            reinterpret_cast<std::uint64_t>(bytes_.rarely(16) ? nullptr : host_block)};
  case parameter::local:
    return {TARVA_ABI_ARGUMENT_LOCAL_MEMORY, 1 + bytes_.below(69), bytes_.one_of(SIZES)};
  default:
    if (bytes_.rarely(16))
      return {TARVA_ABI_ARGUMENT_NULL, ~std::uint64_t{0}, ~std::uint64_t{0}};
    return {TARVA_ABI_ARGUMENT_MEMORY, reinterpret_cast<std::uint64_t>(pick<tarva_abi_memory_s>()),
            ~std::uint64_t{0}};
  }
}

// Behind the end of the input, a launch that works.
void call_player::launch() {
  constexpr tarva_abi_launch_type TYPES[] = {3, 1, 2, 4, 5, 6, 0, 7};
  auto* const called = pick<tarva_abi_kernel_s>();
  const auto& parameters = parameters_[called];
  std::vector<tarva_abi_kernel_argument_s> arguments;
  const std::size_t count = bytes_.rarely(16) ? bytes_.below(5) : parameters.size();
  for (std::size_t i = 0; i < count; ++i)
    arguments.push_back(choose_argument(i < parameters.size() ? parameters[i] : parameter::memory));
  tarva_abi_launch_range_s range{bytes_.one_of(TYPES), {}};
  for (std::uint64_t& word : range.words)
    word = bytes_.rarely(4) ? bytes_.one_of(SIZES) : 1;
  const bool has_range = !bytes_.rarely(32);
  call<tarva_abi_kernel_call>(has_range ? live_only(called) : expected::failure, called,
                              bytes_.rarely(32) ? nullptr : arguments.data(), count,
                              has_range ? &range : nullptr);
}

void call_player::allocate() {
  constexpr std::uint64_t COUNTS[] = {16, 1, 3, 0, MAX_ELEMENTS, 64, 5, FAR, FAR + 1, ~std::uint64_t{0}};
  const char* const label = bytes_.one_of(LABELS);
  const std::uint64_t type = bytes_.rarely(3) ? bytes_.below(70) : std::uint64_t{TARVA_ABI_TYPE_INT32};
  const std::uint64_t count = bytes_.one_of(COUNTS);
  const expected how = type < 1 || type > 68 || count >= FAR ? expected::failure : expected::either;
  if (auto* const made =
          make<tarva_abi_memory_allocate_typed>(how, make_out<tarva_abi_memory_s*>(), label, type, count))
    handles_.add(made);
}

void call_player::fill() {
  auto* const target = pick<tarva_abi_memory_s>();
  const void* const value = bytes_.rarely(16) ? nullptr : host_block;
  const std::uint64_t start = bytes_.one_of(POSITIONS), count = bytes_.one_of(POSITIONS);
  call<tarva_abi_fill_memory>(value ? live_only(target) : expected::failure, target, value, start, count);
}

void call_player::copy() {
  auto* const from = pick<tarva_abi_memory_s>();
  auto* const to = pick<tarva_abi_memory_s>();
  const std::uint64_t start = bytes_.one_of(POSITIONS), to_start = bytes_.one_of(POSITIONS);
  call<tarva_abi_copy_memory>(live_only(from, to), from, start, to, to_start, bytes_.one_of(POSITIONS));
}

void call_player::read() {
  auto* const from = pick<tarva_abi_memory_s>();
  void* const to = bytes_.rarely(16) ? nullptr : host_block;
  const std::uint64_t start = bytes_.one_of(POSITIONS), count = bytes_.one_of(POSITIONS);
  if (auto* const made = make<tarva_abi_async_read_memory>(
          to ? live_only(from) : expected::failure, make_out<tarva_abi_future_s*>(), from, start, count, to))
    handles_.add(made);
}

void call_player::write() {
  auto* const to = pick<tarva_abi_memory_s>();
  const void* const from = bytes_.rarely(16) ? nullptr : host_block;
  const std::uint64_t start = bytes_.one_of(POSITIONS), count = bytes_.one_of(POSITIONS);
  if (auto* const made = make<tarva_abi_async_write_memory>(
          from ? live_only(to) : expected::failure, make_out<tarva_abi_future_s*>(), to, start, count, from))
    handles_.add(made);
}

void call_player::wait() {
  auto* const on = pick<tarva_abi_future_s>();
  auto code = make_out<long>();
  auto failure = make_out<tarva_abi_error_s*>();
  const bool possible = handles_.is_live(on) && code.wanted;
  if (!call<tarva_abi_wait_future>(possible ? expected::success : expected::failure, on, code.where(),
                                   failure.where()))
    return;
  handles_.release(on);
  demand(code.value <= 0 && code.value >= TARVA_ABI_RUNTIME_FAILURE, "a future ends with a result");
  if (failure.wanted) {
    demand(!failure.value == (code.value >= TARVA_ABI_OUT_OF_MEMORY), "a failed future has an error object");
    if (failure.value)
      handles_.add(failure.value);
  }
}

void call_player::get_nested_error() {
  auto* const of = pick<tarva_abi_error_s>();
  if (auto* const made = make<tarva_abi_get_nested_error>(live_only(of), make_out<tarva_abi_error_s*>(), of))
    handles_.add(made);
}

void call_player::look_at(tarva_abi_property_s* property) {
  if (!property)
    return;
  handles_.add(property);
  demand(property->kind == TARVA_ABI_OBJECT_PROPERTY && property->name && property->friendly_name &&
             property->description && property->has_data <= 1,
         "a property has its words");
  if (!property->has_data)
    demand(property->data_type == ~std::uint64_t{0} && !property->element_count && !property->data,
           "a property without a value has none");
  if (property->data_type == TARVA_ABI_TYPE_STRING)
    for (std::uint64_t i = 0; i < property->element_count; ++i)
      demand(static_cast<const char* const*>(property->data)[i], "a text is not NULL");
}

void call_player::get_child() {
  auto* const of = pick<tarva_abi_property_s>();
  const char* const name = bytes_.one_of(CHILDREN);
  look_at(make<tarva_abi_get_child_property_by_name>(name ? live_only(of) : expected::failure,
                                                     make_out<tarva_abi_property_s*>(), of, name));
}

void call_player::get_children() {
  auto* const of = pick<tarva_abi_property_s>();
  auto* const array =
      make<tarva_abi_get_all_children_properties>(live_only(of), make_out<tarva_abi_property_array_s*>(), of);
  if (!array)
    return;
  for (std::uint64_t i = 0; i < array->count; ++i) {
    look_at(array->properties[i]);
    if (i < 4)
      continue;
    handles_.release(array->properties[i]);
    tarva_abi_free_property(nullptr, array->properties[i]);
  }
  tarva_abi_free_property_array(nullptr, array);
}

void call_player::write_tree() {
  auto* const of = pick<tarva_abi_property_s>();
  const bool deep = bytes_.rarely(8); // a whole device tree takes its time
  tarva_abi_tree_format_s format{bytes_.below(4), deep, 1, bytes_.below(2), bytes_.below(2),
                                 bytes_.below(2), 1};
  const bool has_format = !bytes_.rarely(32);
  tarva_abi_free_property_tree_string(nullptr, make<tarva_abi_get_property_tree_string>(
                                                   has_format ? live_only(of) : expected::failure,
                                                   make_out<char*>(), of, has_format ? &format : nullptr));
}

void call_player::plan_failure() {
  const plan& chosen = bytes_.one_of(PLANS);
  chosen.make(chosen.operation, 1 + static_cast<int>(bytes_.below(4)), chosen.value);
}

void call_player::play() {
  using self = call_player;
  // What has the most ways to go stands more than once.
  constexpr void (self::*CALLS[])() = {
      &self::get_devices,
      &self::load_program,
      &self::get_kernel,
      &self::allocate,
      &self::launch,
      &self::launch,
      &self::launch,
      &self::launch,
      &self::fill,
      &self::copy,
      &self::copy,
      &self::read,
      &self::write,
      &self::wait,
      &self::get_builtin_program,
      &self::check_support,
      &self::get_nested_error,
      &self::get_child,
      &self::get_children,
      &self::write_tree,
      &self::plan_failure,
      &self::plan_failure,
      &self::get_root<tarva_abi_get_device_root_property, tarva_abi_device_s>,
      &self::get_root<tarva_abi_get_program_root_property, tarva_abi_program_s>,
      &self::get_root<tarva_abi_get_kernel_root_property, tarva_abi_kernel_s>,
      &self::get_root<tarva_abi_get_memory_root_property, tarva_abi_memory_s>,
      &self::get_root<tarva_abi_get_error_root_property, tarva_abi_error_s>,
      &self::retain<tarva_abi_retain_device, tarva_abi_device_s>,
      &self::retain<tarva_abi_retain_program, tarva_abi_program_s>,
      &self::retain<tarva_abi_retain_kernel, tarva_abi_kernel_s>,
      &self::retain<tarva_abi_retain_memory, tarva_abi_memory_s>,
      &self::release<tarva_abi_release_device, tarva_abi_device_s>,
      &self::release<tarva_abi_release_program, tarva_abi_program_s>,
      &self::release<tarva_abi_release_kernel, tarva_abi_kernel_s>,
      &self::release<tarva_abi_release_memory, tarva_abi_memory_s>,
      &self::release<tarva_abi_abandon_future, tarva_abi_future_s>,
      &self::release<tarva_abi_free_error, tarva_abi_error_s>,
      &self::release<tarva_abi_free_property, tarva_abi_property_s>,
  };
  // What all inputs build on: the first bytes choose a device, which gets a program, a kernel and memory.
  input others = bytes_;
  bytes_ = others.split(2);
  get_devices();
  load_program();
  get_kernel();
  allocate();
  bytes_ = others;
  while (!bytes_.is_empty())
    (this->*bytes_.one_of(CALLS))();
  release_all<tarva_abi_release_kernel, tarva_abi_kernel_s>();
  release_all<tarva_abi_release_program, tarva_abi_program_s>();
  release_all<tarva_abi_release_memory, tarva_abi_memory_s>();
  release_all<tarva_abi_abandon_future, tarva_abi_future_s>();
  release_all<tarva_abi_release_device, tarva_abi_device_s>();
  release_all<tarva_abi_free_property, tarva_abi_property_s>();
  release_all<tarva_abi_free_error, tarva_abi_error_s>();
}

} // namespace fuzz
