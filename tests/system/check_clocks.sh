#!/bin/bash
# Checks that only those sources read the wall clock that show the time, and the one wait that has to. Everything else is
# timed by the monotonic clock, so a clock that is set changes nothing.
#   check_clocks.sh PROJECT
set -euo pipefail
cd "$1"

declare -A reason=(
    [bus/src/origin.cpp]="the time of a record"
    [platform/host/debug_log.cpp]="the time of a log line"
    [tools/dvbshell/events.h]="the time of an event"
    [tools/dvbshell/json_printer.cpp]="the time of an event"
    [tools/dtvctl/safe_json.cpp]="the time of a change"
    [tools/dtvctl/watch.cpp]="the time of a change"
    [src/platform_support/browserdvbapi/src/browser_dvb_service_handshake.cpp]="the sleeps of a wait for a confirmation"
)
readings='chrono::system_clock|CLOCK_REALTIME|gettimeofday|std::time\(|[^a-z_]time\((nullptr|NULL|0)\)'
failed=0

found=$(grep -rlE --include=*.cpp --include=*.h "$readings" \
    browser bus command_line dtvservice examples frame-genrpc platform si src text tools | sort)
for file in $found; do
    [ -n "${reason[$file]+allowed}" ] || {
        echo "$file reads the wall clock; use the monotonic clock, or say in this check what the time is for:"
        grep -nE "$readings" "$file"
        failed=1
    }
done
for file in "${!reason[@]}"; do
    grep -qx "$file" <<<"$found" || {
        echo "$file no longer reads the wall clock (${reason[$file]}); remove its row from this check"
        failed=1
    }
done
exit $failed
