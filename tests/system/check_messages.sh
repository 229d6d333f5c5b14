#!/bin/bash
# Checks that each command and event of the interface has a row in docs/reference-service.md, and that a test in
# tests/system names it.
#   check_messages.sh SOURCE_FOLDER
set -euo pipefail
cd "$1"
catalogue=frame-genrpc/app-browserdvbservice-proxy/src/browserdvbservice_messages.inc
names=$(sed -nE 's/^(COMMAND|EVENT)\(0x[0-9A-F]+, ([A-Za-z]+),.*/\2/p' "$catalogue")
entries=$(grep -cE '^(COMMAND|EVENT)\(' "$catalogue")
[ "$(wc -l <<<"$names")" -eq "$entries" ] || {
    echo "$catalogue: $entries entries, but $(wc -l <<<"$names") of them can be read"
    exit 1
}
failed=0
for name in $names; do
    grep -qE "^\|[^|]*\`$name\`" docs/reference-service.md || {
        echo "docs/reference-service.md has no row for $name"
        failed=1
    }
    grep -q "$name\b" tests/system/*_test.cpp tests/system/raw_browser.h || {
        echo "no test in tests/system names $name"
        failed=1
    }
done
exit $failed
