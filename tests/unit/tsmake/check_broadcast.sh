#!/bin/bash
# An independent analyser's view of a generated broadcast: what is expected is found, and no packet is out of order.
#   check_broadcast.sh FILE.ts SECTION_PIDS EXPECTED...
# SECTION_PIDS: decimal PIDs of the first programme that carry sections, with | between them; the analyser looks for PES
# packets there and stumbles. EXPECTED: patterns of tsinfo's report.
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
