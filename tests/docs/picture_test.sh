#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# The pictures say what their sources say.   picture_test.sh <docs>
set -eu
command -v dot >/dev/null 2>&1 || { echo "skipped: there is no dot; see scripts/install-packages --release"; exit 77; }
texts() { grep -o '<text[^>]*>[^<]*' | sed 's/.*>//' | sort; }
for source in "$1"/*.dot; do
  [ "$(dot -Tsvg "$source" | texts)" = "$(texts <"${source%dot}svg")" ] || { echo "${source%dot}svg is out of date"; exit 1; }
done
