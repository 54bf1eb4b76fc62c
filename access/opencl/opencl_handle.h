#pragma once

#include "access/common/info_forms.h"
#include "access/common/info_query.h"
#include "access/opencl/call.h"
#include "access/opencl/object_kinds.h"
#include "base/logging.h"

#include <cstdint>
#include <utility>

namespace oryn::skerv::opencl {

template <typename Kind>
concept retainable = requires {
  Kind::retain;
};

// Marks a handle that came from a query, which hands out no reference: the wrapper takes one of its own.
struct from_query_t {};
inline constexpr from_query_t from_query{};

// What every wrapper is made of: a share in the call handle and one reference to an OpenCL object, which the
// destructor gives up. Null in a wrapper that has been moved from.
template <version V, typename Kind>
class opencl_handle {
public:
  const common::call_handle& get_call_handle() const noexcept { return call_handle_; }
  void* get_handle() const noexcept { return object_; }

protected:
  // Takes over a reference.
  opencl_handle(common::call_handle call_handle, void* object) noexcept
      : call_handle_(std::move(call_handle)), object_(object) {}

  opencl_handle(common::call_handle call_handle, void* object, from_query_t)
      : call_handle_(std::move(call_handle)), object_(object) {
    retain();
  }

  opencl_handle(const opencl_handle& other) requires retainable<Kind> : call_handle_(other.call_handle_),
                                                                        object_(other.object_) {
    retain();
  }
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

  ~opencl_handle() {
    if constexpr (is_counted) {
      try {
        release();
      } catch (...) {
        log_error(Kind::destructor_fault);
      }
    }
  }

  template <qv::operation Op>
  common::info_query<Op> query(std::uint32_t parameter, void* device = nullptr) const {
    return {call_handle_, command_of<V, Op>, object_, device, parameter};
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

  void release() {
    if (object_ == nullptr)
      return;
    qv::object_record record{};
    record.object = object_;
    send<V, Kind::release>(call_handle_, record);
    common::check_release_status(record.status);
  }

  void swap(opencl_handle& other) noexcept {
    std::swap(call_handle_, other.call_handle_);
    std::swap(object_, other.object_);
  }

  common::call_handle call_handle_;
  void* object_;
};

} // namespace oryn::skerv::opencl
