#!/bin/bash
# Checks the table of faults: every row names tests, every test exists, and no row leaves a browser without an end.
#   check_reliability.sh PROJECT
set -euo pipefail
cd "$1"
document=docs/reliability.md
failed=0

fail() {
    echo "$document: $1"
    failed=1
}

# The tests of the sources as "Suite.Name", one on each line.
tests=$(
    find tests -name '*_test.cpp' -exec cat {} + | tr '\n' ' ' |
        grep -oE '\bTEST(_F|_P)?\( *[A-Za-z0-9_]+, *[A-Za-z0-9_]+' | sed -E 's/TEST(_F|_P)?\( *([A-Za-z0-9_]+), *(.*)/\2.\3/'
    grep -rhoE --include=CMakeLists.txt 'add_test\(NAME [A-Za-z0-9_.]+' tests | sed 's/.* //'
)

rows=0
while IFS='|' read -r _ fault sees lost long held _; do
    rows=$((rows + 1))
    # shellcheck disable=SC2016 # backquotes of Markdown
    named=$(grep -oE '`[A-Za-z0-9_]+\.[A-Za-z0-9_]+`' <<<"$held" | tr -d '`' || true)
    [ -n "$named" ] || fail "no test holds the row \"$fault\""
    for test in $named; do
        grep -qxF "$test" <<<"$tests" || fail "there is no test $test"
    done
    { [ -n "${lost// /}" ] && [ -n "${long// /}" ]; } || fail "the row \"$fault\" has an empty field"
    if grep -qwE 'hangs|ends' <<<"$sees" && ! grep -q 'setAudioSource' <<<"$sees"; then
        fail "the row \"$fault\" leaves the browser without an end:$sees"
    fi
done < <(grep '^|' $document | grep -vE '^\|( fault |---)')
[ "$rows" -gt 0 ] || fail "there is no row"
exit $failed
