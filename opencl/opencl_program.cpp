// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "opencl/opencl_program.h"

#include "access/opencl/kernel.h"
#include "opencl/opencl_device.h"
#include "opencl/opencl_kernel.h"

#include <stdexcept>

namespace oryn::tarva::library {

template <version V>
opencl_version_program<V>::opencl_version_program(bool is_builtin, opencl_version_device<V>& device,
                                                  const skerv::opencl::program<V>& program,
                                                  const std::string& name)
    : opencl_program(is_builtin, device.shared_from_this(), name), device_(device),
      program_(std::make_unique<skerv::opencl::program<V>>(program)) {}

template <version V>
opencl_version_program<V>::~opencl_version_program() = default;

// The first kernel of a name learns the signature of all. An implementation may tell of the arguments of a name's first
// kernel alone, so no second may be made in between.
template <version V>
std::shared_ptr<library_kernel> opencl_version_program<V>::get_kernel(const std::string& name) {
  const auto make = [&](std::shared_ptr<const kernel_signature> signature) {
    return std::make_shared<opencl_version_kernel<V>>(this->shared_from_this(), device_, name,
                                                      program_->create_kernel(name), std::move(signature));
  };
  if (auto known = signatures_.find(name))
    return make(std::move(known));
  const lock_guard guard(signatures_.learning_lock());
  if (auto known = signatures_.find(name))
    return make(std::move(known));
  auto first = make(nullptr);
  if (const auto& learnt = first->get_signature(); learnt && learnt->tells_something())
    signatures_.keep(name, learnt);
  return first;
}

// Before 1.2 OpenCL does not tell the names: all kernels are made to ask each for its own.
template <version V>
std::vector<std::string> opencl_version_program<V>::get_kernel_names() {
  if constexpr (version_traits<V>::has_kernel_names) {
    return program_->get_kernel_names();
  } else {
    std::vector<std::string> names;
    for (const auto& kernel : program_->create_kernels())
      names.push_back(kernel.get_function_name());
    return names;
  }
}

template <version V>
std::vector<std::uint8_t> opencl_version_program<V>::get_binary() {
  auto binaries = program_->get_binaries();
  if (binaries.size() != 1)
    throw std::runtime_error(
        "Expected a single device binary, but multiple were found.  Please file a bug report.");
  return std::move(binaries.front().binary);
}

template <version V>
bool opencl_version_program<V>::read_value(const program_catalogue::row& wanted, property_value& value) {
  using from = program_source;
  switch (wanted.source) {
  case from::none:
    break;
  case from::user_label:
    value.set(this->get_name());
    break;
  case from::kernel_names:
    value.set(get_kernel_names());
    break;
  case from::object_id:
    value.set(this->get_unique_identifier());
    break;
  case from::source:
    value.set(program_->get_source());
    break;
  case from::binary:
    value.set(get_binary());
    break;
  case from::il:
    if constexpr (version_traits<V>::has_il)
      value.set(program_->get_il());
    break;
  }
  return true;
}

#define INSTANTIATE(V) template class opencl_version_program<version::V>;
ORYN_FOR_EACH_VERSION(INSTANTIATE)
#undef INSTANTIATE

} // namespace oryn::tarva::library
