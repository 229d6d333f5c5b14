#!/bin/bash
# Checks a generated broadcast with an independent analyser: it finds what is expected, and no packet is out of order.
#   check_broadcast.sh FILE.ts SECTION_PIDS EXPECTED...
# SECTION_PIDS: decimal PIDs with sections in the first programme, separated by |. The analyser expects PES packets
# there, so its complaints about them do not count. EXPECTED: patterns in tsinfo's report.
set -euo pipefail
file=$1
sections=$2
shift 2
report=$(tsinfo "$file" 2>&1)
for expected in "$@"; do
    grep -q "$expected" <<<"$report" || {
        echo "tsinfo does not show: $expected"
        echo "$report"
        exit 1
    }
done
if grep -q '###' <<<"$report"; then
    echo "tsinfo complains:"
    echo "$report"
    exit 1
fi
timing=$(tsreport -buffering "$file" 2>&1 | grep -vE "^### (find_PTS_DTS_in_PES|PID\(($sections)\))")
for expected in 'Bad (>.1s) gaps: 0' 'Linear PCR prediction errors: min=0t, max=0t' 'duplicate packets: 0'; do
    grep -qF "$expected" <<<"$timing" || {
        echo "tsreport does not show: $expected"
        echo "$timing"
        exit 1
    }
done
if grep -qE '###|!!!' <<<"$timing"; then
    echo "tsreport complains:"
    echo "$timing"
    exit 1
fi
echo "accepted"
