#!/bin/bash
# Describes the library's binary interface: exported symbols and public types with their virtual tables. Compares it
# with the accepted description; prints every difference and fails. With ACCEPT instead of CHECK the description becomes
# the accepted one.
#   check_abi.sh CHECK|ACCEPT ACCEPTED_FOLDER LIBRARY TYPES_LIBRARY STRIP HEADER_FOLDER...
set -euo pipefail
mode=$1 accepted=$2 library=$3 types=$4 strip=$5
shift 5
headers=()
for header in "$@"; do
    headers+=(--headers-dir "$header")
done

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Without debug information only the symbols are compared, so internal changes do not show.
"$strip" --remove-section=.gnu_debuglink -o "$folder/symbols.so" "$library"
abidw --no-corpus-path --out-file "$folder/exports.abi" "$folder/symbols.so"
abidw --no-corpus-path --no-comp-dir-path --no-show-locs --type-id-style hash --drop-private-types \
    "${headers[@]}" --out-file "$folder/types.abi" "$types"

if [ "$mode" = ACCEPT ]; then
    mkdir -p "$accepted"
    cp "$folder/exports.abi" "$folder/types.abi" "$accepted"
    exit
fi

# Shows only the incompatible differences if there are any, because that reads better; otherwise all.
differences() {
    local pair=("$accepted/$1.abi" "$folder/$1.abi")
    abidiff --no-show-locs "${pair[@]}" >"$folder/differences" &&
        abidiff --harmless --no-show-locs "${pair[@]}" >"$folder/differences"
}

broken=0
for part in exports types; do
    if [ ! -e "$accepted/$part.abi" ]; then
        echo "nothing is accepted yet in $accepted/$part.abi"
        broken=1
    elif ! differences "$part"; then
        echo "the binary interface differs from the accepted one ($part):"
        cat "$folder/differences"
        broken=1
    fi
done
[ $broken -eq 0 ] || echo "If this is intended: ./run accept-abi, and a line marked ABI in CHANGELOG.md."
exit $broken
