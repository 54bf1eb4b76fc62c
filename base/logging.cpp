// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

#include "base/logging.h"

#include "base/log_file.h"
#include "base/printable_text.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <new>
#include <unistd.h>

namespace oryn::logging {

// What a logger writes to. A class of its own, so that the header needs nothing of the logging library.
struct logger::target {
  std::shared_ptr<spdlog::logger> lines;
};

namespace {

constexpr const char* pattern = "[%Y-%m-%d %T] [thread %t] [%n] [%l] %v";

constexpr std::array<std::string_view, 6> level_names = {"trace", "debug", "info",
                                                         "warn",  "error", "critical"};

// A process with more rights than its caller must not write where the caller likes, so it reads no variables.
std::string_view read_environment(const char* variable, std::string_view fallback) {
  const char* value = secure_getenv(variable);
  return value ? std::string_view(value) : fallback;
}

// Anything that is not exactly a level's name means off, without a word: there is no log yet that could say so.
log_level read_level(const char* variable) {
  const std::string_view text = read_environment(variable, "off");
  for (std::size_t level = 0; level < level_names.size(); ++level)
    if (text == level_names[level])
      return static_cast<log_level>(level);
  return log_level::off;
}

// Without memory for a whole line it writes the beginning, as much as fits into the buffer that is part of every line.
class frugal_formatter final : public spdlog::formatter {
public:
  explicit frugal_formatter(std::unique_ptr<spdlog::formatter> whole) : whole_(std::move(whole)) {}

  void format(const spdlog::details::log_msg& message, spdlog::memory_buf_t& line) override {
    try {
      whole_->format(message, line);
    } catch (const std::bad_alloc&) {
      constexpr std::size_t beginning = 100; // enough for what stands before the text
      line.clear();
      spdlog::details::log_msg cut = message;
      std::size_t length = std::min(message.payload.size(), spdlog::memory_buf_t().capacity() - beginning);
      while (length != 0 && length != message.payload.size() &&
             (message.payload.data()[length] & 0xC0) == 0x80)
        --length; // not within a character
      cut.payload = {message.payload.data(), length};
      whole_->format(cut, line);
    }
  }
  std::unique_ptr<spdlog::formatter> clone() const override {
    return std::make_unique<frugal_formatter>(whole_->clone());
  }

private:
  const std::unique_ptr<spdlog::formatter> whole_;
};

// The logging library's own file sink has a buffer, and follows links.
class file_sink final : public spdlog::sinks::base_sink<std::mutex> {
public:
  explicit file_sink(const char* name) : file_(name) {}

private:
  void sink_it_(const spdlog::details::log_msg& message) override {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    file_.append({line.data(), line.size()});
  }
  void flush_() override {}

