#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# tarva_info_test.sh TOOL PART: one part of the tool's behaviour on the devices that the environment offers.
# Status 77 if something that the part needs is not there; a device may be needed, by TARVA_TEST_NEEDS_DEVICE.
set -u
tool=$1
failures=0

fail() { echo "FAILED: $*"; failures=$((failures + 1)); }
equal() { [ "$2" = "$3" ] || fail "$1: \"$2\" is not \"$3\""; }
holds() { case $2 in *"$3"*) ;; *) fail "$1: no \"$3\" in: $2" ;; esac; }
need() { command -v "$1" >/dev/null || { echo "skipped: there is no $1"; exit 77; }; }

# status EXPECTED WORD...: how the tool ends; its output is in $output.
status() {
  expected=$1; shift
  output=$("$tool" "$@" 2>&1); ended=$?
  equal "status of '$*'" "$ended" "$expected"
}

# value_in_xml KEY: reads the tree of one device.
value_in_xml() { xmllint --xpath "string(//property[distinct_name='$1']/data/value)" -; }

usage_part() {
  status 0 --help; holds --help "$output" --get
  status 0 -v; holds -v "$output" tarva-info
  for words in --bad -x "--raw --json" "0 1" "0 -d 1" one -1 99999999999999999999 "--device 1x" --get "-a 0" "-l --prop MEM"; do
    status 2 $words
    holds "$words" "$output" --help
  done
  status 2 --help=3; holds "an argument too many" "$output" "--help=3: this option takes no argument"
  status 0; holds list "$output" OpenCL
  status 0 --list
  status 1 9999; holds 9999 "$output" 9999
  "$tool" --raw 2>/dev/null >/dev/full && fail "a full disk goes unnoticed"
  status 1 0 --prop no_such; holds "no match" "$output" "no key contains no_such"
  export OCL_ICD_VENDORS=/nonexistent
  status 1; holds "no device" "$output" "no OpenCL device"; holds "no device" "$output" pocl-opencl-icd
}

values_part() {
  name=$("$tool" 0 --get NAME)
  equal "path from the root" "$("$tool" -d 0 --get OPENCL/CL_DEVICE_NAME)" "$name"
  holds raw "$("$tool" --raw 0)" "CL_DEVICE_ENDIAN_LITTLE"
  equal prop "$("$tool" 0 --raw --prop endian_l | tr -s ' ')" "[0] CL_DEVICE_ENDIAN_LITTLE true"
  holds list "$("$tool")" "$name"
  holds tree "$("$tool" 0)" "$name"
  equal "elements on lines" "$("$tool" 0 --get OPENCL/CL_DEVICE_MAX_WORK_ITEM_SIZES | wc -l)" 3
  raw=$("$tool" 0 --raw)
  for key in $(echo "$raw" | awk 'NR % 9 == 1 { print $2 }'); do
    equal "what --raw shows of $key" "$("$tool" 0 --get "$key" | tr '\n' ' ' | tr -s ' ')" \
      "$(echo "$raw" | awk -v key="$key" '$2 == key { $1 = $2 = ""; print $0 " " }' | tr -s ' ' | sed 's/^ //' | tr -d '\n')"
  done
  for path in NOTHING OPENCL OPENCL/NOTHING OPENCL/CL_DEVICE_NAME/NAME OPENCL/CL_DEVICE_SINGLE_FP_CONFIG ""; do
    status 1 0 --get "$path"
  done
  case $("$tool" --all | tr -d '\n') in *"$(printf '\033')"*) fail "colours without a terminal" ;; esac
  equal "values of the library's own tree" "$("$tool" 0 --xml | grep -c '^<data ')" "$("$tool" 0 --raw | wc -l)"
}

# A terminal of 60 columns, in which nothing is wider.
terminal_part() {
  need script
  script -qec true /dev/null >/dev/null 2>&1 || { echo "skipped: no terminal can be made"; exit 77; }
  for words in "" 0; do
    lines=$(script -qec "stty cols 60; NO_COLOR=1 '$tool' $words" /dev/null | tr -d '\r')
    holds "'$words' on a terminal" "$lines" Dev
    equal "too wide with '$words'" "$(echo "$lines" | awk 'length > 60')" ""
  done
}

kernels_part() {
  echo 'kernel void add(global int* data, int amount) { data[0] += amount; } kernel void idle() {}' >kernels.cl
  status 0 0 --kernels kernels.cl; holds tree "$output" add; holds tree "$output" idle
  need python3
  equal "arguments" "$("$tool" 0 --json --kernels kernels.cl | json 'all["devices"][0]["add"]["OPENCL"]["CL_KERNEL_NUM_ARGS"]')" 2
  echo 'kernel void broken(' >kernels.cl
  status 1 0 --kernels kernels.cl; holds "the log" "$output" "kernels.cl does not build: "
  status 1 0 --kernels /nonexistent
  status 2 0 --raw --kernels kernels.cl
}

