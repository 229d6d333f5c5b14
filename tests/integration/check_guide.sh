#!/bin/bash
# Follows docs/browser-guide.md with the installed library: runs its commands as printed while the reference service
# plays the sample broadcast, checks what the examples print, and compiles every piece of its code.
#   check_guide.sh PROJECT BUILD_FOLDER CMAKE CXX EMULATOR_WORDS
set -euo pipefail
project=$1 build=$2 cmake_program=$3 compiler=$4 emulator=$5
if [ -n "$emulator" ]; then
    echo "the guide's commands are for this machine's own programs"
    exit 77
fi

folder=$(mktemp -d)
service=
cleanup() {
    if [ -n "$service" ]; then
        kill "$service" 2>/dev/null || true
        wait "$service" 2>/dev/null || true
    fi
    rm -rf "$folder"
}
trap cleanup EXIT

broken() {
    echo "$1"
    shift
    [ $# -eq 0 ] || cat "$@"
    exit 1
}

# The build's own programs, under the names that the guide prints.
c++() { "$compiler" "$@"; }
cmake() { "$cmake_program" "$@"; }

# blocks LANGUAGE: writes each fenced block of that language to a file LANGUAGE-1, LANGUAGE-2 and so on.
blocks() {
    awk -v language="$1" -v start="$folder/$1-" '
        $0 == "```" language { count++; inside = 1; next }
        $0 == "```" { inside = 0 }
        inside { print > (start count) }' "$project/docs/browser-guide.md"
}

KIT=$folder/kit
cmake --install "$build" --prefix "$KIT" >"$folder/log" 2>&1 || broken "the installation failed:" "$folder/log"

# --- the code ---
blocks cpp
pieces=("$folder"/cpp-*)
echo "${#pieces[@]} pieces of code"
[ "${#pieces[@]}" -ge 7 ] || broken "the guide's code was not found"
for piece in "${pieces[@]}"; do
    c++ -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I"$KIT/include/browserdvbapi" \
        -I"$project/tests/integration/loops" -x c++ -c "$piece" -o "$folder/piece.o" ||
        broken "this code of the guide does not compile:" "$piece"
done

# --- the commands ---
export DTV_RUN_DIR=$folder/run
DTV_LOG_FILE=$folder/service.log "$KIT/bin/dtvserviced" --input "$KIT/share/dtv/sample.ts" >"$folder/service.out" &
service=$!
for _ in $(seq 500); do
    grep -q '^ready' "$folder/service.out" && break
    kill -0 "$service" 2>/dev/null || break
    sleep 0.02
done
grep -q '^ready' "$folder/service.out" || broken "the service did not start:" "$folder/service.log"

blocks sh
[ -e "$folder/sh-3" ] || broken "the guide's commands were not found"
mkdir "$folder/work"
cd "$folder/work"
cat "$folder"/sh-* >"$folder/commands"
export DTV_LOG_FILE=$folder/browser.log
# Not in a condition, where a failing command would not end the subshell.
set +e
# shellcheck disable=SC1091
(set -ex && . "$folder/commands") >"$folder/out" 2>"$folder/trace"
code=$?
set -e
[ "$code" -eq 0 ] || broken "the guide's commands failed:" "$folder/trace" "$folder/out" "$folder/browser.log"
cat "$folder/out"

# expect PATTERN: a line of the examples has to be like this.
expect() { grep -qxE "$1" "$folder/out" || broken "no line is like this: $1"; }
expect 'presented: 1:1025:28106'
expect 'PMT of 28106: [0-9]+ bytes'
expect 'ccid:1:1025:28106'
expect 'broadcast: 1:1025:28106, version [0-9]+, section 0 of 0 to [0-9]+, [0-9]+ bytes'
expect 'stored: 1:1025:28106, version [0-9]+, section 0 of 0 to [0-9]+, [0-9]+ bytes'
[ "$(grep -E '^4E[BF]([0-9A-F]{2})+[0-9A-F]$' "$folder/out" | sort -u | wc -l)" -eq 2 ] ||
    broken "section_dump did not print two different sections of table 0x4E"

# What CMake has built are the same programs; a wrong use gets an answer.
./build/browser_host 1:1025:28107 >"$folder/out" || broken "the host built by CMake failed:" "$folder/out"
expect 'ccid:1:1025:28107'
code=0
./build/browser_host 1:1025:99 >"$folder/out" || code=$?
expect 'tuning failed, presented: 1:1025:28107'
[ "$code" -eq 1 ] || broken "a failed tune ended with $code"
code=0
./build/section_dump /nonexistent.so 0 0 1 2>"$folder/out" || code=$?
expect 'section_dump: /nonexistent.so: cannot open shared object file: .*'
[ "$code" -eq 1 ] || broken "a missing library ended with $code"
./build/section_dump "$KIT/lib/libbrowserdvbapi.so" 0 0 1 >"$folder/out"
expect '00B0[0-9A-F]+'
./build/ait_watcher >"$folder/out"
expect 'stored: 1:1025:28107, .*'
[ "$(wc -l <browser_host.cpp)" -lt 60 ] || broken "browser_host.cpp has 60 lines or more"
