#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# Compares the binary interface of the library with the one on record: the exported functions, their versions, and the
# layout of every record that they take or give.
#   abi_test.sh check|release|record <liboryn-tarva.so.0>
# `release` compares with the record of the last release, the newest tag v*, and lets additions pass.
# A change that is meant is put on record with `record`, and committed together with its cause.
set -eu
baseline=$(dirname "$0")/liboryn-tarva.abi
command -v abidiff >/dev/null 2>&1 || { echo "skipped: there is no abidiff (package abigail-tools)"; exit 77; }
case "$1" in
  check) exec abidiff --exported-interfaces-only "$baseline" "$2" ;;
  release)
    cd "$(dirname "$0")"
    tag=$(git describe --tags --abbrev=0 --match 'v*' 2>/dev/null) || { echo "skipped: no release is known here"; exit 77; }
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    # Enumerators are in the header alone: no function has them in its types.
    numbers() { grep -o 'TARVA_ABI_[A-Z0-9_]* = [0-9]*' | sort; }
    git show "$tag:include/tarva_abi.h" | numbers >"$work/numbers"
    numbers <../../include/tarva_abi.h | comm -13 - "$work/numbers" >"$work/changed"
    [ ! -s "$work/changed" ] || { echo "gone or with another number since $tag:"; cat "$work/changed"; exit 1; }
    git show "$tag:./liboryn-tarva.abi" >"$work/released.abi"
    abidiff --exported-interfaces-only --no-added-syms "$work/released.abi" "$2"
    ;;
  record) abidw --exported-interfaces-only --drop-undefined-syms --no-show-locs --no-corpus-path --no-comp-dir-path \
                --no-elf-needed "$2" | sed "s|path='.*/abi/|path='abi/|" >"$baseline" ;;
esac
