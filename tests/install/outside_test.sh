#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# Builds and runs what lies in outside/, and two examples, against an installed tree, or with the source as a part of the
# build, by one of the roads to it.
#   outside_test.sh <prefix> <road> <examples>
# CC and CXX name the compilers.
set -eu
prefix=$1 examples=$3
outside=$(dirname "$0")/outside
folder=$(find "$prefix" -name liboryn-tarva.so.0 -exec dirname {} \;)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
strict="-Wall -Wextra -Wpedantic -Werror"

need() { command -v "$1" >/dev/null 2>&1 || { echo "skipped: there is no $1"; exit 77; }; }

run() { LD_LIBRARY_PATH="$folder${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" "$@"; }

build_and_run() { # compiler flags, linker flags
  $CC -std=c99 $strict "$examples/saxpy.c" $1 $2 -o "$work/saxpy"
  $CXX -std=c++17 $strict "$examples/saxpy.cpp" $1 $2 -o "$work/saxpy_cpp"
  run "$work/saxpy"
  run "$work/saxpy_cpp"
}

cmake_build() { # definitions
  cmake -S "$outside" -B "$work/build" -DEXAMPLES="$examples" -DCMAKE_C_FLAGS="$strict" -DCMAKE_CXX_FLAGS="$strict" "$@"
  cmake --build "$work/build" --parallel "$(nproc)"
  "$work/build/saxpy"
  "$work/build/saxpy_cpp"
}

case $2 in
  pkg_config)
    need pkg-config
    export PKG_CONFIG_PATH="$folder/pkgconfig"
    build_and_run "$(pkg-config --cflags tarva)" "$(pkg-config --libs tarva)"
    ;;
  cmake) cmake_build -DCMAKE_PREFIX_PATH="$prefix" ;;
  part)
    # Nothing of ours is there but the libraries: no test, no tool, nothing to install.
    for road in add_subdirectory fetch_content; do
      cmake_build -DROAD=$road -DSOURCE="$(realpath "$examples/..")"
      [ "$(ctest --test-dir "$work/build" -N | grep -c 'Test *#')" = 0 ]
      cmake --install "$work/build" --prefix "$work/installed"
      [ ! -e "$work/installed" ]
      executables=$(find "$work/build" -path '*/CMakeFiles' -prune -o -type f -perm -u+x -print | sed 's|.*/||; s|so\..*|so|' | sort)
      [ "$(echo $executables)" = "liboryn-tarva.so libqv.so saxpy saxpy_cpp" ] || { echo $executables; exit 1; }
    done
    ;;
  plain) build_and_run "-I$prefix/include" "-L$folder -loryn-tarva" ;;
  dlopen)
    $CC -std=c99 $strict -Wno-pedantic "-I$prefix/include" "$outside/load.c" -ldl -o "$work/load"
    run "$work/load" liboryn-tarva.so.0
    ;;
  tool)
    # It finds the library from where it lies itself, as do programs that CMake has built.
    "$prefix/bin/tarva-info" --version
    "$prefix/bin/tarva-info"
    ;;
esac
