#!/usr/bin/env bash
# Runs the reference service on a broadcast, and a television's browser beside it, in a new run directory.
#   tv.sh BUILD_FOLDER [FILE.ts] [--application URL] [--screenshot OUT.png]
#   tv.sh --check [FILE.ts] [--application URL] [--screenshot OUT.png]        checks the arguments only
set -euo pipefail

misuse() {
    echo "run: tv: $*" >&2
    echo "usage: ./run tv [FILE.ts] [--application URL] [--screenshot OUT.png]" >&2
    exit 2
}

build=$1 file="" application="" screenshot=""
shift
while [ $# -gt 0 ]; do
    case $1 in
    --application | --screenshot)
        [ $# -ge 2 ] || misuse "$1 needs a value"
        if [ "$1" = --application ]; then application=$2; else screenshot=$2; fi
        shift
        ;;
    --application=*) application=${1#*=} ;;
    --screenshot=*) screenshot=${1#*=} ;;
    -*) misuse "unknown option $1" ;;
    *)
        [ -z "$file" ] || misuse "one file at most: $1"
        file=$1
        ;;
    esac
    shift
done
[ -z "$application" ] || [[ $application =~ ^https?://[^/\"\\]+/ ]] || misuse "--application needs an HTTP URL: $application"
[ -z "$file" ] || [ -e "$file" ] || {
    echo "run: tv: no such file: $file" >&2
    exit 1
}
[ "$build" != --check ] || exit 0

folder=$(mktemp -d)
export DTV_RUN_DIR=$folder
service="" browser=""
# shellcheck disable=SC2317 # the trap calls it
cleanup() {
    local process
    for process in $browser $service; do
        kill "$process" 2>/dev/null || true
        wait "$process" 2>/dev/null || true
    done
    rm -rf "$folder"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

# await PROCESS FILE PATTERN: waits for a line.
await() {
    local _
    for _ in $(seq 500); do
        ! grep -q "$3" "$2" || return 0
        kill -0 "$1" 2>/dev/null || break
        sleep 0.02
    done
    cat "$2" >&2
    exit 1
}

# The browser comes first, because the sample's application is on the port that it gets. It waits for the service.
mkfifo "$folder/commands"
exec {commands}<>"$folder/commands"
options=(--http 0)
[ -z "$screenshot" ] || options+=(--screenshot "$screenshot")
: >"$folder/browser.out"
DTV_LOG_FILE="$folder/browser.log" "$build/bin/tvbrowser" "${options[@]}" \
    >"$folder/browser.out" 2>"$folder/browser.err" <"$folder/commands" &
browser=$!
await "$browser" "$folder/browser.out" "^page for people: "
address=$(sed -n 's/^page for people: //p' "$folder/browser.out" | head -n 1)

if [ -z "$file" ]; then
    file=$folder/sample.ts
    "$build/bin/tsmake" --print-sample |
        sed -e "0,/\"urlBase\": \"[^\"]*\"/s|\"urlBase\": \"[^\"]*\"|\"urlBase\": \"${address}sample/\"|" \
            -e "0,/\"path\": \"[^\"]*\"/s|\"path\": \"[^\"]*\"|\"path\": \"index.html\"|" >"$folder/sample.json"
    "$build/bin/tsmake" "$file" --description "$folder/sample.json"
fi
: >"$folder/service.out"
options=(--input "$file" --http 0)
[ -z "$application" ] || options+=(--application "$application")
DTV_LOG_FILE="$folder/service.log" "$build/bin/dtvserviced" "${options[@]}" >"$folder/service.out" 2>&1 </dev/null &
service=$!
await "$service" "$folder/service.out" "^ready"
echo "picture $(sed -n 's/^stream: //p' "$folder/service.out")" >&"$commands"

if [ -z "$screenshot" ]; then
    echo
    echo "The television's page: $address"
    echo "Its log follows; Ctrl-C ends it."
    tail -n +1 --pid="$browser" -f "$folder/browser.out" &
fi
code=0
wait "$browser" || code=$?
[ -z "$screenshot" ] || tail -n 1 "$folder/browser.out"
exit "$code"
