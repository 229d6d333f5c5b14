#!/bin/bash
# Checks the shipped library for what a set maker relies on: its run-time dependencies, its hardening, its separate
# debug information, and its size.
#   check_release.sh READELF STRIP LIBRARY LARGEST_BYTES
set -euo pipefail
readelf=$1 strip=$2 library=$3 largest=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
broken=0

complain() {
    echo "${library##*/}: $*"
    broken=1
}

# Write a tool's output to a file first: grep may exit early, and the broken pipe would then fail the script.

# The compiler's run-time library and the loader come with the C and C++ libraries.
allowed='libc\.so\.6|libstdc\+\+\.so\.6|libgcc_s\.so\.1|ld-linux[-a-z0-9_]*\.so\.[0-9]|libuuid\.so\.1|libdtvplatform\.so'
"$readelf" -dW "$library" >"$folder/dynamic"
while read -r needed; do
    [[ $needed =~ ^($allowed)$ ]] || complain "needs $needed"
done < <(sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p' "$folder/dynamic")
# shellcheck disable=SC2016 # $ORIGIN is expanded by the loader
! grep -E 'RPATH|RUNPATH' "$folder/dynamic" | grep -qvF '[$ORIGIN]' || complain "searches a folder of the build"
! grep -q TEXTREL "$folder/dynamic" || complain "has text relocations"
grep -q 'BIND_NOW' "$folder/dynamic" || complain "is not bound when it is loaded"

"$readelf" -lW "$library" >"$folder/segments"
grep -q GNU_RELRO "$folder/segments" || complain "relocated data stay writable"
grep GNU_STACK "$folder/segments" | grep -q ' RW  *0x' || complain "has an executable stack"
! grep -qE 'LOAD.*RWE' "$folder/segments" || complain "has a segment that is writable and executable"
"$readelf" -nW "$library" >"$folder/notes"
grep -q 'Build ID' "$folder/notes" || complain "has no build id"

"$readelf" -SW "$library" >"$folder/sections"
! grep -q '\.debug_info' "$folder/sections" || complain "carries its debug information"
grep -q '\.gnu_debuglink' "$folder/sections" || complain "does not name its debug file"
"$readelf" -SW "$library.debug" >"$folder/debug"
grep -q '\.debug_info' "$folder/debug" || complain "has no debug file beside it"

"$strip" -o "$folder/stripped" "$library"
size=$(stat -c %s "$folder/stripped")
echo "stripped: $size bytes of at most $largest"
[ "$size" -le "$largest" ] || complain "is larger than $largest bytes"
exit $broken
