#!/bin/bash
# Checks that the programs take no library from the folder in which they are started.
#   check_libraries.sh BUILD_FOLDER
set -euo pipefail
build=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
broken=0

cd "$folder"
# The loader refuses an empty library, if it finds it.
touch libstdc++.so.6 libm.so.6 libgcc_s.so.1 libc.so.6
for program in dtvserviced dvbshell dtvctl dtvmon tsmake; do
    "$build/bin/$program" --help >"$folder/help" 2>&1 || {
        echo "$program: $(head -n 1 "$folder/help")"
        broken=1
    }
done
exit $broken
