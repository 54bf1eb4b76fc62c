#include "base/logging.h"

#include "base/write_signals.h"

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <fmt/args.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace oryn::logging {

struct logger::target {
  std::shared_ptr<spdlog::logger> lines;
};

namespace {

constexpr const char* pattern = "[%Y-%m-%d %T] [thread %t] [%n] [%l] %v";

constexpr std::array<std::string_view, 6> level_names = {"trace", "debug", "info",
                                                         "warn",  "error", "critical"};

std::string_view read_environment(const char* variable, std::string_view fallback) {
  const char* value = std::getenv(variable);
  return value ? std::string_view(value) : fallback;
}

log_level read_level(const char* variable) {
  const std::string_view text = read_environment(variable, "off");
  for (std::size_t level = 0; level < level_names.size(); ++level)
    if (text == level_names[level])
      return static_cast<log_level>(level);
  return log_level::off;
}

std::shared_ptr<spdlog::logger> create_lines(const logger_description& description) {
  const std::string_view target = read_environment(description.target_variable, "none");
  if (target == "file") {
    // No line waits in a buffer, which a forked child would write once more when it exits.
    spdlog::file_event_handlers handlers;
    handlers.after_open = [](const std::string&, std::FILE* file) {
      static_cast<void>(std::setvbuf(file, nullptr, _IOLBF, BUFSIZ));
    };
    return spdlog::basic_logger_mt(description.name, description.file_name, false, handlers);
  }
  if (target == "console")
    return spdlog::stderr_color_mt(description.name);
  return std::make_shared<spdlog::logger>(description.name, std::make_shared<spdlog::sinks::null_sink_mt>());
}

std::string format_line(std::string_view format, const log_argument* arguments, std::size_t count) {
  fmt::dynamic_format_arg_store<fmt::format_context> store;
  for (const log_argument* argument = arguments; argument != arguments + count; ++argument) {
    switch (argument->get_kind()) {
    case log_argument::kind::text:
      store.push_back(argument->text());
      break;
    case log_argument::kind::unsigned_number:
      store.push_back(argument->bits());
      break;
    case log_argument::kind::signed_number:
      store.push_back(static_cast<std::int64_t>(argument->bits()));
      break;
    case log_argument::kind::boolean:
      store.push_back(argument->bits() != 0);
      break;
    case log_argument::kind::pointer:
      store.push_back(argument->pointer());
      break;
    }
  }
  return fmt::vformat(format, store);
}

// Opens a logger, and closes it at exit. A forked child leaves the parent's logger alone: the locks in it may
// have been held by a thread that the child does not have.
class logger_lifetime {
public:
  explicit logger_lifetime(logger& subject) noexcept : subject_(subject), process_(getpid()) {
    subject_.open();
  }
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

void bring_up_tarva() noexcept {
  static const logger_lifetime lifetime(tarva_logger);
}
void bring_up_skerv() noexcept {
  static const logger_lifetime lifetime(skerv_logger);
}

} // namespace

void logger::open() noexcept {
  log_level level = log_level::off;
  try {
    if (description_.sets_pattern)
      spdlog::set_pattern(pattern);
    level = read_level(description_.level_variable);
    auto opened = std::make_unique<target>(target{create_lines(description_)});
    opened->lines->set_level(static_cast<spdlog::level::level_enum>(level));
    const std::lock_guard guard(lock_);
    target_ = opened.release();
  } catch (...) {
    level = log_level::off; // a target that cannot be opened leaves the logger silent
  }
  threshold_.store(static_cast<int>(level), std::memory_order_relaxed);
}

void logger::close() noexcept {
  threshold_.store(static_cast<int>(log_level::off), std::memory_order_relaxed);
  const withheld_write_signals withheld; // a file is written to when it is closed
  std::unique_ptr<target> closed;
  const std::lock_guard guard(lock_);
  closed.reset(target_);
  target_ = nullptr;
  if (closed)
    spdlog::drop(description_.name);
}

void logger::write(log_level level, std::string_view format, const log_argument* arguments,
                   std::size_t count) noexcept {
  try {
    bring_up();
    if (!is_enabled(level))
      return;
    const withheld_write_signals withheld;
    std::shared_ptr<spdlog::logger> lines;
    {
      const std::lock_guard guard(lock_);
      if (target_)
        lines = target_->lines;
    }
    if (lines)
      lines->log(static_cast<spdlog::level::level_enum>(level), format_line(format, arguments, count));
  } catch (...) {
    // A line that cannot be written must not disturb the operation that it tells of.
  }
}

constinit logger tarva_logger({"tarva", "TARVA_LOG_LEVEL", "TARVA_LOG_TARGET", "tarva.log", true,
                               bring_up_tarva});
constinit logger skerv_logger({"skerv", "SKERV_LOG_LEVEL", "SKERV_LOG_TARGET", "skerv.log", false,
                               bring_up_skerv});

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
