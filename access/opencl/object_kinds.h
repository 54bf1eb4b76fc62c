// What the kinds of OpenCL object differ in when references to them are counted. A kind without `retain` is
// moved only.
#pragma once

#include "capability/commands.h"

namespace oryn::skerv::opencl {

struct device_kind {
  static constexpr qv::operation release = qv::operation::release_device;
  static constexpr qv::operation retain = qv::operation::retain_device;
  static constexpr const char* destructor_fault = "Exception caught in device::~device().";
};

struct context_kind {
  static constexpr qv::operation release = qv::operation::release_context;
  static constexpr qv::operation retain = qv::operation::retain_context;
  static constexpr const char* destructor_fault = "Exception caught in context::~context().";
};

struct command_queue_kind {
  static constexpr qv::operation release = qv::operation::release_command_queue;
  static constexpr const char* destructor_fault = "Exception caught in command_queue::~command_queue().";
};

struct host_command_queue_kind {
  static constexpr qv::operation release = qv::operation::release_command_queue;
  static constexpr const char* destructor_fault =
      "Exception caught in host_command_queue::~host_command_queue().";
};

struct device_command_queue_kind {
  static constexpr qv::operation release = qv::operation::release_command_queue;
  static constexpr const char* destructor_fault =
      "Exception caught in device_command_queue::~device_command_queue().";
};

struct memory_object_kind {
  static constexpr qv::operation release = qv::operation::release_mem_object;
  static constexpr const char* destructor_fault = "Exception caught in memory_object::~memory_object().";
};

struct event_kind {
  static constexpr qv::operation release = qv::operation::release_event;
  static constexpr qv::operation retain = qv::operation::retain_event;
  static constexpr const char* destructor_fault = "Exception caught in event::~event().";
};

struct program_kind {
  static constexpr qv::operation release = qv::operation::release_program;
  static constexpr qv::operation retain = qv::operation::retain_program;
  static constexpr const char* destructor_fault = "Exception caught in program::~program().";
};

struct kernel_kind {
  static constexpr qv::operation release = qv::operation::release_kernel;
  static constexpr const char* destructor_fault = "Exception caught in kernel::~kernel().";
};

} // namespace oryn::skerv::opencl
