#!/bin/sh
# The C++ headers are accepted without a warning, as examples use them; and in C++17 each by itself, too.
#   header_test.sh <compiler> <standard> <source folder>
set -eu
command -v "$1" >/dev/null 2>&1 || { echo "skipped: there is no $1"; exit 77; }
cd "$3"
check="$1 -x c++ -std=$2 -Iinclude -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
       -Wnon-virtual-dtor -Werror -fsyntax-only"
case $2 in c++17) $check include/tarva/*.hpp ;; esac
exec $check -Wno-sign-conversion examples/properties.cpp examples/reduction.cpp examples/specialization.cpp
