#!/bin/sh
# Compares the binary interface of the library with the one on record: the exported functions, their versions, and the
# layout of every record that they take or give.
#   abi_test.sh check|record <liboryn-tarva.so.0>
# A change that is meant is put on record with `record`, and committed together with its cause.
set -eu
baseline=$(dirname "$0")/liboryn-tarva.abi
command -v abidiff >/dev/null 2>&1 || { echo "skipped: there is no abidiff (package abigail-tools)"; exit 77; }
case "$1" in
  check) exec abidiff --exported-interfaces-only "$baseline" "$2" ;;
  record) abidw --exported-interfaces-only --drop-undefined-syms --no-show-locs --no-corpus-path --no-comp-dir-path \
                --no-elf-needed "$2" | sed "s|path='.*/abi/|path='abi/|" >"$baseline" ;;
esac
