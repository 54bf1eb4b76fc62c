// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the environment asks of this library, and the lines that the library writes to the standard error stream.
//
//   QV_LOG              lines about what is left out of the machine, for an administrator who asks for them
//   QV_OPENCL_VERSIONS  the versions of OpenCL under which devices are offered, instead of those that they report
//
// A library in other people's processes prints nothing unasked. The one exception is a value of QV_OPENCL_VERSIONS that is
// not understood: whoever set it has asked for something, and would take silence for consent.
//
// Used while the machine is looked at. Nothing here throws for want of memory but parse_capability_list().
#pragma once

#include "capability/opencl_version.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace qv {

// Writes one line of these parts if QV_LOG is set, and is neither empty nor "0". Parts may come from devices: each is cut
// after 300 bytes, and what is not printable is escaped.
void log_line(std::initializer_list<std::string_view> parts) noexcept;

// The capabilities in a list of versions such as "1.0, 1.2,2.0". Entries that name none are passed over, and appended to
// `unknown`, if there is one, each in quotes. Empty entries are no mistake.
capability_set parse_capability_list(std::string_view list, std::string* unknown = nullptr);

// The same for the value of QV_OPENCL_VERSIONS, null if it is not set. Entries that name no version are told of in one line
// on the standard error stream, once in a process.
capability_set select_capabilities(const char* versions);

} // namespace qv
