#!/bin/bash
# Checks that each entry of the message catalogue is complete: prints what is missing, and where it belongs.
#   check_messages.sh SOURCE_FOLDER
set -euo pipefail
cd "$1"
rpc=frame-genrpc/app-browserdvbservice-proxy
catalogue=$rpc/src/browserdvbservice_messages.inc
names=$rpc/fields/browserdvbservice_fields.inc
operations=$rpc/fields/browser_operations.inc
expected=tests/abi/expected_messages.inc
failed=0

missing() {
    echo "$name: $1"
    failed=1
}

# Prints an entry on each line.
entries() { sed -E ':join; N; $!b join; s/\n +/ /g' "$catalogue" | grep -E '^(NESTED|COMMAND|EVENT)\('; }

# has PATTERN FILE...
has() { grep -qE "$@"; }

# check_interface KIND TABLE: the hand-typed interface and the bytes of the table.
check_interface() {
    has "^EXPECTED_$1\($name," "$expected" || missing "no row EXPECTED_$1($name, …) in $expected"
    local width
    for width in 32 64; do
        has "^__ovx_EndianTable_$2 " "tests/abi/endian_tables_$width.golden" ||
            missing "no bytes of __ovx_EndianTable_$2 in tests/abi/endian_tables_$width.golden"
    done
}

# check_fields ENTRY: the names of the fields and the generated document.
check_fields() {
    local field
    while read -r field; do
        has "^FIELD\($name, $field," "$names" || missing "no FIELD($name, $field, …) in $names"
    done < <(grep -oE '\([A-Za-z0-9_]+, [A-Za-z0-9_]+\)' <<<"$1" | sed -E 's/.*, (.*)\)/\1/')
    has "^### $name\$" docs/messages.md ||
        missing "no section in docs/messages.md; rewrite it: cmake --build build/host --target documents"
}

# The browser's operations for the message, and dvbshell's row or event for each.
check_operations() {
    local operation found=0
    while read -r operation; do
        found=1
        grep -q "\"$operation\"" tools/dvbshell/operation_table.cpp tools/dvbshell/events.cpp ||
            missing "neither tools/dvbshell/operation_table.cpp nor tools/dvbshell/events.cpp has its $operation"
    done < <(sed -nE "s/^(CALL|CALLED)\(([A-Za-z]+), $name,.*/\2/p" "$operations")
    [ "$found" = 1 ] || has "^UNSEEN\($name," "$operations" ||
        missing "no operation of the browser's, and no UNSEEN($name, …), in $operations"
}

check_message() {
    has "TheWireBytes, Of$1\b" tests/abi/wire_bytes_test.cpp ||
        missing "no test TheWireBytes.Of$1 in tests/abi/wire_bytes_test.cpp"
    has "^\|[^|]*\`$name\`" docs/reference-service.md || missing "no row in docs/reference-service.md"
    check_operations
    has "$name\b" tests/system/*_test.cpp tests/system/raw_browser.h || missing "no test in tests/system names it"
}

count=0
last=0
while read -r entry; do
    count=$((count + 1))
    kind=${entry%%(*}
    IFS='(, ' read -r _ first second third _ <<<"$entry"
    if [ "$kind" = NESTED ]; then
        name=$first
        check_interface NESTED "serializable_$name"
    else
        name=$second
        check_interface "$kind" "browserdvbserviceMsg${third}_t"
        check_message "$third"
        last=$((first > last ? first : last))
    fi
    check_fields "$entry"
done < <(entries)

[ "$count" -eq "$(grep -cE '^(NESTED|COMMAND|EVENT)\(' "$catalogue")" ] || {
    echo "$catalogue: only $count entries can be read"
    failed=1
}
printf '%u entries; the next message has the identifier 0x%X\n' "$count" $((last + 1))
exit $failed
