#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# Every entry of a run path, of every file in the build folder, is a folder beside the file or an absolute one. What is
# empty or relative would load libraries from the current directory.   run_paths_test.sh <build folder>
set -eu
find "$1" -type f \( -perm -u+x -o -name '*.so*' \) -exec readelf -d {} + 2>/dev/null | awk '
  /^File: / { file = $2 }
  /\((RPATH|RUNPATH)\)/ {
    ++paths
    gsub(/^.*\[|\]$/, "")
    if (":" $0 !~ /^(:(\/|\$ORIGIN)[^:]*)+$/) { print file ": [" $0 "]"; wrong = 1 }
  }
  END { if (!paths) print "there is no run path at all"; exit wrong || !paths }'
