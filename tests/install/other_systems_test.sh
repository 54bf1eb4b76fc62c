#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# Elsewhere than on Debian the names of what is missing are told, and that is an error.
#   other_systems_test.sh <scripts/install-packages>
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for tool in sh awk; do ln -s "$(command -v $tool)" "$work/$tool"; done
tool() { printf '#!/bin/sh\n%s\n' "$2" >"$work/$1" && chmod +x "$work/$1"; }
fails_with() {
  ! PATH=$work "$script" >"$work/output" 2>&1 || { echo "it succeeds where it should say: $1"; exit 1; }
  grep -q -e "$1" "$work/output" || { cat "$work/output"; exit 1; }
}
script=$1
fails_with 'libspdlog-dev libfmt-dev'
tool pacman 'case $*: in *gtest:) exit 127 ;; esac'
fails_with 'pacman -S --needed gtest$'
tool dnf ''
tool rpm 'case $*: in *cmake:) exit 1 ;; esac'
fails_with 'dnf install cmake$'
tool rpm ''
PATH=$work "$script"
