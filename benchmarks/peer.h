// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Two other C++ interfaces to OpenCL, each used as its documentation suggests. They bind OpenCL's functions by name, so
// they live in a module of their own, which the program loads without making its names known.
#pragma once

#include "capability/opencl_functions.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace benchmarks {

class peer {
public:
  virtual ~peer() = default;

  virtual void prepare_launch(const std::string& source, const std::string& kernel, int arguments) = 0;
  virtual void launch() = 0;

  virtual void prepare_buffers(std::size_t bytes) = 0;
  virtual void write(const void* from, std::size_t bytes) = 0;
  virtual void read(void* to, std::size_t bytes) = 0;
  virtual void copy(std::size_t bytes) = 0;
  virtual void fill(std::uint32_t value, std::size_t bytes) = 0;
};

// A peer that works on `device` in `context`, with a queue of its own.
using peer_maker = peer* (*)(cl_context context, cl_device_id device);

struct named_peer {
  std::string name;
  std::unique_ptr<peer> implementation;
};

// Those that this build has; new ones each time.
std::vector<named_peer> make_peers(cl_context context, cl_device_id device);

} // namespace benchmarks
