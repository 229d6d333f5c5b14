#!/bin/bash
# An independent analyser's view of the generated sample: every programme is found, with its streams, and no packet is
# out of order.
#   check_sample.sh SAMPLE.ts
set -euo pipefail
sample=$1
report=$(tsinfo "$sample" 2>&1)
for expected in 'Program 28106 -> PID 0100' 'Program 28107 -> PID 0200' 'Program 28108 -> PID 0300' \
    'Program 28120 -> PID 0400' 'Program 28106, version 0, PCR PID 0101' 'PID 0101 .* H.264' \
    'PID 0102 .* audio' 'PID 0105 .* private sections'; do
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
# The analyser looks for PES packets on every PID of a programme, so it stumbles over the AIT's sections (PID 261).
timing=$(tsreport -buffering "$sample" 2>&1 | grep -vE '^### (find_PTS_DTS_in_PES|PID\(261\))')
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
