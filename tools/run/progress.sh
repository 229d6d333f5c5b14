# shellcheck shell=bash disable=SC2034,SC2154 # `run` gives and uses variables
# Shows how far a long command is, so that `./run` is never silent for more than five seconds. `run` includes this file.
#
# On a terminal one line is rewritten every second. In a log a new line comes every three seconds, which leaves two for
# a busy machine.
seconds_between_lines=3

# The functions named `far_...` print how far the command is whose output is in LOG, or nothing.

far_ninja() {
    awk -F '[][/]' '/^\[[0-9]+\/[0-9]+\] / { text = $2 " of " $3 } END { if (text) print text }' "$1"
}

# Counts apt-get's lines. Packages are downloaded first, then unpacked, then set up.
far_apt() {
    awk '/^[0-9]+ upgraded, / { all = $1 + $3; delete done; now = "" }
        /^Get:/ { done["downloaded"]++; now = "downloaded" }
        /^Unpacking / { done["unpacked"]++; now = "unpacked" }
        /^Setting up / { done["installed"]++; now = "installed" }
        END { if (all > 0) printf "%d of %d %s\n", done[now], all, now ? now : "downloaded" }' "$1"
}

# Counts the files without complaints.
far_checked() {
    echo "$(grep -c '^checked ' "$1") checked"
}

far_unknown() {
    :
}

# Prints the lines of `watched` until it is killed or the script has ended.
watch() {
    local what=$1 far=$2 log=$3 text shown=0
    SECONDS=0
    # The pause must not keep the script's output open.
    while sleep 1 >/dev/null 2>&1 && kill -0 $$ 2>/dev/null; do
        if [ -t 1 ] || [ $((SECONDS - shown)) -ge $seconds_between_lines ]; then
            text=$("$far" "$log" || true)
            text="run: $what${text:+: $text}, $SECONDS s"
            if [ -t 1 ]; then printf '\r%s\033[K' "$text"; else echo "$text"; fi
            shown=$SECONDS
        fi
    done
}

# watched WHAT FAR LOG COMMAND...: runs the command, appends its output to LOG and shows how far it is.
# The command stays in the foreground, so that Ctrl-C ends it.
watched() {
    local what=$1 far=$2 log=$3 code=0 watcher
    shift 3
    if [ -t 1 ]; then printf 'run: %s' "$what"; else echo "run: $what"; fi
    watch "$what" "$far" "$log" &
    watcher=$!
    "$@" >>"$log" 2>&1 </dev/null || code=$?
    kill "$watcher" 2>/dev/null || true
    wait "$watcher" 2>/dev/null || true
    [ ! -t 1 ] || echo
    return "$code"
}

# passed_on WHAT: copies standard input to standard output, and prints a line when nothing came for some seconds. It
# counts the lines that end with a test's number, as ctest prints them.
passed_on() {
    local what=$1 line part="" far="" code
    SECONDS=0
    while true; do
        code=0
        IFS= read -r -t $seconds_between_lines line || code=$?
        part+=$line
        [[ ! $part =~ ^\ *([0-9]+)/([0-9]+)\ Test ]] || far=": ${BASH_REMATCH[1]} of ${BASH_REMATCH[2]} tests done"
        if [ "$code" -eq 0 ]; then
            printf '%s\n' "$part"
            part=""
        elif [ "$code" -gt 128 ]; then # nothing came
            echo "run: still $what$far, $SECONDS s"
        else
            break
        fi
    done
    printf '%s' "$part"
}
