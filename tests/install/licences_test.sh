#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# Every file says whose it is and under which licence, and what is installed holds the licences of all that is in it.
#   licences_test.sh <source folder> <prefix>
set -eu
for name in LICENSE THIRD-PARTY; do cmp "$1/$name" "$2/share/doc/tarva/$name"; done
grep -q '^Copyright.*Gabi Melman' "$2/share/doc/tarva/THIRD-PARTY"
bare=$(find "$2/include" -type f -exec grep -L 'SPDX-License.Identifier: MIT' {} +)
[ -z "$bare" ] || { echo "without a licence: $bare"; exit 1; }
cd "$1"
git rev-parse --git-dir >/dev/null 2>&1 || { echo "skipped: not a clone, or there is no git"; exit 77; }
command -v reuse >/dev/null 2>&1 || { echo "skipped: there is no reuse"; exit 77; }
reuse lint
