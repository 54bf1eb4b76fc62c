#pragma once

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

// Two loggers, one for the library and one for the access layer below it, configured through the environment
// only and silent by default. Nothing of the logging library behind them shows here.
namespace oryn::logging {

enum class log_level : int { trace, debug, info, warning, error, critical, off };

// One value of a log line, by reference: it lives no longer than the statement.
class log_argument {
public:
  enum class kind { text, unsigned_number, signed_number, boolean, pointer };

  log_argument(std::string_view text) noexcept : kind_(kind::text), text_(text) {}
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

struct logger_description {
  const char* name;
  const char* level_variable;
  const char* target_variable;
  const char* file_name;
  bool sets_pattern; // the pattern belongs to the whole registry, so only one of the two sets it
  void (*bring_up)() noexcept;
};

// Lives from before the first line to after the last one: it has nothing that an exit handler could take
// away. What it writes to is opened by the first line that there is memory for, and closed by an exit handler, after
// which lines are dropped. Without memory to compose a line its format is written as it stands.
class logger {
public:
  explicit constexpr logger(const logger_description& description) noexcept : description_(description) {}
  logger(const logger&) = delete;
  logger& operator=(const logger&) = delete;

  // Until the first line every level passes, so that the first statement of all opens the logger.
  bool is_enabled(log_level level) const noexcept {
    return static_cast<int>(level) >= threshold_.load(std::memory_order_relaxed);
  }
  void write(log_level level, std::string_view format, const log_argument* arguments,
             std::size_t count) noexcept;

  void bring_up() noexcept { description_.bring_up(); }
  // Throws std::bad_alloc alone; then nothing has changed. Whatever else goes wrong leaves the logger silent.
  void open();
  void close() noexcept;

private:
  struct target;

  const logger_description description_;
  std::atomic<int> threshold_{static_cast<int>(log_level::trace)};
  std::mutex lock_;
  target* target_ = nullptr;
};

extern logger tarva_logger;
extern logger skerv_logger;

// A log statement: a silent logger costs one comparison, and a line that cannot be written is dropped.
template <logger& destination, log_level severity>
struct statement {
  template <typename... arguments>
  void operator()(std::string_view format, const arguments&... values) const noexcept {
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

logging::logger* get_logger() noexcept;

} // namespace oryn::skerv
