#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# The C++ headers are accepted without a warning, as examples use them; and in C++17 each by itself, too. What makes no
# sense is refused in words: an older C++ by nothing but them.
#   header_test.sh <compiler> <standard> <source folder>
set -eu
command -v "$1" >/dev/null 2>&1 || { echo "skipped: there is no $1"; exit 77; }
cd "$3"
check="$1 -x c++ -std=$2 -Iinclude -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
       -Wnon-virtual-dtor -Werror -fsyntax-only"
case $2 in c++17) $check include/tarva/*.hpp ;; esac
refused() { # words, line of a program
  echo "#include <tarva.hpp>
void f() { $2; }" | ${check% *} -Wno-error -O1 -S -o /dev/null - 2>&1 | grep -F "$1" >/dev/null || { echo "not refused with '$1': $2"; exit 1; }
}
refused "vectors of 16 bytes" "struct own { float a, b; }; tarva::kernel()(tarva::range::items(1), own());"
refused "sizes are whole numbers" "tarva::range::items(2.5)"
refused "a count is not below 0" "tarva::memory<int>(-1)"
[ "$(echo "#include <tarva.hpp>" | $1 -x c++ -std=c++14 -Iinclude -fsyntax-only - 2>&1 | grep -c error:)" = 1 ]
exec $check -Wno-sign-conversion examples/properties.cpp examples/reduction.cpp examples/specialization.cpp
