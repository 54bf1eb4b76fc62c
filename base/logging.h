// SPDX-FileCopyrightText: 2026 TARVA developers
// SPDX-License-Identifier: MIT

// Two loggers, one for the library and one for the access layer below it. They are configured through the environment only
// and silent by default. The logging library behind them is not visible here, so that it can stay private to this one.
#pragma once

#include "base/thread_annotations.h"

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace oryn::logging {

enum class log_level : int { trace, debug, info, warning, error, critical, off };

// A text of the library's own that may have several lines. All other texts are made printable.
struct own_lines {
  std::string_view text;
};

// One value of a log line. It only refers to text, so it must not outlive the statement.
class log_argument {
public:
  enum class kind { text, own_lines, unsigned_number, signed_number, boolean, pointer };

  log_argument(std::string_view text) noexcept : kind_(kind::text), text_(text) {}
  log_argument(own_lines lines) noexcept : kind_(kind::own_lines), text_(lines.text) {}
  log_argument(const std::string& text) noexcept : log_argument(std::string_view(text)) {}
  log_argument(const char* text) noexcept : log_argument(std::string_view(text ? text : "(null)")) {}
  log_argument(const void* pointer) noexcept : kind_(kind::pointer), pointer_(pointer) {}
  template <std::integral T>
  log_argument(T value) noexcept : kind_(kind_of<T>()), bits_(static_cast<std::uint64_t>(value)) {}

  kind get_kind() const noexcept { return kind_; }
  std::string_view text() const noexcept { return text_; }
  const void* pointer() const noexcept { return pointer_; }
  std::uint64_t bits() const noexcept { return bits_; }

private:
  template <std::integral T>
  static constexpr kind kind_of() noexcept {
    if (std::same_as<T, bool>)
      return kind::boolean;
    return std::signed_integral<T> ? kind::signed_number : kind::unsigned_number;
  }

  kind kind_;
  std::string_view text_{};
  const void* pointer_ = nullptr;
  std::uint64_t bits_ = 0;
};

// What differs between the loggers. Levels are written as "trace", "debug", "info", "warn", "error" and "critical", targets
// as "file" and "console"; anything else means off, or nowhere.
struct logger_description {
  const char* name;
  const char* level_variable;
  const char* target_variable;
  const char* file_name;
  bool sets_pattern; // the pattern belongs to the whole registry, so only one of the two sets it
  void (*bring_up)() noexcept;
};

// A logger itself needs no start and no end, so that lines can be written at any moment of the process. Its target is opened
// by the first line that there is memory for, and closed by an exit handler; later lines are dropped. Without memory to
// compose a line, its format is written as it stands.
//
// Any thread may write, with any lock of the library held: the logger's lock comes last in the lock order, before those
// that the logging library has inside.
class logger {
public:
  explicit constexpr logger(const logger_description& description) noexcept : description_(description) {}
  logger(const logger&) = delete;
  logger& operator=(const logger&) = delete;

  // Before the logger is open every level is enabled, so that the first statement opens it.
  bool is_enabled(log_level level) const noexcept {
    return static_cast<int>(level) >= threshold_.load(std::memory_order_relaxed);
  }
  void write(log_level level, std::string_view format, const log_argument* arguments,
             std::size_t count) noexcept TARVA_EXCLUDES(lock_);

  // A text of the library's own at level error, for a forked child, in which nobody may ever give a lock back. Without the time,
  // which takes locks, too.
  void write_without_locks(std::string_view text) noexcept;

  // Opens the logger unless it has been opened before. Any number of threads may call it at a time.
  void bring_up() noexcept { description_.bring_up(); }
  // Called once each, by the object whose lifetime is that of the open logger. The first throws nothing but std::bad_alloc,
  // with nothing changed; any other failure leaves the logger silent.
  void open() TARVA_EXCLUDES(lock_);
  void close() noexcept TARVA_EXCLUDES(lock_);

private:
  struct target;

  const logger_description description_;
  std::atomic<int> threshold_{static_cast<int>(log_level::trace)};
  std::atomic<int> descriptor_{-1}; // of the open target
  mutex lock_;
  target* target_ TARVA_GUARDED_BY(lock_) = nullptr; // null before it is opened and after it is closed
};

extern logger tarva_logger;
extern logger skerv_logger;

// A log statement. For a silent logger it costs one comparison. A line that cannot be written is dropped.
// The arguments take the places of the pairs of braces in the format, in order. A line stays one line, whatever stands in
// them: what a terminal or a viewer would obey is escaped, and so is a backslash, since some of it comes from drivers.
template <logger& destination, log_level severity>
struct statement {
  template <class... Arguments>
  void operator()(std::string_view format, const Arguments&... values) const noexcept {
    if (!destination.is_enabled(severity))
      return;
    const log_argument erased[] = {log_argument(values)..., log_argument("")};
    destination.write(severity, format, erased, sizeof...(values));
  }
};

} // namespace oryn::logging

namespace oryn::tarva {

inline constexpr logging::statement<logging::tarva_logger, logging::log_level::trace> log_trace{};
inline constexpr logging::statement<logging::tarva_logger, logging::log_level::debug> log_debug{};
inline constexpr logging::statement<logging::tarva_logger, logging::log_level::info> log_info{};
inline constexpr logging::statement<logging::tarva_logger, logging::log_level::warning> log_warning{};
inline constexpr logging::statement<logging::tarva_logger, logging::log_level::error> log_error{};
inline constexpr logging::statement<logging::tarva_logger, logging::log_level::critical> log_critical{};

// The first call opens the logger.
logging::logger* get_logger() noexcept;

} // namespace oryn::tarva

namespace oryn::skerv {

inline constexpr logging::statement<logging::skerv_logger, logging::log_level::trace> log_trace{};
inline constexpr logging::statement<logging::skerv_logger, logging::log_level::debug> log_debug{};
inline constexpr logging::statement<logging::skerv_logger, logging::log_level::info> log_info{};
inline constexpr logging::statement<logging::skerv_logger, logging::log_level::warning> log_warning{};
inline constexpr logging::statement<logging::skerv_logger, logging::log_level::error> log_error{};
inline constexpr logging::statement<logging::skerv_logger, logging::log_level::critical> log_critical{};

// The first call opens the logger.
logging::logger* get_logger() noexcept;

} // namespace oryn::skerv
