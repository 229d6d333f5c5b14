#!/bin/bash
# Checks the include directives against the table in docs/architecture.md: each folder has a list of the folders whose
# headers it may include, or of single headers.
#   check_includes.sh PROJECT
set -euo pipefail
cd "$1"

contract=platform/include
idiom=platform/idiom
optional=platform/optional
records=frame-genrpc/app-browserdvbservice-proxy/src
fields=frame-genrpc/app-browserdvbservice-proxy/fields
adapter=browser/v3/dvb/api/src
library=src/platform_support/browserdvbapi/src
headers=src/platform_support/browserdvbapi/include

declare -A may=(
    [$contract]=""
    [$idiom]="$contract"
    [$optional]="$contract"
    [locks]="$contract"
    [platform/common]="$contract $idiom locks"
    [platform/host]="$contract $idiom $optional platform/common bus text locks"
    [platform/recording]="$contract $idiom platform/common locks"
    [$records]="$contract $idiom locks"
    [$fields]="browserdvbservice_messages.inc"
    [$adapter]="$contract $idiom $records"
    [$headers]="$contract"
    [$library]="$contract $idiom $records $adapter $headers locks"
    [bus]=""
    [si]=""
    [text]=""
    [command_line]=""
    [dtvservice/broadcast]="si"
    [dtvservice/control]=""
    [dtvservice/core]="$contract $idiom $optional $records $fields bus dtvservice/broadcast dtvservice/control text locks"
    [dtvservice/inputs]="$contract $idiom dtvservice/broadcast dtvservice/core"
    [dtvservice/http]="$contract $idiom $records $fields si dtvservice/broadcast dtvservice/core locks"
    [dtvservice/scenarios]="$contract $idiom $optional $records $fields si dtvservice/broadcast dtvservice/control dtvservice/core"
    [dtvservice/replay]="$contract $idiom $records $fields bus dtvservice/core"
    [dtvservice/programmes]="$contract $idiom $records $fields si text dtvservice/broadcast dtvservice/core"
    [examples]="$headers"
    [tools/message_documents]="$fields dtvservice/scenarios"
    [tools/tsmake]="command_line si"
    [tools/dtvctl]="command_line dtvservice/control si text $fields"
    [tools/dtvmon]="bus command_line dtvservice/control si text tools/dtvctl $fields"
    [tools/dvbshell]="$headers command_line si text locks $fields"
    [tools/tvbrowser/broadcast]="$headers si locks"
    [tools/tvbrowser/runtime]="$headers si"
    [tools/tvbrowser/dom]=""
    [tools/tvbrowser/extension]="tools/tvbrowser/broadcast tools/tvbrowser/runtime"
    [tools/tvbrowser/ui]="tools/tvbrowser/runtime tools/tvbrowser/broadcast tools/tvbrowser/extension tools/tvbrowser/dom command_line si text"
)

# The program may include all of the reference service. A room may include the core, but no other room.
may[dtvservice/src]="$contract $idiom command_line si text $fields $(echo dtvservice/*)"
for folder in dtvservice/*/; do
    folder=${folder%/}
    if [ -z "${may[$folder]+row}" ]; then
        may[$folder]="$contract $idiom $records $fields si dtvservice/broadcast dtvservice/core"
    fi
done

# The fuzzers reach into everything that reads what others send.
may[fuzz]="$contract $idiom platform/common platform/host $records $fields $adapter $headers $library bus si text"
may[fuzz]+=" $(echo dtvservice/*) tools/dtvctl tools/dtvmon tools/dvbshell tools/tsmake"

# The measurements: what a browser includes, a service stub, and what they measure alone.
may[bench]="$headers $contract $idiom $records bus dtvservice/broadcast dtvservice/core si tools/tsmake"

headers_by_name=$(mktemp)
trap 'rm -f "$headers_by_name"' EXIT
for folder in "${!may[@]}"; do
    find "$folder" \( -name '*.h' -o -name '*.inc' \) -printf "$folder %P\n"
done >"$headers_by_name"

# folder_of HEADER FOLDER: prints the project folder that has the header, FOLDER if it is one of several; nothing for a
# header from outside the project.
folder_of() {
    awk -v name="$1" -v own="$2" '$2 == name || substr($2, length($2) - length(name)) == "/" name {
        if ($1 == own || found == "") found = $1
    }
    END { print found }' "$headers_by_name"
}

includes=0
broken=0
for folder in "${!may[@]}"; do
    while IFS=: read -r file header; do
        includes=$((includes + 1))
        target=$(folder_of "$header" "$folder")
        if [ -n "$target" ] && [ "$target" != "$folder" ] && [[ " ${may[$folder]} " != *" $target "* ]] &&
            [[ " ${may[$folder]} " != *" $header "* ]]; then
            echo "$file includes $header of $target"
            broken=1
        fi
    done < <(grep -rHoE --include='*.h' --include='*.cpp' --include='*.inc' '^#include ["<][^">]+[">]' "$folder" |
        sed -E 's/#include ["<]([^">]+)[">]/\1/' | sort -u)
done
echo "$includes include directives looked at"
[ "$includes" -gt 100 ] || broken=1
exit $broken
