#!/bin/bash
# Checks how `run test` handles failed tests, in a small project whose tests are scripts. It must run each failed test
# once more, alone. A test that passes then is reported at the end; a test that fails again fails the run.
#   check_unsteady.sh PROJECT
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
project="$folder/a project"
mkdir -p "$project/tools" "$folder/bin"
cp "$1/run" "$project/run"
cp -r "$1/tools/run" "$project/tools/run"
broken=0

# Pretend that all packages are installed.
cat >"$folder/bin/dpkg-query" <<'END'
#!/bin/sh
shift 2
printf 'ii  %s\n' "$@"
END
# fails_until.sh NAME RUNS HANGS: fails or hangs in the first RUNS runs. A file counts the runs.
cat >"$project/fails_until.sh" <<'END'
#!/bin/sh
echo run >>"runs_$1"
[ "$(wc -l <"runs_$1")" -le "$2" ] || exit 0
[ "$3" = no ] || exec sleep 60
exit 1
END
chmod +x "$folder/bin/dpkg-query" "$project/fails_until.sh"
cat >"$project/CMakePresets.json" <<'END'
{ "version": 6,
  "configurePresets": [
    { "name": "host", "generator": "Ninja", "binaryDir": "${sourceDir}/build/${presetName}" },
    { "name": "asan", "inherits": "host" } ],
  "testPresets": [
    { "name": "host-all", "configurePreset": "host", "execution": { "jobs": 4, "noTestsAction": "error" } },
    { "name": "host", "inherits": "host-all", "filter": { "exclude": { "label": "^elsewhere$" } } },
    { "name": "asan-all", "configurePreset": "asan" },
    { "name": "asan", "inherits": "asan-all" } ] }
END
export PATH="$folder/bin:$PATH"
unset DTV_UNSTEADY_LIST

# tests NAME:RUNS_THAT_FAIL[:hangs]...: replaces the project's tests.
tests() {
    rm -rf "$project/build"
    {
        echo 'cmake_minimum_required(VERSION 3.25)'
        echo 'project(tests LANGUAGES NONE)'
        echo 'option(DTV_BUILD_TESTS "" ON)'
        echo 'enable_testing()'
        local name runs hangs
        while IFS=: read -r name runs hangs; do
            echo "add_test(NAME $name COMMAND \${CMAKE_SOURCE_DIR}/fails_until.sh $name $runs ${hangs:-no})"
            # Only hanging tests get a short limit, so that the others pass on a busy machine too.
            [ -z "$hangs" ] || echo "set_tests_properties($name PROPERTIES TIMEOUT 10)"
        done < <(printf '%s\n' "$@")
        # shellcheck disable=SC2016 # a variable of CMake
        echo 'add_test(NAME Elsewhere COMMAND ${CMAKE_COMMAND} -E true)'
        echo 'set_tests_properties(Elsewhere PROPERTIES LABELS elsewhere)'
    } >"$project/CMakeLists.txt"
}

# expect WHAT CODE LAST_LINE ARGUMENT...: runs `run test`, checks exit code and last line, keeps the output in
# $folder/out.
expect() {
    local what=$1 code=$2 line=$3 given=0
    shift 3
    "$project/run" test "$@" >"$folder/out" 2>&1 </dev/null || given=$?
    [ "$given" -eq "$code" ] || complain "$what: exit code $given instead of $code"
    # shellcheck disable=SC2053 # the line may be a pattern
    [[ "$(tail -n 1 "$folder/out")" == $line ]] || complain "$what: another last line than \"$line\""
}

complain() {
    echo "$1; the output:"
    cat "$folder/out"
    broken=1
}

has_line() {
    grep -qxF "$1" "$folder/out" || complain "no line \"$1\""
}

lacks() {
    ! grep -qF "$1" "$folder/out" || complain "there is a \"$1\""
}

runs_of() {
    local given
    given=$(wc -l <"$project/build/host/runs_$1")
    [ "$given" -eq "$2" ] || complain "$1 ran $given times instead of $2"
}

tests Steady:0
expect "a run without failures" 0 "Total Test time*"
has_line "100% tests passed, 0 tests failed out of 1"
lacks unsteady
expect "a run of everything" 0 "Total Test time*" --all
has_line "100% tests passed, 0 tests failed out of 2"

tests Steady:0 Sometimes:1 More.Often:1
expect "a run with unsteady tests" 0 "unsteady: Sometimes (failed once, passed alone), preset host"
has_line "unsteady: More.Often (failed once, passed alone), preset host"
has_line "100% tests passed, 0 tests failed out of 2"
runs_of Steady 1
runs_of Sometimes 2
expect "the run after it" 0 "Total Test time*"
lacks unsteady

tests Never:100 Sometimes:1
expect "a run with a test that fails twice" 8 "unsteady: Sometimes (failed once, passed alone), preset host"
has_line "failed: Never (failed twice), preset host"
lacks "unsteady: Never"
runs_of Never 2

tests Slow:1:hangs
expect "a run with a test that hangs once" 0 "unsteady: Slow (failed once, passed alone), preset host"

tests Many.{1..11}:1
expect "a run with too many failures" 8 "run: more than 10 tests failed; none is run again"
lacks unsteady
runs_of Many.1 1

tests Sometimes:1
export DTV_UNSTEADY_LIST="$folder/list"
: >"$DTV_UNSTEADY_LIST"
expect "the first of two runs" 0 "unsteady: Sometimes (failed once, passed alone), preset asan" --preset asan
expect "the second of two runs" 0 "unsteady: Sometimes (failed once, passed alone), preset host"
has_line "unsteady: Sometimes (failed once, passed alone), preset asan"
exit $broken
