#!/bin/bash
# Uses the programs of the installed package, as an ordinary user in a bare system.
set -euo pipefail
for program in dvbshell dtvserviced dtvctl dtvmon tsmake; do
    help=$("$program" --help)
    echo "$program: $(head -n 1 <<<"$help")"
    if grep -qw -- --version <<<"$help"; then "$program" --version; fi
done
tsmake sample.ts
cmp sample.ts /usr/share/dtv/sample.ts
dtvserviced --input sample.ts >service.out 2>service.err &
trap 'kill %1' EXIT
until grep -q '^ready' service.out; do
    kill -0 %1
    sleep 0.1
done
dtvctl channels
dvbshell ait | tee ait.out
grep -q AUTOSTART ait.out
