// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// A host program with loggers of its own under the library's names: neither sees anything of the other.
#include "tests/scripted/one_process.h"

#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>

#include <sstream>

namespace {

TEST(host_logging, stays_apart_from_the_librarys) {
  std::ostringstream host_lines;
  const auto sink = std::make_shared<spdlog::sinks::ostream_sink_mt>(host_lines);
  spdlog::logger tarva("tarva", sink), skerv("skerv", sink);
  for (spdlog::logger* one : {&tarva, &skerv})
    spdlog::register_logger(std::shared_ptr<spdlog::logger>(one, [](spdlog::logger*) {}));
  spdlog::set_pattern("host %n: %v");

  scripted::log_to_console("trace");
  scripted::set_devices({{"one", {3}}});
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(caller::devices().size(), 1U);
  const std::string library_lines = ::testing::internal::GetCapturedStderr();

  tarva.info("one");
  skerv.trace("too low");
  skerv.warn("two");
  EXPECT_EQ(host_lines.str(), "host tarva: one\nhost skerv: two\n");
  EXPECT_NE(library_lines.find("] [tarva] [info] Starting TARVA."), std::string::npos) << library_lines;
  EXPECT_EQ(library_lines.find("host "), std::string::npos);
  EXPECT_EQ(spdlog::get("tarva").get(), &tarva);
  spdlog::drop_all();
}

} // namespace
