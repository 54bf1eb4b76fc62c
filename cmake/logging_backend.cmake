# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

# The logging library, compiled into the one source file that includes it. Its shared library is not linked:
# that would share its registry of loggers with the process that the library is loaded into.

find_path(TARVA_SPDLOG_INCLUDE_DIR spdlog/spdlog.h REQUIRED)
find_path(TARVA_FMT_INCLUDE_DIR fmt/format.h REQUIRED)

add_library(tarva_logging_backend INTERFACE)
target_include_directories(tarva_logging_backend SYSTEM INTERFACE ${TARVA_SPDLOG_INCLUDE_DIR} ${TARVA_FMT_INCLUDE_DIR})
target_compile_definitions(tarva_logging_backend INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY=1)
