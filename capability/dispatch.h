// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// From a call handle and the number of a command to what performs it.
//
// Call handles are opened and closed under a lock; commands take none here. A handle may be used by several threads at once.
// Whoever closes it makes sure that none of them does so any more.
#pragma once

#include "capability/executor.h"
#include "capability/qv.h"

#include <array>

namespace qv {

inline constexpr std::size_t highest_command_number = 99;

using executor = void (*)(const root_device&, void* record) noexcept;

struct command {
  executor run = nullptr; // null: no such command
  bool releases = false;
};

// Indexed by command number.
using command_array = std::array<command, highest_command_number + 1>;

// `capability` is 1 to 6.
const command_array& commands_of_capability(std::uint32_t capability);

// What a call handle stands for. The machine owns the device; the array is constant.
struct binding {
  const root_device* device = nullptr;
  const command_array* commands = nullptr;
};

// The handle names a slot and how often the slot has been used, and points to nothing, so that a stale or
// wrong one is found out without reading memory that is gone. Null if too many are open.
qv_call_handle* open_call_handle(const binding& bound);

// Whether the machine must not be freed. Takes no lock, as the process may be ending.
bool any_call_handle_open() noexcept;

} // namespace qv
