// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The queues of a device. Up to 1.2 there is one kind of queue; from 2.0 on they are told apart by who enqueues to
// them.
#pragma once

#include "access/opencl/commands.h"
#include "access/opencl/context.h"
#include "access/opencl/device.h"

#include <cstdint>
#include <utility>

namespace oryn::skerv::opencl {

// Alike but for what the log says of a release that fails.
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

// What all queues can do. A queue is moved, never copied. It is made while the device starts, and then used by the
// worker thread of the device alone.
template <version V, class Kind>
class basic_command_queue : public opencl_handle<V, Kind> {
public:
  // Waits until all that was enqueued has ended.
  void finish() const;

  // The command begins once the events of `wait_list`, which are `wait_count`, have ended. If this throws, nothing
  // has been enqueued.
  template <qv::operation Op>
  event<V> enqueue(const command<V, Op>& command, std::uint32_t wait_count, void* const* wait_list) const;

protected:
  // Takes over the reference that the create command returned.
  basic_command_queue(common::call_handle call_handle, void* handle) noexcept
      : opencl_handle<V, Kind>(std::move(call_handle), handle) {}
};

template <version V, class Kind>
void basic_command_queue<V, Kind>::finish() const {
  qv::object_record record{};
  record.object = this->object_;
  call<V, qv::operation::finish>(this->call_handle_, record);
}

// The event is wrapped only once the command has returned, so that a failure leaves none behind.
template <version V, class Kind>
template <qv::operation Op>
event<V> basic_command_queue<V, Kind>::enqueue(const command<V, Op>& command, std::uint32_t wait_count,
                                               void* const* wait_list) const {
  void* event_out = nullptr;
  qv::record<Op> record = command.record;
  record.command_queue = this->object_;
  record.num_events_in_wait_list = wait_count;
  record.event_wait_list = wait_list;
  record.event = &event_out;
  call<V, Op>(this->call_handle_, record);
  return {this->call_handle_, event_out};
}

// The queue of the versions that know but one kind.
template <version V>
requires(!version_traits<V>::has_device_queue) class command_queue
    : public basic_command_queue<V, command_queue_kind> {
public:
  command_queue(const context<V>& context, const device<V>& device, bool out_of_order, bool profiling);
};

// A queue to which the host enqueues.
template <version V>
requires(version_traits<V>::has_device_queue) class host_command_queue
    : public basic_command_queue<V, host_command_queue_kind> {
public:
  host_command_queue(const context<V>& context, const device<V>& device, bool out_of_order, bool profiling);
};

// The default queue of a device, to which its kernels enqueue.
template <version V>
requires(version_traits<V>::has_device_queue) class device_command_queue
    : public basic_command_queue<V, device_command_queue_kind> {
public:
  // `size` is in bytes.
  device_command_queue(const context<V>& context, const device<V>& device, bool profiling,
                       std::uint32_t size);
};

// For code that serves all versions: the class of the queues to which the host enqueues, whatever its name in this
// version.
template <version V>
struct host_queue_of {
  using type = host_command_queue<V>;
};
template <version V>
requires(!version_traits<V>::has_device_queue) struct host_queue_of<V> {
  using type = command_queue<V>;
};
template <version V>
using host_queue = typename host_queue_of<V>::type;

} // namespace oryn::skerv::opencl
