#!/usr/bin/env bash
# Runs the reference service on a broadcast, and a browser host beside it, in a new run directory.
#   demo.sh BUILD_FOLDER FILE.ts
set -euo pipefail
build=$1 file=$2
read -r -a emulator <<<"${DTV_EMULATOR:-}" # command that runs programs of another processor

DTV_RUN_DIR=$(mktemp -d)
export DTV_RUN_DIR
service=
cleanup() {
    if [ -n "$service" ]; then
        kill "$service" 2>/dev/null || true
        wait "$service" 2>/dev/null || true
    fi
    rm -rf "$DTV_RUN_DIR"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

echo "broadcast: $file"
"${emulator[@]}" "$build/bin/dtvserviced" --list "$file" >"$DTV_RUN_DIR/services"
echo "services:  $(wc -l <"$DTV_RUN_DIR/services")"

# The logs go to files, so that only the demonstration's own output appears.
DTV_LOG_FILE="$DTV_RUN_DIR/service.log" "${emulator[@]}" "$build/bin/dtvserviced" --input "$file" >"$DTV_RUN_DIR/service.out" &
service=$!
for _ in $(seq 250); do
    grep -q '^ready' "$DTV_RUN_DIR/service.out" && break
    kill -0 "$service" 2>/dev/null || break
    sleep 0.02
done
if ! grep -q '^ready' "$DTV_RUN_DIR/service.out"; then
    echo "the DTV service did not start:" >&2
    cat "$DTV_RUN_DIR/service.log" >&2 2>/dev/null || true
    exit 1
fi

DTV_LOG_FILE="$DTV_RUN_DIR/browser.log" "${emulator[@]}" "$build/bin/dvbshell" demo "$DTV_RUN_DIR/services"
