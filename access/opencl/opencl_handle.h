// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What all wrappers of OpenCL objects share: how they send commands, and how they hold one reference to their object.
#pragma once

#include "access/common/call_handle.h"
#include "access/common/errors.h"
#include "access/opencl/version.h"
#include "base/logging.h"
#include "capability/commands.h"

#include <cstdint>
#include <utility>

namespace oryn::skerv::common {

template <qv::operation Op>
class info_query;

} // namespace oryn::skerv::common

namespace oryn::skerv::opencl {

// The number under which the capability library knows `Op` in this version; 0 if the version has no such command.
template <version V, qv::operation Op>
inline constexpr std::uint64_t command_of = qv::command_number(Op, capability_of(V));

// Performs `Op`. Only if this returns do the results in the record count.
template <version V, qv::operation Op>
void call(const common::call_handle& handle, qv::record<Op>& record) {
  static_assert(command_of<V, Op> != 0, "this version of OpenCL has no such command");
  common::perform(handle.get(), command_of<V, Op>, record);
}

// Marks a handle that came from a query, which hands out no reference: the wrapper takes one of its own.
struct from_query_t {};
inline constexpr from_query_t from_query{};

// A kind of object of which there may be several references.
template <class Kind>
concept retainable = requires {
  Kind::retain;
};

// The base of every wrapper: a share in the call handle, and one reference to an OpenCL object, which the destructor
// gives up. Null in a wrapper that has been moved from. `Kind` stands beside the class of the wrapper and says how
// references are counted; without `retain`, the wrapper can only be moved.
//
// Wrappers have no lock. Any thread may use one, but not two threads one wrapper where either changes it; the floors
// above hold a copy for each thread that needs one.
template <version V, class Kind>
class opencl_handle {
public:
  const common::call_handle& get_call_handle() const noexcept { return call_handle_; }
  void* get_handle() const noexcept { return object_; }

  // A parameter of this object, or of this object on `device`. To ask, include access/common/info_query.h.
  template <qv::operation Op>
  common::info_query<Op> query(std::uint32_t parameter, void* device = nullptr) const {
    return {call_handle_.get(), command_of<V, Op>, object_, device, parameter};
  }

protected:
  // Takes over a reference.
  opencl_handle(common::call_handle call_handle, void* object) noexcept
      : call_handle_(std::move(call_handle)), object_(object) {}

  // Throws if the reference is refused; the share in the call handle is then given back.
  opencl_handle(common::call_handle call_handle, void* object, from_query_t)
      : call_handle_(std::move(call_handle)), object_(object) {
    retain();
  }

  opencl_handle(const opencl_handle& other) requires retainable<Kind> : call_handle_(other.call_handle_),
                                                                        object_(other.object_) {
    retain();
  }
  // A move sends no command.
  opencl_handle(opencl_handle&& other) noexcept
      : call_handle_(std::move(other.call_handle_)), object_(std::exchange(other.object_, nullptr)) {}

  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): a copy, which it is exchanged for, is safe from it
  opencl_handle& operator=(const opencl_handle& other) requires retainable<Kind> {
    opencl_handle copy(other);
    swap(copy);
    return *this;
  }
  opencl_handle& operator=(opencl_handle&& other) noexcept {
    opencl_handle taken(std::move(other));
    swap(taken);
    return *this;
  }

  // A release that fails costs one line in the log, whatever it failed with: a destructor has nobody to tell.
  ~opencl_handle() {
    if constexpr (is_counted) {
      if (object_ == nullptr)
        return;
      bool is_released = false;
      try {
        qv::object_record record{};
        record.object = object_;
        common::send(call_handle_.get(), command_of<V, Kind::release>, &record);
        is_released = record.status == 0;
      } catch (...) {
        // It did not get there.
      }
      if (!is_released)
        log_error(Kind::destructor_fault);
    }
  }

private:
  // Devices are not counted before 1.2.
  static constexpr bool is_counted = command_of<V, Kind::release> != 0;

  void retain() {
    if constexpr (is_counted) {
      if (object_ == nullptr)
        return;
      qv::object_record record{};
      record.object = object_;
      call<V, Kind::retain>(call_handle_, record);
    }
  }

  void swap(opencl_handle& other) noexcept {
    std::swap(call_handle_, other.call_handle_);
    std::swap(object_, other.object_);
  }

protected:
  common::call_handle call_handle_;
  void* object_;
};

} // namespace oryn::skerv::opencl