json_part() {
  need python3
  "$tool" --json | python3 -m json.tool >/dev/null || fail "not JSON"
  equal "devices" "$("$tool" --json | json 'len(all["devices"])')" "$("$tool" --list | tail -n +2 | wc -l)"
  equal "a number" "$("$tool" 0 --json | json 'all["devices"][0]["OPENCL"]["CL_DEVICE_MAX_COMPUTE_UNITS"]')" \
    "$("$tool" 0 --get OPENCL/CL_DEVICE_MAX_COMPUTE_UNITS)"
  path='all["devices"][0]["OPENCL"]["CL_DEVICE_EXTENSIONS"]'
  equal "a list" "$("$tool" 0 --json | json "chr(10).join($path)")" "$("$tool" 0 --get OPENCL/CL_DEVICE_EXTENSIONS)"
  output=$(OCL_ICD_VENDORS=/nonexistent "$tool" --json 2>/dev/null | json 'len(all["devices"])')
  equal "no device" "$output" 0
}
json() { python3 -c "import json, sys; all = json.load(sys.stdin); print($1)"; }

xml_part() {
  need xmllint
  "$tool" --xml | xmllint --noout - || fail "all devices"
  equal "name" "$("$tool" --xml 0 | value_in_xml CL_DEVICE_NAME)" "$("$tool" 0 --get OPENCL/CL_DEVICE_NAME)"
}

# A device that does not answer for its samplers.
refusal_part() {
  need xmllint
  all=$("$tool" --xml 0 | grep -c distinct_name)
  export SCRIPTED_REFUSED_QUERY=0x1018
  status 1 0 --get OPENCL/CL_DEVICE_MAX_SAMPLERS
  status 0 0 --get OPENCL/CL_DEVICE_ADDRESS_BITS
  status 0 0; holds tree "$output" "error: "; holds "what follows" "$output" "Local memory size"
  status 0 0 --json; holds json "$output" '"error": '; holds "what follows" "$output" CL_DEVICE_LOCAL_MEM_SIZE
  status 1 0 --text; holds text "$output" "tarva-info: CL_DEVICE_MAX_SAMPLERS: "
  xml=$("$tool" --xml 0 2>/dev/null)
  echo "$xml" | xmllint --noout - || fail "XML of what is left"
  equal "all others" "$(echo "$xml" | grep -c distinct_name)" $((all - 1))
  export SCRIPTED_REFUSED_QUERY=0x101F
  status 0; holds "the list goes on" "$output" '?'
}

# Devices with names that their makers should not have chosen.
names_part() {
  need xmllint; need python3
  export SCRIPTED_DEVICE_NAME
  SCRIPTED_DEVICE_NAME="<b>&amp;</b> \"Ä\" '5' ]]>"
  equal xml "$("$tool" 0 --xml | value_in_xml NAME)" "$SCRIPTED_DEVICE_NAME"
  SCRIPTED_DEVICE_NAME=$(printf 'a\033[31m\001\377\\"z\302\205')
  equal get "$("$tool" 0 --get NAME)" "$SCRIPTED_DEVICE_NAME"
  holds tree "$("$tool" 0)" 'a\x1b[31m\x01\xff\"z\xc2\x85'
  holds list "$("$tool")" 'a\x1b[31m\x01\xff\"z\xc2\x85'
  equal json "$("$tool" --json | json 'ascii(all["devices"][0]["NAME"])')" "'a\\x1b[31m\\x01\\ufffd\\\\\"z\\x85'"
  # What a terminal would obey: never in JSON, and in no form on a terminal.
  SCRIPTED_DEVICE_NAME=$(printf 'a\033[2J\177\302\205\342\200\256\342\201\246b')
  commanding=$(printf '\033\\[2J|\177|\302\205|\342\200\256|\342\201\246')
  "$tool" 0 --json | grep -aE "$commanding" && fail "JSON with what a terminal obeys"
  need script
  for words in "" 0 "0 --raw" "0 --text" "0 --xml" "0 --json" "0 --get NAME"; do
    shown=$(NO_COLOR=1 script -qec "'$tool' $words" /dev/null)
    holds "'$words' on a terminal" "$shown" b
    case $(printf '%s' "$shown" | grep -aEc "$commanding") in 0) ;; *) fail "'$words' commands the terminal" ;; esac
  done
}

output=$("$tool" 2>&1); ended=$?
case $ended:$output in
  0:*) ;;
  1:*"no OpenCL device"*)
    echo "this environment offers no OpenCL device"
    [ -n "${TARVA_TEST_NEEDS_DEVICE+set}" ] || exit 77
    exit 1 ;;
  *) fail "the first start ends with $ended: $output" ;;
esac
"$2_part"
[ $failures -eq 0 ]
