#!/bin/bash
# Runs the commands of a document, as a reader would type them in the project's folder. Each code block of commands has a
# mark in the line before it:
#   <!-- run -->                    the block is run
#   <!-- run beside a service -->   the same, while dtvserviced plays the sample
#   <!-- no run: WHY -->
# In a block whose lines start with "$ ", the other lines are the command's output. "…" stands for any text, also of
# several lines. A fenced block with a language other than sh and console has no commands, and needs no mark.
# The blocks of a document run one after another in one new folder, with the built programs in the PATH.
#   check_commands.sh PROJECT BUILD_FOLDER DOCUMENT
set -euo pipefail
project=$(realpath "$1") build=$(realpath "$2") document=$3
longest=120 # seconds of a command
export LC_ALL=C.UTF-8

folder=$(mktemp -d)
service=
stop_service() {
    [ -n "$service" ] || return 0
    kill "$service" 2>/dev/null || true
    wait "$service" 2>/dev/null || true
    service=
}
trap 'stop_service; rm -rf "$folder"' EXIT

# In the reader's folder are the project's files and the build folder, but commands write beside them, not into them.
mkdir -p "$folder/blocks" "$folder/reader/build"
for entry in "$project"/*; do
    [ "$entry" = "$project/build" ] || ln -s "$entry" "$folder/reader/"
done
ln -s "$build" "$folder/reader/build/host"
export PATH="$build/bin:$PATH" DTV_LOG_FILE="$folder/log" DTV_RUN_DIR="$folder/run"

# Writes each code block to a file, and prints LINE|LANGUAGE|MARK for it; the file's name is the line.
blocks() {
    awk -v folder="$folder/blocks" '
        function start(language) {
            file = folder "/" NR
            printf "" > file
            print NR "|" language "|" mark
            mark = ""
        }
        fenced && /^```/ { fenced = 0; close(file); previous = ""; next }
        fenced { print > file; next }
        indented && (/^    / || /^$/) { print substr($0, 5) > file; next }
        indented { indented = 0; close(file) }
        /^<!-- .* -->$/ { mark = substr($0, 6, length($0) - 9); previous = ""; next }
        /^```/ { fenced = 1; start(substr($0, 4)); next }
        /^    / && previous == "" { indented = 1; start(""); print substr($0, 5) > file; next }
        { previous = $0 }
        !/^$/ { mark = "" }
    ' "$project/$document"
}

broken=0
complain() { # LINE TEXT
    echo "$document:$1: $2"
    broken=1
}

# Whether a service is presented, and each has a PMT and a name.
has_all_tables() {
    dtvctl channels >"$folder/channels" 2>/dev/null && grep -q '^\*' "$folder/channels" &&
        ! grep -qv ' pmt .*[^ ]$' "$folder/channels"
}

start_service() {
    "$build/bin/dtvserviced" --input "$build/share/dtv/sample.ts" >"$folder/service.out" 2>&1 &
    service=$!
    for _ in $(seq 500); do
        ! has_all_tables || return 0
        kill -0 "$service" 2>/dev/null || break
        sleep 0.02
    done
    complain "$1" "the service did not start: $(cat "$folder/service.out")"
}

# run_here LINE FILE: runs a script in the reader's folder, and leaves what it prints in $folder/output.
run_here() {
    local code=0
    (cd "$folder/reader" && timeout "$longest" bash -euo pipefail "$2") >"$folder/output" 2>&1 </dev/null || code=$?
    ran=$((ran + 1))
    [ "$code" -eq 0 ] || complain "$1" "exit code $code of: $(cat "$2")
$(cat "$folder/output")"
}

# check_output LINE EXPECTED
check_output() {
    local pattern
    # Every character but letters and digits is escaped, so that none has a meaning in a pattern.
    pattern=$(sed 's/[^[:alnum:] …]/\\&/g; s/…/*/g' <<<"$2")
    # shellcheck disable=SC2053 # a pattern is meant
    [[ $(cat "$folder/output") == $pattern ]] || complain "$1" "other output than the document's:
$(diff <(echo "$2") "$folder/output")"
}

# Runs the commands after "$ " one by one, and compares their outputs.
run_console() { # LINE FILE
    local number=$1 command_line=0 expected="" line
    : >"$folder/command"
    finish() {
        [ "$command_line" -ne 0 ] || return 0
        run_here "$command_line" "$folder/command"
        check_output "$command_line" "${expected%$'\n'}"
    }
    while IFS= read -r line; do
        number=$((number + 1))
        if [[ $line == '$ '* ]]; then
            finish
            command_line=$number expected=""
            echo "${line#'$ '}" >"$folder/command"
        elif [[ -z $expected && $(tail -n 1 "$folder/command") == *\\ ]]; then
            echo "$line" >>"$folder/command"
        else
            expected+=$line$'\n'
        fi
    done <"$2"
    finish
}

ran=0
while IFS='|' read -r line language mark; do
    case $mark in
    "no run: "?*) continue ;;
    "run beside a service") start_service "$line" ;;
    run) ;;
    "")
        case $language in
        "" | sh | console) complain "$line" "this block has no mark: run, run beside a service, or no run: WHY" ;;
        esac
        continue
        ;;
    *)
        complain "$line" "unknown mark \"$mark\""
        continue
        ;;
    esac
    if grep -q '^\$ ' "$folder/blocks/$line"; then
        # The first line of a fenced block follows the fence.
        first=$line
        [[ $(sed -n "${line}p" "$project/$document") == '```'* ]] || first=$((line - 1))
        run_console "$first" "$folder/blocks/$line"
    else
        run_here "$line" "$folder/blocks/$line"
    fi
    stop_service
done < <(blocks)
echo "$document: $ran commands and scripts were run"
exit $broken
