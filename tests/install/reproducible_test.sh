#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# Builds the packages in two copies of the source, in two folders and two surroundings, and compares them byte for byte.
#   reproducible_test.sh <source folder>
set -eu
source=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
umask 022 # which the archives keep
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER # a cache may give what was compiled elsewhere
second=$work/some/where/else/tarva
for folder in "$work/source" "$second"; do
  mkdir -p "$folder"
  tar -C "$source" --exclude='./build*' --exclude=./.git -c . | tar -C "$folder" -x
done
build() { # folder, where the packages go
  (cd "$1" && cmake --preset package && cmake --build --preset package --parallel "${JOBS:-$(nproc)}" &&
    cd build-package && cpack -B "$2") >"$work/log" 2>&1 || { tail -n 50 "$work/log"; exit 1; }
  rm -rf "$1" "$2/_CPack_Packages"
}
build "$work/source" "$work/first"
TZ=Asia/Tokyo LC_ALL=C HOME=/nowhere build "$second" "$work/second"
cd "$work/first"
status=0
for package in *; do cmp "$package" "$work/second/$package" && sha256sum "$package" || status=1; done
[ "$(ls)" = "$(ls "$work/second")" ] && exit $status
