#pragma once

#include "objects/kernel_arguments.h"
#include "objects/library_kernel.h"

#include <cstdint>
#include <string>

namespace oryn::tarva::library {

// The refusals of one argument of a launch, by what its parameter takes. All throw std::logic_error.
class argument_check {
public:
  // Refers to the kernel for as long as it lives.
  argument_check(const library_kernel& kernel, const launch_limits& limits, std::uint64_t index)
      : kernel_(kernel), index_(index),
        parameter_(index < limits.parameters.size() ? limits.parameters[index] : kernel_parameter()) {}

  template <class Argument>
  void fits(const Argument& given) const {
    if (!takes(given))
      refuse(describe(given));
  }
  // For a memory object that is not on the device yet.
  void fits_on_device(const library_memory& memory, const launch_limits& limits) const;

private:
  using kind = kernel_parameter::kind;

  bool takes(const kernel_argument_nullptr&) const { return parameter_.takes(kind::memory); }
  bool takes(const kernel_argument_typed_library_memory_array&) const {
    return parameter_.takes(kind::memory);
  }
  bool takes(const kernel_argument_local_memory&) const { return parameter_.takes(kind::local_memory); }
  bool takes(const kernel_argument_pod_value& value) const {
    return parameter_.takes_value(element_size(value.get_type()));
  }

  static std::string describe(const kernel_argument_nullptr&);
  static std::string describe(const kernel_argument_typed_library_memory_array& memory);
  static std::string describe(const kernel_argument_local_memory& local);
  static std::string describe(const kernel_argument_pod_value& value);

  [[noreturn]] void refuse(const std::string& given) const;
  std::string name() const;

  const library_kernel& kernel_;
  const std::uint64_t index_;
  const kernel_parameter parameter_;
};

} // namespace oryn::tarva::library
