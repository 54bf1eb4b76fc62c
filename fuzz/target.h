// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the targets share: promises, and that the scripted machine has everything back.
#pragma once

#include "fuzz/input.h"
#include "tests/scripted/scripted_qv.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <thread>

// One input. Each target defines it, and the fuzzing engine calls it, or what stands in for that.
// NOLINTNEXTLINE(readability-identifier-naming): the engine has it by this name
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

// Ends the process with a line on what went wrong, unless it holds.
inline void demand(bool holds, const char* what) {
  if (holds)
    return;
  std::fprintf(stderr, "broken promise: %s\n", what);
  std::abort();
}

// Operations of a kind stand beside each other.
inline bool is_between(qv::operation first, qv::operation operation, qv::operation last) {
  return first <= operation && operation <= last;
}

using references = std::map<std::string, std::int64_t>;

// What the library gives back is compared with what it held `before`.
inline void demand_balance(const references& before) {
  scripted::forget_calls();
  // The last event of an operation is released just after its owner has been woken.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (scripted::live_objects() != before && std::chrono::steady_clock::now() < deadline)
    std::this_thread::yield();
  for (const auto& [kind, count] : scripted::live_objects())
    demand(before.count(kind) != 0 && before.at(kind) == count, ("nothing is left behind: " + kind).c_str());
  demand(scripted::live_objects() == before, "nothing goes that is needed");
}

// The names of the platforms whose quirks libqv knows, and one of none.
inline constexpr const char* platforms[] = {"Another", "Portable Computing Language", "rusticl", "Clover",
                                            "Oclgrind"};

// A device of 2.2 of each platform but the last, for the scripted OpenCL: as that one keeps what belongs to its threads, libqv
// releases nothing of it at the end of the process, which would look like leaks.
inline void set_up_platforms() {
  std::vector<scripted::platform_options> all;
  std::vector<scripted::device_options> devices;
  for (const char* const name : std::span(platforms).first(std::size(platforms) - 1)) {
    scripted::device_options device{name, {6}};
    device.platform = all.size();
    device.info[0x1030] = scripted::text_answer("cl_khr_spir cl_khr_il_program"); // the extensions
    device.tells_parameters = true;
    all.push_back({name});
    devices.push_back(device);
  }
  scripted::set_platforms(all);
  scripted::set_devices(devices);
}

} // namespace fuzz
