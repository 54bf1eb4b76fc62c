#!/bin/sh
# The public header is accepted on its own, without a warning.  header_test.sh <compiler> <standard> <tarva_abi.h>
set -eu
command -v "$1" >/dev/null 2>&1 || { echo "skipped: there is no $1"; exit 77; }
case "$2" in c++*) language=c++ ;; *) language=c ;; esac
exec "$1" -x "$language" -std="$2" -Wall -Wextra -Wpedantic -Werror -fsyntax-only "$3"
