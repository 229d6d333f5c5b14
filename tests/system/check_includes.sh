#!/bin/bash
# Holds the include directives against the table of who may know whom: for each folder, the folders of the project whose
# headers it may include beside its own.
#   check_includes.sh PROJECT
set -euo pipefail
cd "$1"

contract=platform/include
records=frame-genrpc/app-browserdvbservice-proxy/src
adapter=browser/v3/dvb/api/src
library=src/platform_support/browserdvbapi/src
headers=src/platform_support/browserdvbapi/include

declare -A may=(
    [$contract]=""
    [platform/common]="$contract"
    [platform/host]="$contract platform/common"
    [platform/recording]="$contract platform/common"
    [$records]="$contract"
    [$adapter]="$contract $records"
    [$headers]="$contract"
    [$library]="$contract $records $adapter $headers"
    [si]=""
    [dtvservice/broadcast]="si"
    [dtvservice/src]="$contract $records si dtvservice/broadcast"
    [tools/tsmake]="si"
    [tools/dvbshell]="$headers si"
)

# Where the project keeps a header of that name; nothing for one of somebody else's.
folder_of() {
    local path
    path=$(git ls-files "*/$1" | grep -v '^tests/' | head -n 1)
    local folder
    for folder in "${!may[@]}"; do
        if [[ $path == "$folder"/* ]]; then
            echo "$folder"
            return
        fi
    done
}

broken=0
for folder in "${!may[@]}"; do
    while IFS=: read -r file header; do
        target=$(folder_of "$header")
        if [ -n "$target" ] && [ "$target" != "$folder" ] && [[ " ${may[$folder]} " != *" $target "* ]]; then
            echo "$file includes $header of $target"
            broken=1
        fi
    done < <(git ls-files "$folder/*.h" "$folder/*.cpp" "$folder/*.inc" |
        xargs -r grep -HoE '^#include ["<][^">]+[">]' | sed -E 's/#include ["<]([^">]+)[">]/\1/' | sort -u)
done
exit $broken
