// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// What the cases of a process of their own have in common.
#pragma once

#include "tests/scripted/scripted_test.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace scripted {

using namespace caller;
using op = qv::operation;
using ::testing::ExitedWithCode;

// A pattern for output that holds the texts, which a | parts, in this order.
inline std::string lines(const std::string& texts) {
  std::string pattern;
  for (const char letter : texts)
    if (letter == '|')
      pattern += ".*";
    else
      pattern += (std::strchr("[](){}.*+?^$\\", letter) ? "\\" : "") + std::string(1, letter);
  return pattern;
}

inline void log_to_console(const char* level) {
  for (const char* layer : {"TARVA", "SKERV"}) {
    setenv((std::string(layer) + "_LOG_TARGET").c_str(), "console", 1);
    setenv((std::string(layer) + "_LOG_LEVEL").c_str(), level, 1);
  }
}

// A 1.2 device without built-in kernels and a 2.0 device with two, and perhaps more.
inline void use_two_devices(const std::vector<device_options>& more = {}) {
  std::vector<device_options> all{{"one", {3}}, {"two", {4}}};
  all.back().info[0x103F] = text_answer("copy_all;;sort_all");
  all.insert(all.end(), more.begin(), more.end());
  set_devices(all);
}

inline memory used_on(const caller::device& where) {
  memory numbers = make(counted(4));
  bring(find_kernel(compile(where, source), "add"), {&numbers});
  return numbers;
}

[[noreturn]] inline void run(void (*body)()) {
  use_two_devices();
  body();
  std::exit(0);
}

// Each ends well and says nothing.
struct named_case {
  const char* name;
  void (*body)();
};
#define CASE(body)                                                                                           \
  { #body, body }
inline void expect_quiet(std::initializer_list<named_case> cases) {
  for (const auto& [name, body] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EXIT(run(body), ExitedWithCode(0), ::testing::Eq(""));
  }
}

// Ends the process with that status if what the case is about does not hold.
inline void demand(bool holds, int status = 2) {
  if (!holds)
    std::exit(status);
}

} // namespace scripted
