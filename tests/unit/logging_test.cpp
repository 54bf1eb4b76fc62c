// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Loggers, their targets, and what they do without memory.
#include "base/logging.h"
#include "base/notifier.h"
#include "base/unique_identifier.h"
#include "tests/failing_memory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <limits>
#include <regex>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// What the executable itself takes from malloc fails, too: there the logging library may have its lines.
extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
  return fails_now() ? nullptr : __real_malloc(size);
}

// Loggers are opened once in a process, so each case runs in a process of its own and leaves files behind.
namespace oryn {
namespace {

namespace fs = std::filesystem;

std::size_t failing_point = 0; // an allocation

using variables = std::vector<std::pair<const char*, const char*>>;

// The lines without the date and the thread, which differ from run to run; unless these have another form.
std::string read_lines(const fs::path& path) {
  static const std::regex beginning(R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\] \[thread \d+\] )");
  std::ifstream file(path);
  return std::regex_replace(std::string(std::istreambuf_iterator<char>(file), {}), beginning, "");
}

void log_all_levels() {
  tarva::log_trace("level {}", 0);
  tarva::log_debug("level {}", 1U);
  tarva::log_info("level {}", "two");
  tarva::log_warning("level {}", std::string("three"));
  tarva::log_error("level {}", true);
  tarva::log_critical("level {} {}", -5, static_cast<const void*>(nullptr));
  skerv::log_critical("from below");
}

class logging_test : public testing::Test {
public:
  logging_test() {
    std::string pattern = fs::temp_directory_path() / "tarva_logging_XXXXXX";
    directory = mkdtemp(pattern.data());
  }
  ~logging_test() override { fs::remove_all(directory); }

protected:
  // The status of the process, what it printed, and each file that is there.
  std::string play(const variables& environment, void (*act)() = log_all_levels) {
    const pid_t child = fork();
    if (child == 0) {
      fs::current_path(directory);
      if (!std::freopen("console.txt", "w", stderr))
        _exit(99);
      clearenv();
      for (const auto& [variable, value] : environment)
        setenv(variable, value, 1);
      act();
      std::exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    std::string traces = std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1) + "\n" +
                         read_lines(directory / "console.txt");
    for (const char* name : {"tarva.log", "skerv.log"})
      if (fs::is_regular_file(directory / name))
        traces += std::string(name) + ":\n" + read_lines(directory / name);
    return traces;
  }

