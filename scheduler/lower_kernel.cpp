// The lowering of a launch: its refusals, and the movement of its memory objects to the kernel's device.
#include "ir/launch_checks.h"
#include "memory/library_memory.h"
#include "objects/library_program.h"
#include "scheduler/lowering.h"

#include <stdexcept>
#include <string>
#include <type_traits>

namespace oryn::tarva::library {

namespace {

void refuse_empty_argument(const char* kind, std::uint64_t index) {
  throw std::logic_error(std::string(kind) + " argument " + std::to_string(index) +
                         " of the kernel must not have 0 elements.");
}

// Adds the bytes of a local memory argument; more than can be counted fit on no device.
void add_bytes_of(const kernel_argument_local_memory& local, std::uint64_t& total) {
  std::uint64_t bytes = 0;
  if (__builtin_mul_overflow(element_size(local.get_type()), local.get_num_elements(), &bytes) ||
      __builtin_add_overflow(total, bytes, &total))
    throw std::logic_error(
        "Local memory arguments of the kernel would overflow what can be counted in bytes.");
}

constexpr kernel_parameter unknown_parameter;

bool is_on(const std::shared_ptr<library_device>& device, const memory_state& state) {
  return state.is_on_device() && state.get_device_block()->get_device() == device;
}

} // namespace

// One pass over the arguments does all checks, in their order, and finds the state of each memory object. A launch with many
// arguments spends most of its own time here.
std::vector<lowering::used_object> lowering::check_launch(const logical_ir::kernel& operation,
                                                          const std::shared_ptr<library_device>& device,
                                                          const nd_range& range) {
  const library_kernel& kernel = *operation.get_kernel_object();
  const launch_limits& limits = kernel.get_launch_limits();
  const std::span<const kernel_parameter> parameters = limits.parameters;
  const kernel_argument_capture& arguments = operation.get_arguments();
  const std::uint64_t count = arguments.get_argument_count();
  check_argument_count(count, limits);
  std::vector<used_object> objects;
  objects.reserve(arguments.get_library_memory_arguments().size());
  std::uint64_t local_bytes = 0;
  for (std::uint64_t index = 0; index < count; ++index) {
    const kernel_parameter& parameter = index < parameters.size() ? parameters[index] : unknown_parameter;
    arguments.visit_argument(index, [&](const auto& argument) {
      using kind = std::remove_cvref_t<decltype(argument)>;
      if constexpr (std::is_same_v<kind, kernel_argument_typed_library_memory_array>) {
        const std::shared_ptr<library_memory>& memory = argument.get_memory();
        memory_state& state = table_.find(memory);
        check_argument(kernel, index, parameter, argument);
        if (memory->get_num_elements() == 0)
          refuse_empty_argument("Memory", index);
        if (state.is_on_host())
          static_cast<void>(
              state.get_host_block()->get_read_pointer(0)); // an allocation that failed left no storage
        if (!is_on(device, state))
          check_allocation({kernel, index}, *memory, limits);
        objects.push_back({memory, state});
      } else if constexpr (std::is_same_v<kind, kernel_argument_local_memory>) {
        if (argument.get_num_elements() == 0)
          refuse_empty_argument("Local memory", index);
        add_bytes_of(argument, local_bytes);
        check_argument(kernel, index, parameter, argument);
        check_local_memory(local_bytes, limits);
      } else if constexpr (!std::is_same_v<kind, kernel_argument_typed_device_memory_array>) {
        check_argument(kernel, index, parameter, argument);
      }
    });
  }
  check_sizes(range, limits);
  return objects;
}

// An object that is two arguments is moved at the first and found there at the second. Up to the loop nothing has changed.
void lowering::visit(const logical_ir::kernel& operation) {
  const launch_limits& limits = operation.get_kernel_object()->get_launch_limits();
  check_work_dimension(operation.get_range(), limits.has_global_offset);
  const nd_range range = with_fixed_local_size(operation.get_range(), limits);
  const std::shared_ptr<library_device> device = operation.get_kernel_object()->get_program()->get_device();
  const std::vector<used_object> objects = check_launch(operation, device, range);
  std::vector<kernel_argument_capture::replacement> replacement_blocks;
  replacement_blocks.reserve(objects.size());
  std::vector<physical_pointer> predecessors_of_kernel;
  for (const auto& [memory, state] : objects) {
    if (!is_on(device, state))
      predecessors_of_kernel.push_back(move_to(device, memory, state));
    replacement_blocks.push_back({memory.get(), state.get_device_block().get()});
  }
  kernel_argument_capture arguments(operation.get_arguments());
  arguments.replace_library_memory(std::move(replacement_blocks));
  const physical_pointer launch =
      add<physical_ir::kernel>(device, operation.get_kernel_object(), std::move(arguments), range);
  for (const auto& predecessor : predecessors_of_kernel)
    graph_.insert_edge(predecessor, launch);
}

// Yields the physical operation that the launch must wait for.
lowering::physical_pointer lowering::move_to(const std::shared_ptr<library_device>& device,
                                             const std::shared_ptr<library_memory>& memory,
                                             memory_state& state) {
  return state.is_on_host() ? move_from_host(device, memory, state)
                            : move_between_devices(device, memory, state);
}

// Allocate, copy, free on the host; the content is turned over before the copy if the device has the other byte order.
lowering::physical_pointer lowering::move_from_host(const std::shared_ptr<library_device>& device,
                                                    const std::shared_ptr<library_memory>& memory,
                                                    memory_state& state) {
  using namespace physical_ir;
  const bool keep_order = state.is_between_devices();
  const bool change_order = !keep_order && state.is_little_endian() != device->is_little_endian();
  const std::uint64_t count = memory->get_num_elements();
  const std::shared_ptr<host_memory> from = state.get_host_block();
  const auto to = std::make_shared<device_memory>(device);
  block_move move{.memory = memory, .before = state, .destination = to};

  const auto allocation = add<allocate_device_memory>(to, memory->get_type(), count);
  if (change_order)
    move.conversion = add<convert_endianness_host>(device, from);
  const auto copy = add<copy_host_to_device>(host_to_device_copy{from, 0, to, 0, count});
  const auto release = add<free_host_memory>(device, from, copy);
  if (change_order)
    graph_.insert_edge(move.conversion, copy);
  add_chain({allocation, copy, release});

  move.arrival = copy;
  moves_.push_back(std::move(move));
  state.set_device_block(to);
  if (!keep_order)
    state.set_little_endian(device->is_little_endian());
  return release;
}

// Through a block on the host. No edge may run between devices: a release and an acquire link the two chains.
lowering::physical_pointer lowering::move_between_devices(const std::shared_ptr<library_device>& device,
                                                          const std::shared_ptr<library_memory>& memory,
                                                          memory_state& state) {
  using namespace physical_ir;
  const std::shared_ptr<device_memory> from = state.get_device_block();
  const std::shared_ptr<library_device>& holder = from->get_device();
  const std::uint64_t count = memory->get_num_elements();
  const auto staging = std::make_shared<host_memory>();
  const auto to = std::make_shared<device_memory>(device);
  const std::uint64_t id = ++last_sync_id_;
  block_move move{.memory = memory, .before = state, .destination = to, .staging = staging};

  const auto staging_allocation = add<allocate_host_memory>(holder, staging, memory->get_type(), count);
  const auto stage = add<copy_device_to_host>(device_to_host_copy{from, 0, staging, 0, count});
  const auto hand_over = add<synchronize_device_to_device_release>(holder, device, id);
  add_chain({staging_allocation, stage, hand_over, add<free_device_memory>(from, stage)});

  const auto allocation = add<allocate_device_memory>(to, from->get_type(), from->get_size());
  const auto take_over = add<synchronize_device_to_device_acquire>(holder, device, id);
  const auto copy = add<copy_host_to_device>(host_to_device_copy{staging, 0, to, 0, count});
  add_chain({allocation, take_over, copy, add<free_host_memory>(device, staging, copy)});

  move.staged = stage;
  move.arrival = copy;
  moves_.push_back(std::move(move));
  state.set_device_block(to);
  return copy;
}

} // namespace oryn::tarva::library
