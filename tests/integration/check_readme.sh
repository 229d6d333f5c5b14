#!/bin/bash
# Checks that each program that README.md runs from the build folder is part of the target that `./run demo` builds.
#   check_readme.sh PROJECT BUILD_FOLDER NINJA
set -euo pipefail
project=$1 build=$2 ninja=$3

grep -q 'build host OFF product' "$project/run"
mapfile -t named < <(grep -oE 'build/host/bin/[a-z]+' "$project/README.md" | sed 's:.*/::' | sort -u)
mapfile -t built < <("$ninja" -C "$build" -t commands product | grep -oE -- '-o bin/[a-z]+' | sed 's:.*/::' | sort -u)
echo "named: ${named[*]}; built: ${built[*]}"
[ ${#named[@]} -ge 4 ]
missing=$(comm -23 <(printf '%s\n' "${named[@]}") <(printf '%s\n' "${built[@]}"))
[ -z "$missing" ] || {
    echo "not built: $missing"
    exit 1
}