  fs::path directory;
};

const variables to_console{{"TARVA_LOG_LEVEL", "info"}, {"TARVA_LOG_TARGET", "console"}};
const variables to_file{{"TARVA_LOG_LEVEL", "info"}, {"TARVA_LOG_TARGET", "file"}};

TEST_F(logging_test, writes_the_lines_from_its_level_on_in_the_one_pattern) {
  EXPECT_EQ("0\n", play({})) << "silent without an environment";
  const std::string lines[] = {"[tarva] [trace] level 0\n",    "[tarva] [debug] level 1\n",
                               "[tarva] [info] level two\n",   "[tarva] [warning] level three\n",
                               "[tarva] [error] level true\n", "[tarva] [critical] level -5 0x0\n"};
  const char* const levels[] = {"trace", "debug", "info", "warn", "error", "critical", "off", "INFO", ""};
  for (std::size_t level = 0; level < std::size(levels); ++level) {
    std::string expected = "0\n";
    for (std::size_t line = level; line < std::size(lines); ++line)
      expected += lines[line];
    EXPECT_EQ(expected, play({{"TARVA_LOG_LEVEL", levels[level]}, {"TARVA_LOG_TARGET", "console"}}));
  }
}

TEST_F(logging_test, keeps_a_line_one_line_and_shows_what_a_terminal_would_obey) {
  EXPECT_EQ(
      "0\n[tarva] [info] a\\x0a[2026] \\\\x1b \\x1b[2J\\x7f\\x09|\\xc2\\x85\\xe2\\x80\\xae\\xe2\\x81\\xa6|\\xff\\xc3|ä \n"
      "[tarva] [info] two\nlines\n",
      play(to_console, [] {
        tarva::log_info("{}|{}|{}|{}", "a\n[2026] \\x1b \033[2J\177\t",
                        std::string("\302\205\342\200\256\342\201\246"), "\377\303", "ä ");
        tarva::log_info("{}", logging::own_lines{"two\nlines"});
      }));
}

TEST_F(logging_test, says_nothing_of_a_disk_that_is_full) {
  EXPECT_EQ("0\ntarva.log:\n", play({{"TARVA_LOG_LEVEL", "trace"}, {"TARVA_LOG_TARGET", "file"}}, [] {
              const rlimit nothing{0, 0}; // no file may grow; so standard error becomes a pipe
              int ends[2];
              char first = 0;
              if (setrlimit(RLIMIT_FSIZE, &nothing) != 0 || pipe2(ends, O_NONBLOCK) != 0 ||
                  dup2(ends[1], 2) != 2)
                std::exit(2);
              log_all_levels();
              std::exit(read(ends[0], &first, 1) > 0 ? 3 : 0);
            }));
}

TEST_F(logging_test, tells_of_a_variable_that_is_no_number) {
  EXPECT_EQ(
      "0\n[tarva] [warning] TARVA_BUSY_WAIT_US is no number of microseconds, so no wait looks before it "
      "sleeps: soon\n",
      play({to_console[0], to_console[1], {"TARVA_BUSY_WAIT_US", "soon"}},
           tarva::library::read_busy_wait_limit));
}

TEST_F(logging_test, configures_the_two_layers_apart) {
  const variables environment{{"TARVA_LOG_LEVEL", "critical"},
                              {"TARVA_LOG_TARGET", "console"},
                              {"SKERV_LOG_LEVEL", "critical"},
                              {"SKERV_LOG_TARGET", "file"}};
  play(environment);
  EXPECT_EQ("0\n[tarva] [critical] level -5 0x0\n"
            "skerv.log:\n[skerv] [critical] from below\n[skerv] [critical] from below\n",
            play(environment)); // the file is appended to
}

TEST_F(logging_test, creates_its_file_if_it_can_whatever_its_level) {
  EXPECT_EQ("0\ntarva.log:\n", play({{"TARVA_LOG_TARGET", "file"}}));
  fs::remove(directory / "tarva.log");
  for (const auto put_in_its_way : {+[](const char* name) { fs::create_directory(name); },
                                    +[](const char* name) { fs::create_symlink("another.log", name); },
                                    +[](const char* name) { mkfifo(name, 0600); }}) {
    put_in_its_way((directory / "tarva.log").c_str());
    EXPECT_EQ("0\n", play({{"TARVA_LOG_LEVEL", "trace"}, {"TARVA_LOG_TARGET", "file"}}));
    EXPECT_FALSE(fs::exists(directory / "another.log"));
    fs::remove(directory / "tarva.log");
  }
}

TEST_F(logging_test, leaves_its_file_to_its_owner_and_to_no_other_program) {
  EXPECT_EQ("0\ntarva.log:\n[tarva] [info] here\n", play(to_file, [] {
              umask(0);
              tarva::log_info("here");
              for (int file = 3; file < 100; ++file)
                if ((fcntl(file, F_GETFL) & O_APPEND) != 0 && (fcntl(file, F_GETFD) & FD_CLOEXEC) == 0)
                  _exit(2);
            }));
  EXPECT_EQ(fs::status(directory / "tarva.log").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(logging_test, opens_again_after_a_want_of_memory) {
  for (const variables& target : {to_console, to_file}) {
    std::string traces;
    for (failing_point = 1; traces.rfind("1\n", 0) != 0; ++failing_point) {
      traces = play(target, [] {
        failing_allocation = failing_point;
        tarva::log_info("first");
        failing_allocation = endless;
        tarva::log_info("second");
        std::exit(has_failed ? 0 : 1);
      });
      EXPECT_NE(traces.find("[tarva] [info] second\n"), traces.npos) << failing_point;
      fs::remove(directory / "tarva.log");
    }
    EXPECT_GT(failing_point, 5U);
  }
}

TEST_F(logging_test, writes_without_memory_what_it_can) {
  EXPECT_EQ("0\n[tarva] [info] short 1\n[tarva] [info] {} and {}\n[tarva] [info] " + std::string(150, 'x') +
                "\n",
            play(to_console, [] {
              const std::string some(300, 'x'), many(1000, 'x');
              tarva::get_logger();
              failure_lasts = true;
              failing_allocation = 1;
              tarva::log_info("short {}", 1);
              tarva::log_info("{} and {}", many, 2);
              tarva::log_info("{}", some);
              failing_allocation = endless;
            }));
}

TEST_F(logging_test, writes_until_it_is_closed_and_drops_later_lines) {
  EXPECT_EQ("0\ntarva.log:\n[tarva] [info] in time\n", play(to_file, [] {
              std::atexit([] { tarva::log_info("too late"); });
              tarva::get_logger();
              std::atexit([] { tarva::log_info("in time"); });
            }));
}

TEST_F(logging_test, identifiers_count_up_until_the_pool_is_spent) {
  EXPECT_EQ("1\n[tarva] [critical] Pool of unique identifiers within the library has been exhausted.\n",
            play(to_console, [] {
              using namespace tarva::library;
              if (get_unique_identifier() != 0 || get_unique_identifier() != 1)
                std::exit(2);
              std::atomic<std::uint64_t> pool{std::numeric_limits<std::uint64_t>::max() - 1};
              internal::draw_identifier(pool);
              internal::draw_identifier(pool);
              std::exit(3);
            }));
}

} // namespace
} // namespace oryn
