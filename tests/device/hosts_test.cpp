// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Hosts that are not like ours: what the limits, folders and streams of a process may be, in a process each. The library works
// there exactly as elsewhere, or says why not. A limit is set before the program starts, as a shell sets it, since a process is
// laid out by some of them.
#include "tests/device/caller.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <locale>
#include <pthread.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr int not_possible_here = 77;
bool are_threads_refused = false;

void possible(bool holds) {
  if (!holds)
    _exit(not_possible_here);
}

void demand(bool holds, const char* what) {
  if (!holds)
    throw std::runtime_error(std::string("not so: ") + what);
}

template <int resource>
void limit(rlim_t value) {
  const rlimit both{value, value};
  possible(setrlimit(static_cast<__rlimit_resource>(resource), &both) == 0);
}

// Its private memory is more than the stack that threads have by default where stacks have no limit.
void use() {
  const auto sum = tarva::first_device()
                       .build(R"(kernel void sum(global int* data) {
                                   volatile int own[COUNT]; // 2.8 MB
                                   for (int i = 0; i < COUNT; ++i) own[i] = i & data[0];
                                   data[1] = own[3] + own[COUNT - 2];
                                 })",
                              "-DCOUNT=700000")
                       .kernel<tarva::memory<int>>("sum");
  const tarva::memory<int> data(std::vector<int>{0xFF, 0});
  sum(tarva::range::items(1), data);
  demand(data.read()[1] == 3 + (699998 & 0xFF), "the sum");
}

// Where all files can be had but in the working directory.
void log_into(const char* folder) {
  possible(chdir(folder) == 0);
  for (const char* layer : {"TARVA", "SKERV"}) {
    setenv((std::string(layer) + "_LOG_TARGET").c_str(), "file", 1);
    setenv((std::string(layer) + "_LOG_LEVEL").c_str(), "trace", 1);
  }
}

void use_without_proc() {
  possible(unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && mount("none", "/proc", "tmpfs", 0, "") == 0);
  demand(!fs::exists("/proc/self"), "no /proc");
  use();
}

// What the host opens takes the numbers of the standard streams, and so may the library's log, which must not.
void use_with_closed_streams() {
  const fs::path folder = fs::temp_directory_path() / ("tarva_hosts_" + std::to_string(getpid()));
  fs::create_directory(folder);
  log_into(folder.c_str());
  for (int stream = 0; stream <= 2; ++stream)
    close(stream);
  caller::devices();
  const char* const names[] = {"first", "second", "third"};
  bool are_untouched = true;
  for (int stream = 0; stream <= 2; ++stream)
    are_untouched = open(names[stream], O_RDWR | O_CREAT, 0600) == stream && are_untouched;
  use();
  for (const char* name : names)
    are_untouched = are_untouched && fs::file_size(name) == 0;
  are_untouched = are_untouched && fs::file_size("tarva.log") > 0;
  fs::remove_all(folder);
  _exit(are_untouched ? 0 : 1);
}

struct with_commas final : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\1"; }
};

// A compiler may read numbers by the locale of the host, so the kernel is compiled before.
void use_in_another_culture() {
  const auto tree = [] {
    return tarva::first_device().properties().write({TARVA_ABI_TREE_TEXT, 1, 1, 1, 1, 1, 1});
  };
  setenv("TZ", "Nowhere/Land-13:59", 1);
  umask(0777);
  use();
  const std::string before = tree();
  std::locale::global(std::locale(std::locale(), new with_commas));
  demand(tree() == before, "the same numbers in every locale");
}

struct host {
  const char* name;
  void (*set_limits)(); // of the process, before its program starts
  void (*run)();
  const char*
      said; // a part of what the process says and ends with status 1 for; null: it works and says nothing
};

const host hosts[] = {
    {"unlimited_stack", [] { limit<RLIMIT_STACK>(RLIM_INFINITY); }, use, nullptr},
    {"small_stack", [] { limit<RLIMIT_STACK>(rlim_t{2} << 20); }, use, nullptr},
    {"no_threads", [] {}, [] { are_threads_refused = true, use(); },
     "There is no thread to be had for the OpenCL "},
    {"few_descriptors", [] { limit<RLIMIT_NOFILE>(12); }, use, nullptr},
    {"no_descriptors", [] {}, [] { limit<RLIMIT_NOFILE>(3), use(); }, "With QV_LOG=1 it tells why."},
    {"small_address_space", [] { limit<RLIMIT_AS>(rlim_t{1} << 30); }, use, nullptr},
    {"no_proc", [] {}, use_without_proc, nullptr},
    {"folder_for_reading", [] {}, [] { log_into("/proc/self"), use(); }, nullptr},
    {"closed_streams", [] {}, use_with_closed_streams, nullptr},
    {"another_culture", [] {}, use_in_another_culture, nullptr},
};

class hosts_test : public testing::TestWithParam<host> {};

TEST_P(hosts_test, are_served_or_told) {
  const fs::path program = fs::read_symlink("/proc/self/exe");
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    alarm(120);
    GetParam().set_limits();
    execl(program.c_str(), program.c_str(), "--host", GetParam().name, nullptr);
    _exit(not_possible_here);
  }
  close(ends[1]);
  std::string said;
  char part[4096];
  for (ssize_t length = 0; (length = read(ends[0], part, sizeof part)) > 0;)
    said.append(part, static_cast<std::size_t>(length));
  close(ends[0]);
  int status = -1;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status) << ": " << said;
  if (WEXITSTATUS(status) == not_possible_here)
    GTEST_SKIP() << "such a host cannot be made here";
  EXPECT_EQ(WEXITSTATUS(status), GetParam().said == nullptr ? 0 : 1) << said;
  if (GetParam().said == nullptr)
    EXPECT_EQ(said, "");
  else
    EXPECT_NE(said.find(GetParam().said), said.npos) << said;
}

INSTANTIATE_TEST_SUITE_P(each, hosts_test, testing::ValuesIn(hosts),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace

// Takes the place of the system's for every library of the process. OpenCL's own threads, which it may not do without,
// have no attributes.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                              void* argument) noexcept {
  if (are_threads_refused && attributes != nullptr)
    return EAGAIN;
  static const auto system = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return system(thread, attributes, body, argument);
}

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (argc != 3 || argv[1] != std::string_view("--host"))
    return RUN_ALL_TESTS();
  try {
    for (const host& each : hosts)
      if (each.name == std::string_view(argv[2]))
        each.run();
    return 0;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "tarva: %s\n", failure.what());
    return 1;
  }
}
