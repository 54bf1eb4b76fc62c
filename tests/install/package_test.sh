#!/bin/sh
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT
#
# Makes the packages of a build folder, installs them below a folder of their own, uses what they hold, and takes them
# away again.   package_test.sh <build folder> [--lint]
set -eu
for tool in dpkg-deb dpkg-shlibdeps file; do
  command -v $tool >/dev/null 2>&1 || { echo "skipped: there is no $tool; see scripts/install-packages --release"; exit 77; }
done
build=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

(cd "$build" && cpack -B "$work/packages" >"$work/log" 2>&1) || { cat "$work/log"; exit 1; }
packages=$(ls "$work"/packages/*.deb)
names="liboryn-tarva-dev tarva-tools liboryn-tarva0"
grep -q '^TARVA_PYTHON_INSTALL_DIR:' "$build/CMakeCache.txt" && names="python3-tarva $names"
[ "$(printf '%s\n' "$packages" | wc -l)" = "$(echo $names | wc -w)" ] || { echo "not $names: $packages"; exit 1; }

if [ "${2:-}" = --lint ]; then
  lintian --fail-on error,warning $packages
  mkdir -p "$build/packages"
  cp $packages "$work"/packages/*.ddeb "$build/packages/"
fi

# A dpkg of its own, without the packages that are needed, in a folder that is otherwise empty.
root=$work/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/log"
touch "$root/var/lib/dpkg/status"
mkdir "$work/bin"
ln -s /bin/true "$work/bin/ldconfig" # so that the machine's own cache is left alone
in_root() {
  PATH=$work/bin:$PATH:/usr/sbin:/sbin dpkg --log=/dev/null --force-not-root --force-depends --force-script-chrootless --force-bad-path \
       --root="$root" "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
}
in_root --install $packages
library=$(find "$root/usr/lib" -name liboryn-tarva.so.0)
LD_LIBRARY_PATH=$(dirname "$library") "$root/usr/bin/tarva-info" --version
pages=share/doc/liboryn-tarva-dev
for file in include/tarva.hpp share/man/man1/tarva-info.1.gz $pages/docs/guide.md $pages/examples/saxpy.cpp; do
  [ -s "$root/usr/$file" ] || { echo "$file is not there"; exit 1; }
done
for name in $names; do
  grep -q 'Gabi Melman' "$root/usr/share/doc/$name/copyright" || { echo "$name lacks the notices of others"; exit 1; }
done

# The record of symbols is what the libraries export, and every file with code has its symbols in a package of its own.
for name in liboryn-tarva libqv; do
  nm -D --defined-only "$(dirname "$library")/$name.so.0" | awk '$2 == "T" { sub("@@", "@", $3); print $3 }' | sort >"$work/exported"
  awk -v name="$name" '/^lib/ { own = index($1, name) } /^ [a-z]/ && own { print $1 }' \
    "$root/var/lib/dpkg/info/liboryn-tarva0.symbols" | sort | diff "$work/exported" -
done
code=$(find "$root/usr" -type f \( -name '*.so*' -o -perm -u+x \))
for package in "$work"/packages/*.ddeb; do dpkg-deb --ctrl-tarfile "$package" | tar -x -O ./md5sums; done >"$work/debug"
for file in $code; do
  id=$(readelf -n "$file" | sed -n 's/.*Build ID: ..//p')
  grep -q "  usr/lib/debug/.*$id.debug$" "$work/debug" || { echo "no debug symbols of $file"; exit 1; }
done

# What the compiler and the linker guard, in packages that are for others.
if grep -q '^TARVA_HARDEN:.*=ON' "$build/CMakeCache.txt"; then
  for file in $code; do
    { readelf -hldW "$file" && nm -D "$file" && objdump -d "$file"; } >"$work/hardening"
    for mark in 'Type:.* DYN' 'FLAGS_1.* NOW' GNU_RELRO 'GNU_STACK.* RW ' __stack_chk_fail; do
      grep -q "$mark" "$work/hardening" || { echo "$file lacks $mark"; exit 1; }
    done
    # A few are in every file, of the C library's.
    [ "$(grep -c endbr64 "$work/hardening")" -gt 20 ] || { echo "$file has no guarded jumps"; exit 1; }
    ! grep -E 'RPATH|RUNPATH' "$work/hardening" || { echo "$file has a run path"; exit 1; }
  done
  nm -D "$library" | grep -q '__memcpy_chk@' || { echo "$library is not fortified"; exit 1; }
  echo "hardened:" $code
fi
module=$(find "$root/usr/lib" -name '_binding.abi3.so')
if [ -n "$module" ] && python3 -c 'import numpy' 2>/dev/null; then
  PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=$(dirname "$module")/.. LD_LIBRARY_PATH=$(dirname "$library") \
    python3 -c 'import tarva; print("tarva", tarva.__version__, len(tarva.devices()))'
fi
in_root --purge $names
left=$(find "$root" -path "$root/var/lib/dpkg" -prune -o -not -type d -print)
[ -z "$left" ] || { echo "left behind: $left"; exit 1; }
