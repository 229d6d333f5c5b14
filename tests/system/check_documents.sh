#!/bin/bash
# Checks that the generated documents are those of the lists that they are generated from.
#   check_documents.sh PROJECT MESSAGE_DOCUMENTS_COMMAND...
set -eu
project=$1
shift
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$project/tools/message_documents/write_documents.sh" "$folder" "$@"
failed=0
for file in messages.md json.schema.json scenario.schema.json; do
    diff -u "$project/docs/$file" "$folder/$file" | head -40
    [ "${PIPESTATUS[0]}" -eq 0 ] || {
        echo "docs/$file is not what the lists say; rewrite it: cmake --build build/host --target documents"
        failed=1
    }
done
exit $failed
