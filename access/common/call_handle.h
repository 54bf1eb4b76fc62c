// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The way to the capability library: the handle of a device, over which every command is sent, and the exceptions
// for what goes wrong on the way, before any OpenCL status counts.
#pragma once

#include "capability/qv.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qv {

// A transport code, with its number and a text. It says that a command was not carried out, and nothing of OpenCL.
class qv_error : public std::exception {
public:
  qv_error(std::string message, std::int32_t code) : message_(std::move(message)), code_(code) {}
  const char* what() const noexcept override { return message_.c_str(); }
  std::int32_t get_code() const noexcept { return code_; }

private:
  std::string message_;
  std::int32_t code_;
};

// The capability library can go on: another command may well be carried out.
class recoverable_error : public qv_error {
public:
  using qv_error::qv_error;
};

// The capability library cannot go on.
class unrecoverable_error : public qv_error {
public:
  using qv_error::qv_error;
};

class invalid_command_id : public recoverable_error {
public:
  using recoverable_error::recoverable_error;
};

// A code that the interface does not name.
class unknown_error : public unrecoverable_error {
public:
  using unrecoverable_error::unrecoverable_error;
};

} // namespace qv

namespace oryn::skerv::common {

// A share in the call handle of one device. All wrappers made from the device hold one, and the last of them closes
// the handle. Any thread may hold, copy and give up a share, and send commands over it.
using call_handle = std::shared_ptr<qv_call_handle>;

// Throws the exception class of the transport code, if it is not QV_OK.
[[noreturn]] void throw_transport(std::int32_t code);
inline void check_transport(std::int32_t code) {
  if (code != QV_OK)
    throw_transport(code);
}

// Carries out `command`, a number of the capability that the handle was opened for. Throws a qv_error if it does not get there.
// The status that it leaves in the record is for the caller to test.
inline void send(qv_call_handle* handle, std::uint64_t command, void* record) {
  const std::int32_t code = qv_call_capability(handle, command, record, 0);
  if (code != QV_OK)
    throw_transport(code);
}

// One device of the machine, as it can be used under one capability.
struct capability_node {
  std::uint64_t root;
  std::uint64_t node;
};

// All devices that the capability library offers under `capability`, in its order. Checks its version first.
std::vector<capability_node> find_capability_nodes(std::uint32_t capability);

call_handle open_call_handle(const capability_node& node);

} // namespace oryn::skerv::common
