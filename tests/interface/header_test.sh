#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# The public header is accepted on its own, without a warning, and has the version of the project.
#   header_test.sh <compiler> <standard> <tarva_abi.h> <version>
set -eu
command -v "$1" >/dev/null 2>&1 || { echo "skipped: there is no $1"; exit 77; }
case "$2" in c++*) language=c++ ;; *) language=c ;; esac
"$1" -x "$language" -std="$2" -Wall -Wextra -Wpedantic -Werror -fsyntax-only "$3"
version=$(echo 'TARVA_ABI_VERSION_MAJOR TARVA_ABI_VERSION_MINOR TARVA_ABI_VERSION_PATCH' |
          "$1" -x "$language" -std="$2" -include "$3" -E -P - | tail -n 1)
[ "$version" = "$(echo "$4" | tr . ' ')" ] || { echo "the header has version $version, the project $4"; exit 1; }
