// The bodies of opencl_program.h, compiled once for each version.
#pragma once

#include "access/opencl/kernel.h"
#include "opencl/opencl_kernel.h"
#include "opencl/opencl_program.h"
#include "opencl/program_properties.inl.h"

#include <stdexcept>

namespace oryn::tarva::library {

template <version V>
opencl_version_program<V>::opencl_version_program(bool is_builtin,
                                                  const std::shared_ptr<library_device>& device,
                                                  const skerv::opencl::program<V>& program,
                                                  const std::string& name)
    : opencl_program(is_builtin, device, name),
      program_(std::make_unique<skerv::opencl::program<V>>(program)) {}

template <version V>
opencl_version_program<V>::~opencl_version_program() = default;

template <version V>
std::shared_ptr<library_kernel> opencl_version_program<V>::get_kernel(const std::string& name) {
  const auto make = [&](std::shared_ptr<const kernel_signature> signature) {
    return std::make_shared<opencl_version_kernel<V>>(this->shared_from_this(), name,
                                                      program_->create_kernel(name), std::move(signature));
  };
  if (auto known = signatures_.find(name))
    return make(std::move(known));
  const auto turn = signatures_.take_turn();
  if (auto known = signatures_.find(name))
    return make(std::move(known));
  auto first = make(nullptr);
  if (const auto& learnt = first->get_signature(); learnt && learnt->tells_something())
    signatures_.keep(name, learnt);
  return first;
}

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

} // namespace oryn::tarva::library
