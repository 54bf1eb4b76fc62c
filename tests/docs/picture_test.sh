#!/bin/sh
# The picture says what its source says.   picture_test.sh <docs>
set -eu
command -v dot >/dev/null 2>&1 || { echo "skipped: there is no dot; see scripts/install-packages --release"; exit 77; }
texts() { grep -o '<text[^>]*>[^<]*' | sed 's/.*>//' | sort; }
[ "$(dot -Tsvg "$1/architecture.dot" | texts)" = "$(texts <"$1/architecture.svg")" ]
