#!/usr/bin/env bash
# Runs the reference service on a broadcast, and a browser host beside it, in a new run directory.
#   demo.sh BUILD_FOLDER [FILE.ts] [--service ONID:TSID:SID]...
#   demo.sh --check [FILE.ts] [--service ONID:TSID:SID]...        checks the arguments only
# Without a file, the sample broadcast. Without a service, dvbshell chooses.
set -euo pipefail

misuse() {
    echo "run: demo: $*" >&2
    echo "usage: ./run demo [FILE.ts] [--service ONID:TSID:SID]..." >&2
    exit 2
}

build=$1 file=
shift
services=()
while [ $# -gt 0 ]; do
    case $1 in
    --service)
        [ $# -ge 2 ] || misuse "--service needs a value"
        services+=(--service "$2")
        shift
        ;;
    --service=*) services+=(--service "${1#--service=}") ;;
    -*) misuse "unknown option $1" ;;
    *)
        [ -z "$file" ] || misuse "one file at most: $1"
        file=$1
        ;;
    esac
    shift
done
[ -z "$file" ] || [ -e "$file" ] || {
    echo "run: demo: no such file: $file" >&2
    exit 1
}
[ "$build" != --check ] || exit 0
file=${file:-$build/share/dtv/sample.ts}
read -r -a emulator <<<"${DTV_EMULATOR:-}" # command that runs programs of another processor

folder=$(mktemp -d)
export DTV_RUN_DIR=$folder
service=
# shellcheck disable=SC2317 # the trap calls it
cleanup() {
    if [ -n "$service" ]; then
        kill "$service" 2>/dev/null || true
        wait "$service" 2>/dev/null || true
    fi
    rm -rf "$folder"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

echo "broadcast: $file"
"${emulator[@]}" "$build/bin/dtvserviced" --list "$file" >"$folder/services"
echo "services:  $(wc -l <"$folder/services")"

# The logs go to files, so that only the demonstration's own output appears.
: >"$folder/service.out"
DTV_LOG_FILE="$folder/service.log" "${emulator[@]}" "$build/bin/dtvserviced" --input "$file" >"$folder/service.out" &
service=$!
for _ in $(seq 250); do
    grep -q '^ready' "$folder/service.out" && break
    kill -0 "$service" 2>/dev/null || break
    sleep 0.02
done
if ! grep -q '^ready' "$folder/service.out"; then
    echo "the DTV service did not start:" >&2
    cat "$folder/service.log" >&2 2>/dev/null || true
    exit 1
fi

code=0
DTV_LOG_FILE="$folder/browser.log" "${emulator[@]}" "$build/bin/dvbshell" demo "$folder/services" "${services[@]}" || code=$?
[ "$code" -lt 2 ] || exit "$code"

# near PATH: the path as it is typed in this folder, quoted.
near() {
    local path=${1#"$PWD"/}
    printf %q "$path"
}

# listed ONID:TSID:SID: the service as the list has it, because the user may write any network as 65535, and numbers in
# hexadecimal.
listed() {
    local network stream number
    IFS=: read -r network stream number <<<"$1"
    cut -f 1 "$folder/services" | grep -E "^($((network))|65535):$((stream)):$((number))$" ||
        cut -f 1 "$folder/services" | grep ":$((stream)):$((number))$"
}

# What to try next: what the user chose, else a service with applications, else one with a PMT, else any.
triplet=
[ ${#services[@]} -eq 0 ] || triplet=$(listed "${services[1]}" | head -n 1) || true
triplet=${triplet:-$(sort -s -t $'\t' -k 3,3 -k 2,2r "$folder/services" | head -n 1 | cut -f 1)}
cat <<TEXT

Next, by hand. In one terminal:
  $(near "$build/bin/dtvserviced") --input $(near "$file")
In another:
  $(near "$build/bin/dvbshell") channels
  $(near "$build/bin/dvbshell") tune $triplet
  $(near "$build/bin/dvbshell")                # a prompt; "help" lists its commands
TEXT
exit "$code"
