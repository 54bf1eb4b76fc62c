# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

# `format` rewrites every source file of the project in its style, `format-check` only reports what differs.

find_program(TARVA_CLANG_FORMAT NAMES clang-format-14 clang-format)
set(format_script ${PROJECT_SOURCE_DIR}/scripts/format)

add_custom_target(format COMMAND ${format_script} ${TARVA_CLANG_FORMAT} -i
                  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} VERBATIM)
add_custom_target(format-check COMMAND ${format_script} ${TARVA_CLANG_FORMAT} --dry-run --Werror
                  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} VERBATIM)

# The reference of the headers, as HTML.
add_custom_target(reference COMMAND ${PROJECT_SOURCE_DIR}/docs/make_reference ${PROJECT_BINARY_DIR}/reference VERBATIM)
