#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# Every file says whose it is and under which licence, and what is installed holds the licences of all that is in it.
#   licences_test.sh <source folder> <prefix>
set -eu
for name in LICENSE THIRD-PARTY; do cmp "$1/$name" "$2/share/doc/tarva/$name"; done
grep -q '^Copyright.*Gabi Melman' "$2/share/doc/tarva/THIRD-PARTY"
