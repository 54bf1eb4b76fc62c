#include "base/logging.h"
#include "base/unique_identifier.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <regex>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// Loggers are opened once in a process, so each case runs in a process of its own and leaves files behind.
namespace oryn {
namespace {

namespace fs = std::filesystem;

struct scene {
  std::vector<std::pair<const char*, const char*>> environment;
  void (*act)();
};

struct traces {
  int status;
  std::string console;
  std::optional<std::string> tarva;
  std::optional<std::string> skerv;
};

std::optional<std::string> read_file(const fs::path& path) {
  if (!fs::is_regular_file(path))
    return std::nullopt;
  std::ifstream file(path);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

class logging_test : public testing::Test {
public:
  logging_test() {
    std::string pattern = fs::temp_directory_path() / "tarva_logging_XXXXXX";
    directory = mkdtemp(pattern.data());
  }
  ~logging_test() override { fs::remove_all(directory); }

protected:
  traces play(const scene& played) {
    const pid_t child = fork();
    if (child == 0) {
      fs::current_path(directory);
      if (!std::freopen("console.txt", "w", stderr))
        _exit(99);
      for (const char* variable :
           {"TARVA_LOG_LEVEL", "TARVA_LOG_TARGET", "SKERV_LOG_LEVEL", "SKERV_LOG_TARGET"})
        unsetenv(variable);
      for (const auto& [variable, value] : played.environment)
        setenv(variable, value, 1);
      played.act();
      std::exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(directory / "console.txt").value_or(""),
            read_file(directory / "tarva.log"), read_file(directory / "skerv.log")};
  }

  fs::path directory;
};

void log_all_levels() {
  tarva::log_trace("level {}", 0);
  tarva::log_debug("level {}", 1U);
  tarva::log_info("level {}", "two");
  tarva::log_warning("level {}", std::string("three"));
  tarva::log_error("level {}", true);
  tarva::log_critical("level {} {}", -5, static_cast<const void*>(nullptr));
  skerv::log_critical("from below");
}

// The lines without the date and the thread, which differ from run to run; unless these have another form.
std::string plain(const std::string& text) {
  static const std::regex beginning(R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\] \[thread \d+\] )");
  return std::regex_replace(text, beginning, "");
}

TEST_F(logging_test, is_silent_and_leaves_no_file_without_environment) {
  const traces left = play({{}, log_all_levels});
  EXPECT_EQ(0, left.status);
  EXPECT_EQ("", left.console);
  EXPECT_FALSE(left.tarva);
  EXPECT_FALSE(left.skerv);
}

TEST_F(logging_test, writes_the_lines_from_its_level_on_in_the_one_pattern) {
  const std::string lines[] = {"[tarva] [trace] level 0\n",    "[tarva] [debug] level 1\n",
                               "[tarva] [info] level two\n",   "[tarva] [warning] level three\n",
                               "[tarva] [error] level true\n", "[tarva] [critical] level -5 0x0\n"};
  const char* const levels[] = {"trace", "debug", "info", "warn", "error", "critical", "off", "INFO", ""};
  for (std::size_t level = 0; level < std::size(levels); ++level) {
    std::string expected;
    for (std::size_t line = level; line < std::size(lines); ++line)
      expected += lines[line];
    const traces left =
        play({{{"TARVA_LOG_LEVEL", levels[level]}, {"TARVA_LOG_TARGET", "console"}}, log_all_levels});
    EXPECT_EQ(expected, plain(left.console)) << levels[level];
    EXPECT_FALSE(left.tarva);
  }
}

TEST_F(logging_test, configures_the_two_layers_apart) {
  const scene played{{{"TARVA_LOG_LEVEL", "critical"},
                      {"TARVA_LOG_TARGET", "console"},
                      {"SKERV_LOG_LEVEL", "critical"},
                      {"SKERV_LOG_TARGET", "file"}},
                     log_all_levels};
  play(played);
  const traces left = play(played); // the file is appended to
  EXPECT_EQ("[tarva] [critical] level -5 0x0\n", plain(left.console));
  EXPECT_EQ("[skerv] [critical] from below\n[skerv] [critical] from below\n",
            plain(left.skerv.value_or("none")));
  EXPECT_FALSE(left.tarva);
}

TEST_F(logging_test, creates_its_file_if_it_can_whatever_its_level) {
  EXPECT_EQ("", play({{{"TARVA_LOG_TARGET", "file"}}, log_all_levels}).tarva.value_or("none"));
  fs::remove(directory / "tarva.log");
  fs::create_directory(directory / "tarva.log");
  const traces left = play({{{"TARVA_LOG_LEVEL", "trace"}, {"TARVA_LOG_TARGET", "file"}}, log_all_levels});
  EXPECT_EQ(0, left.status);
  EXPECT_EQ("", left.console);
}

TEST_F(logging_test, writes_until_it_is_closed_and_drops_later_lines) {
  const traces left = play({{{"TARVA_LOG_LEVEL", "info"}, {"TARVA_LOG_TARGET", "file"}}, [] {
                              std::atexit([] { tarva::log_info("too late"); });
                              tarva::get_logger();
                              std::atexit([] { tarva::log_info("in time"); });
                            }});
  EXPECT_EQ(0, left.status);
  EXPECT_EQ("[tarva] [info] in time\n", plain(left.tarva.value_or("none")));
}

TEST_F(logging_test, identifiers_count_up_until_the_pool_is_spent) {
  const traces left = play({{{"TARVA_LOG_LEVEL", "critical"}, {"TARVA_LOG_TARGET", "console"}}, [] {
                              using namespace tarva::library;
                              if (get_unique_identifier() != 0 || get_unique_identifier() != 1)
                                std::exit(2);
                              std::atomic<std::uint64_t> pool{std::numeric_limits<std::uint64_t>::max() - 1};
                              internal::draw_identifier(pool);
                              internal::draw_identifier(pool);
                              std::exit(3);
                            }});
  EXPECT_EQ(1, left.status);
  EXPECT_EQ("[tarva] [critical] Pool of unique identifiers within the library has been exhausted.\n",
            plain(left.console));
}

} // namespace
} // namespace oryn
