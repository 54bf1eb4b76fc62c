#include "abi/argument_checks.h"
#include "abi/launch_range.h"
#include "abi/tarva_singleton.h"
#include "ir/logical_operation.h"
#include "memory/library_memory.h"
#include "objects/kernel_arguments.h"
#include "objects/library_kernel.h"

// Kernel launches.
namespace oryn::tarva::library {

namespace {

template <typename pointee>
pointee* pointer_in(std::uint64_t word) {
  return reinterpret_cast<pointee*>(static_cast<std::uintptr_t>(word)); // NOLINT(performance-no-int-to-ptr)
}

void add_argument(kernel_argument_list& list, const abi_bridge::reading& handles,
                  const tarva_abi_kernel_argument_s& argument) {
  switch (argument.kind) {
  case TARVA_ABI_ARGUMENT_NULL:
    return list.add_null();
  case TARVA_ABI_ARGUMENT_VALUE:
    return list.add_value(pointer_in<const void>(argument.second), to_data_type(argument.first));
  case TARVA_ABI_ARGUMENT_MEMORY:
    return list.add_memory(handles.get_library_object(pointer_in<const tarva_abi_memory_s>(argument.first)));
  case TARVA_ABI_ARGUMENT_LOCAL_MEMORY:
    return list.add_local_memory(to_data_type(argument.first), argument.second);
  default:
    throw std::runtime_error("Unsupported argument type.");
  }
}

kernel_argument_capture make_arguments(const abi_bridge& bridge, const tarva_abi_kernel_argument_s* arguments,
                                       std::uint64_t count) {
  if (count == 0)
    return {};
  require_countable<tarva_abi_kernel_argument_s>(count, "kernel arguments");
  kernel_argument_list list(count); // dropped after the unlock if an argument is refused
  {
    const abi_bridge::reading handles(bridge);
    for (std::uint64_t index = 0; index < count; ++index)
      add_argument(list, handles, arguments[index]);
  }
  return kernel_argument_capture(std::move(list));
}

} // namespace

void tarva_singleton::tarva_abi_kernel_call(tarva_abi_kernel_s* kernel,
                                            const tarva_abi_kernel_argument_s* arguments,
                                            std::uint64_t argument_count,
                                            const tarva_abi_launch_range_s* launch_range) {
  if (!arguments && argument_count != 0)
    throw std::invalid_argument(
        "tarva_abi_kernel_call: argument array is NULL but number of arguments is not zero.");
  require(launch_range,
          "tarva_abi_kernel_call: launch range is NULL, so there is no way to execute the kernel.");
  auto library_kernel = bridge_.get_library_object(kernel);
  const nd_range range = make_range(*library_kernel, *launch_range);
  auto captured = make_arguments(bridge_, arguments, argument_count);
  const use_of_compiler use(*this); // some compile a kernel for a device or a local size when it is launched
  submit_without_future(logical_ir::kernel::create(std::move(library_kernel), std::move(captured), range));
}

} // namespace oryn::tarva::library
