// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// The states that operations and commands go through, in any order of calls.
#include "base/completion_state.h"
#include "tests/error_of.h"

#include <gtest/gtest.h>

namespace oryn::tarva::library {
namespace {

constexpr completion_texts texts = {.profiling_after_submission = "profiling too late",
                                    .already_submitted = "submitted twice",
                                    .complete_before_submission = "complete too early",
                                    .error_before_submission = "error too early",
                                    .already_complete = "complete twice",
                                    .count_after_submission = "count too late",
                                    .count_already_set = "counted twice",
                                    .part_before_submission = "part too early",
                                    .part_at_zero = "a part too many",
                                    .part_without_count = "not counted",
                                    .destroyed_incomplete = "left incomplete",
                                    .destroyed_open = "left open",
                                    .destroyed_with_exception = ""};

// Calls as letters: f enables profiling, 0 to 9 sets the number of parts, s submits, p ends a part, c the whole, e fails it.
void perform(completion_state& state, char letter, int& errors) {
  switch (letter) {
  case 'f':
    return state.enable_profiling();
  case 's':
    return state.set_submitted();
  case 'p':
    return static_cast<void>(state.count_part() && state.succeed());
  case 'c':
    return state.set_complete();
  case 'e':
    return static_cast<void>(
        state.set_error(std::make_exception_ptr(std::runtime_error("failure " + std::to_string(++errors)))));
  default:
    return state.set_part_count(static_cast<std::uint64_t>(letter - '0'));
  }
}

TEST(completion_state, ends_once_and_refuses_what_is_out_of_turn) {
  struct row {
    const char *script, *message; // of the last letter; those before succeed
    char end = '-';               // c or e
  };
  for (const row& one : {row{"f1sp", "", 'c'},
                         {"fsc", "", 'c'},
                         {"2sp", ""},
                         {"2spp", "", 'c'},
                         {"1see", "", 'e'},
                         {"3sepp", "", 'e'},
                         {"sf", "profiling too late"},
                         {"s1", "count too late"},
                         {"12", "counted twice"},
                         {"1ss", "submitted twice"},
                         {"1p", "part too early"},
                         {"c", "complete too early"},
                         {"0sp", "a part too many"},
                         {"sp", "not counted"},
                         {"scc", "complete twice", 'c'},
                         {"e", "error too early"},
                         {"1spe", "complete twice", 'c'}}) {
    SCOPED_TRACE(one.script);
    int errors = 0;
    completion_state state(texts);
    for (const char* letter = one.script; letter[1] != 0; ++letter)
      perform(state, *letter, errors);
    EXPECT_EQ(message_of([&] { perform(state, std::string(one.script).back(), errors); }), one.message);
    EXPECT_EQ(state.is_complete(), one.end != '-');
    EXPECT_EQ(state.has_failed(), one.end == 'e');
    if (state.has_failed()) {
      EXPECT_EQ(message_of([&] { std::rethrow_exception(state.get_error()); }), "failure 1");
    }
    state.refuse(nullptr);
  }
}

void leave_incomplete() {
  for (const char* setting : {"TARVA_LOG_TARGET=console", "TARVA_LOG_LEVEL=warn"})
    putenv(const_cast<char*>(setting));
  completion_state(texts).set_submitted();
  _exit(0);
}

TEST(completion_state, tells_what_was_left_undone) {
  EXPECT_EXIT(leave_incomplete(), testing::ExitedWithCode(0),
              "\\[warning\\] left incomplete\n.*left open\n.*notifier that was never closed");
}

} // namespace
} // namespace oryn::tarva::library
