#!/bin/bash
# Writes the generated documents into a folder.
#   write_documents.sh FOLDER MESSAGE_DOCUMENTS_COMMAND...
set -euo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
folder=$1
shift
"$@" messages >"$folder/messages.md"
"$@" scenarios >"$folder/scenario.schema.json"
"$@" schema "$here/schema_frame.json" >"$folder/json.schema.json"