  const log_file file_;

public:
  int descriptor() const { return file_.descriptor(); }
};

// The loggers with a target are registered by name, and take the pattern from there. One without needs neither.
// `descriptor` becomes that of the target.
std::shared_ptr<spdlog::logger> create_lines(const logger_description& description, int& descriptor) {
  const std::string_view target = read_environment(description.target_variable, "none");
  if (target == "file") {
    auto lines = spdlog::create<file_sink>(description.name, description.file_name);
    descriptor = static_cast<const file_sink&>(*lines->sinks().front()).descriptor();
    return lines;
  }
  if (target == "console") {
    descriptor = STDERR_FILENO;
    return spdlog::stderr_color_mt(description.name);
  }
  return std::make_shared<spdlog::logger>(description.name, std::make_shared<spdlog::sinks::null_sink_mt>());
}

void append(fmt::memory_buffer& line, const log_argument& argument) {
  const auto text = std::back_inserter(line);
  switch (argument.get_kind()) {
  case log_argument::kind::text:
    write_escaped(argument.text(), [&line](std::string_view part) { line.append(part); });
    break;
  case log_argument::kind::own_lines:
    line.append(argument.text());
    break;
  case log_argument::kind::unsigned_number:
    fmt::format_to(text, "{}", argument.bits());
    break;
  case log_argument::kind::signed_number:
    fmt::format_to(text, "{}", static_cast<std::int64_t>(argument.bits()));
    break;
  case log_argument::kind::boolean:
    fmt::format_to(text, "{}", argument.bits() != 0);
    break;
  case log_argument::kind::pointer:
    fmt::format_to(text, "{}", argument.pointer());
    break;
  }
}

// Puts the arguments in the places of the pairs of braces. Takes memory for a long line only.
void compose(fmt::memory_buffer& line, std::string_view format, const log_argument* arguments,
             std::size_t count) {
  constexpr std::string_view place = "{}";
  for (; count != 0; --count, ++arguments) {
    const std::size_t before = format.find(place);
    if (before == format.npos)
      break;
    line.append(format.substr(0, before));
    append(line, *arguments);
    format.remove_prefix(before + place.size());
  }
  line.append(format);
}

// Opens a logger, and closes it when the process exits. A forked child does not close it: its locks may have been held by a
// thread that the child does not have.
class logger_lifetime {
public:
  explicit logger_lifetime(logger& subject) : subject_(subject), process_(getpid()) { subject_.open(); }
  logger_lifetime(const logger_lifetime&) = delete;
  logger_lifetime& operator=(const logger_lifetime&) = delete;
  ~logger_lifetime() {
    if (getpid() == process_)
      subject_.close();
  }

private:
  logger& subject_;
  const pid_t process_;
};

// Opens the logger at its first line. The static object is complete when open() has returned, so that what open() makes is
// destroyed after the logger has closed.
template <logger& subject>
void bring_up_once() noexcept {
  try {
    static const logger_lifetime lifetime(subject);
  } catch (const std::bad_alloc&) {
    // The next line tries again.
  }
}

} // namespace

void logger::open() {
  log_level level = log_level::off;
  try {
    if (description_.sets_pattern)
      spdlog::set_formatter(
          std::make_unique<frugal_formatter>(std::make_unique<spdlog::pattern_formatter>(pattern)));
    level = read_level(description_.level_variable);
    auto opened = std::make_unique<target>();
    // The last step that takes memory: it cannot be repeated, since the name would be taken.
    int descriptor = -1;
    opened->lines = create_lines(description_, descriptor);
    descriptor_ = descriptor;
    opened->lines->set_level(static_cast<spdlog::level::level_enum>(level));
    // A line that cannot be written, such as to a full disk, is lost. The logging library would tell the host's standard error.
    opened->lines->set_error_handler([](const std::string&) {});
    const lock_guard guard(lock_);
    target_ = opened.release();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    level = log_level::off; // without a target the logger is silent
  }
  threshold_.store(static_cast<int>(level), std::memory_order_relaxed);
}

void logger::close() noexcept {
  threshold_.store(static_cast<int>(log_level::off), std::memory_order_relaxed);
  descriptor_ = -1;
  const withheld_write_signals withheld; // closing may still write
  std::unique_ptr<target> closed;
  const lock_guard guard(lock_);
  closed.reset(target_);
  target_ = nullptr;
  if (closed)
    spdlog::drop(description_.name);
}

void logger::write_without_locks(std::string_view text) noexcept {
  const int descriptor = descriptor_;
  if (descriptor < 0 || !is_enabled(log_level::error) ||
      (descriptor != STDERR_FILENO && !is_log_descriptor(descriptor)))
    return;
  std::array<char, 256> line{};
  const int length = std::snprintf(line.data(), line.size(), "[process %ld] [%s] [error] %.*s\n",
                                   static_cast<long>(getpid()), description_.name,
                                   static_cast<int>(text.size()), text.data());
  const withheld_write_signals withheld;
  if (::write(descriptor, line.data(), std::min(static_cast<std::size_t>(length), line.size() - 1)) < 0)
    return; // as any line that cannot be written
}

// The target is shared while a line is written, so that closing the logger at the same time does not pull it away. The lock
// is not held meanwhile: the target has one of its own, and a slow one must not hold up more than the lines.
void logger::write(log_level level, std::string_view format, const log_argument* arguments,
                   std::size_t count) noexcept {
  try {
    bring_up();
    if (!is_enabled(level))
      return;
    const withheld_write_signals withheld;
    std::shared_ptr<spdlog::logger> lines;
    {
      const lock_guard guard(lock_);
      if (target_)
        lines = target_->lines;
    }
    if (!lines)
      return;
    const auto spdlog_level = static_cast<spdlog::level::level_enum>(level);
    fmt::memory_buffer line;
    try {
      compose(line, format, arguments, count);
    } catch (const std::bad_alloc&) {
      lines->log(spdlog_level, spdlog::string_view_t(format.data(), format.size()));
      return;
    }
    lines->log(spdlog_level, spdlog::string_view_t(line.data(), line.size()));
  } catch (...) {
    // A line that cannot be written must not disturb the operation that it is about.
  }
}

constinit logger tarva_logger({"tarva", "TARVA_LOG_LEVEL", "TARVA_LOG_TARGET", "tarva.log", true,
                               bring_up_once<tarva_logger>});
constinit logger skerv_logger({"skerv", "SKERV_LOG_LEVEL", "SKERV_LOG_TARGET", "skerv.log", false,
                               bring_up_once<skerv_logger>});

} // namespace oryn::logging

namespace oryn::tarva {

logging::logger* get_logger() noexcept {
  logging::tarva_logger.bring_up();
  return &logging::tarva_logger;
}

} // namespace oryn::tarva

namespace oryn::skerv {

logging::logger* get_logger() noexcept {
  logging::skerv_logger.bring_up();
  return &logging::skerv_logger;
}

} // namespace oryn::skerv
