#!/bin/bash
# Checks the entry script with wrong arguments. It must print one line that names the mistake, then the usage, end with
# exit code 2 and change nothing. It runs in a temporary folder whose name has blanks and which has a build folder.
#   check_run.sh PROJECT
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
copy="$folder/a project"
mkdir -p "$copy/build"
cp "$1/run" "$copy/run"
broken=0

# expect CODE FIRST_LINE ARGUMENT...
expect() {
    local code=$1 line=$2 given=0
    shift 2
    (cd / && "$copy/run" "$@") >"$folder/out" 2>&1 </dev/null || given=$?
    if [ "$given" -ne "$code" ] || [ "$(head -n 1 "$folder/out")" != "$line" ]; then
        echo "run $*: exit code $given instead of $code, or another first line than \"$line\":"
        head -n 3 "$folder/out"
        broken=1
    fi
    if [ ! -d "$copy/build" ] || [ -n "$(ls -A "$copy/build")" ]; then
        echo "run $*: touched the build folder"
        broken=1
        mkdir -p "$copy/build"
    fi
}

expect 2 "run: unknown verb frobnicate" frobnicate
expect 2 "run: demo takes one file at most" demo one.ts two.ts
expect 1 "run: demo: no such file: /nonexistent.ts" demo /nonexistent.ts
expect 2 "run: --preset needs a name" test --preset
expect 2 "run: unknown preset frobnicate" test --preset frobnicate
expect 2 "run: build takes --preset NAME" build frobnicate
expect 2 "run: build takes --preset NAME" build --preset
expect 2 "run: unknown preset frobnicate" build --preset frobnicate
for verb in help package format lint accept-abi clean; do
    expect 2 "run: $verb takes no argument: extra" "$verb" extra
done
(cd / && "$copy/run") >"$folder/out" || broken=1
for verb in demo test build package format lint accept-abi clean; do
    if [ "$(grep -c "./run $verb\b" "$folder/out")" -ne 1 ]; then
        echo "run: $verb is not listed in one line"
        broken=1
    fi
done
exit $broken
