#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# The libraries export their functions at their versions and nothing else, hold no unique symbol, and load no OpenCL
# library and no logging library by themselves.
#   exports_test.sh <liboryn-tarva.so.0> <libqv.so.0> <tarva_abi.h> <qv.h>
set -eu

failed=0
fail() {
  echo "$1"
  failed=1
}

# The exported names of $1, with version and without.
exports() { nm -D --defined-only --with-symbol-versions "$1" | awk '$2 != "A" { print $3 }' | sort; }

check() { # library, names expected, version
  expected=$(printf '%s\n' $2 | sed "s/\$/@@$3/" | sort)
  [ "$(exports "$1")" = "$expected" ] || fail "$1 exports other names than its header declares:
$(exports "$1")"
  readelf -W --dyn-syms "$1" | grep -q UNIQUE && fail "$1 has unique symbols"
  readelf -d "$1" | grep NEEDED | grep -E 'OpenCL|spdlog|fmt' && fail "$1 needs a library that it should not"
  return 0
}

tarva=$(grep -oE '\btarva_abi_[a-z_]+\(' "$3" | tr -d '(' | sort -u)
qv=$(grep -oE '\bqv_[a-z_]+\(' "$4" | tr -d '(' | sort -u)
[ "$(printf '%s\n' $tarva | wc -l)" -ge 38 ] || fail "the header declares fewer functions than 38"
[ "$(printf '%s\n' $qv | wc -l)" = 6 ] || fail "the header declares another number of functions than 6"
check "$1" "$tarva" ORYNTARVA_1.0
check "$2" "$qv" LIBQV_1.0
nm -D --with-symbol-versions "$1" | grep -c ' U qv_.*@LIBQV_1.0' | grep -qx 6 ||
  fail "$1 does not import six functions at LIBQV_1.0"
exit $failed
