#!/bin/bash
# Checks the check of the documents' commands: it must name the line of each block that is wrong, and accept right ones.
#   check_commands_itself.sh PROJECT BUILD_FOLDER
set -euo pipefail
project=$1 build=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
broken=0

# expect CODE LINE: a document on standard input, and a line that the check must print.
expect() {
    local code=0
    cat >"$folder/document.md"
    "$project/tests/integration/check_commands.sh" "$folder" "$build" document.md >"$folder/out" 2>&1 || code=$?
    if [ "$code" -ne "$1" ] || ! grep -qF -- "$2" "$folder/out"; then
        echo "exit code $code instead of $1, or no line \"$2\":"
        cat "$folder/document.md" "$folder/out"
        broken=1
    fi
}

expect 0 "document.md: 2 commands and scripts were run" <<'DOCUMENT'
Text that is

<!-- run -->

    echo one   # an indented block

    test -e build/host

<!-- no run: it would not end -->
```sh
sleep infinity
```

```json
no commands
```
- a list

  with text

<!-- run -->
```console
$ echo "it is (now): $RANDOM*" \
  and later
it is (now): …* and later
```
DOCUMENT

expect 1 "document.md:3: exit code 1 of: false" <<'DOCUMENT'
text
<!-- run -->
    false
DOCUMENT

expect 1 "document.md:4: other output than the document's:" <<'DOCUMENT'
<!-- run -->
```
$ true
$ echo one
two
```
DOCUMENT

expect 1 "document.md:3: this block has no mark" <<'DOCUMENT'
text

    true
DOCUMENT

expect 1 "document.md:4: this block has no mark" <<'DOCUMENT'
<!-- run -->
text

```sh
true
```
DOCUMENT

expect 1 'document.md:2: unknown mark "walk"' <<'DOCUMENT'
<!-- walk -->
    true
DOCUMENT

expect 1 "document.md:2: exit code 1 of: test -S" <<'DOCUMENT'
<!-- run -->
    test -S "$DTV_RUN_DIR/dtvctl.sock"
DOCUMENT

expect 0 "document.md: 1 commands and scripts were run" <<'DOCUMENT'
<!-- run beside a service -->
    test -S "$DTV_RUN_DIR/dtvctl.sock"
DOCUMENT
exit $broken
