#!/bin/bash
# Checks that the entry script shows how far it is, in a small project whose steps wait until the test has seen the line
# about them. A script that stays silent runs into the test's time limit.
#   check_progress.sh PROJECT
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
project="$folder/a project"
mkdir -p "$project/tools" "$folder/bin"
cp "$1/run" "$project/run"
cp -r "$1/tools/run" "$project/tools/run"
broken=0

cat >"$project/CMakePresets.json" <<'END'
{ "version": 6,
  "configurePresets": [
    { "name": "host", "generator": "Ninja", "binaryDir": "${sourceDir}/build/${presetName}" } ],
  "testPresets": [ { "name": "host", "configurePreset": "host" }, { "name": "host-all", "configurePreset": "host" } ] }
END
cat >"$project/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(progress LANGUAGES NONE)
option(DTV_BUILD_TESTS "" ON)
add_custom_command(OUTPUT quick COMMAND ${CMAKE_COMMAND} -E touch quick)
add_custom_command(OUTPUT slow COMMAND wait_until_seen slow DEPENDS quick)
add_custom_target(product DEPENDS slow)
add_custom_target(tests ALL COMMAND ${CMAKE_COMMAND} -E touch tests_are_built)
add_dependencies(tests product)
enable_testing()
add_test(NAME Quick COMMAND ${CMAKE_COMMAND} -E true)
add_test(NAME Slow COMMAND wait_until_seen)
set_tests_properties(Slow PROPERTIES DEPENDS Quick)
install(FILES ${CMAKE_BINARY_DIR}/slow DESTINATION share)
set(CPACK_GENERATOR TGZ)
include(CPack)
END
# wait_until_seen [FILE]: ends when the test has seen the line that it waits for.
cat >"$folder/bin/wait_until_seen" <<'END'
#!/bin/sh
until [ -e "$SEEN" ]; do sleep 0.1; done
[ -z "$1" ] || : >"$1"
END
# Pretends that all packages but those in MISSING are installed.
cat >"$folder/bin/dpkg-query" <<'END'
#!/bin/sh
shift 2
for package in "$@"; do
    case " $MISSING " in
    *" $package "*) ;;
    *) echo "ii  $package" ;;
    esac
done
END
# Pretends to install.
cat >"$folder/bin/apt-get" <<'END'
#!/bin/sh
echo "Get:1 a package list"
case "$*" in
*--assume-no*)
    echo "0 upgraded, 61 newly installed, 0 to remove and 0 not upgraded."
    echo "Need to get 71.3 MB of archives."
    echo "After this operation, 224 MB of additional disk space will be used."
    exit 1
    ;;
*install*) ;;
*) exit 0 ;;
esac
echo "0 upgraded, 61 newly installed, 0 to remove and 0 not upgraded."
for number in 1 2 3; do echo "Get:$number some package"; done
exec wait_until_seen
END
printf '#!/bin/sh\necho 0\n' >"$folder/bin/id"
chmod +x "$folder/bin"/*
export PATH="$folder/bin:$PATH" SEEN="$folder/seen" MISSING=""
unset DTV_UNSTEADY_LIST

# shows LINE COMMAND...: runs the command, whose steps wait until LINE, a pattern, is in the output.
shows() {
    local line=$1 code=0
    shift
    rm -f "$SEEN"
    : >"$folder/out"
    "$@" >"$folder/out" 2>&1 </dev/null &
    until grep -qE "$line" "$folder/out" || ! kill -0 $! 2>/dev/null; do
        sleep 0.1
    done
    touch "$SEEN"
    wait $! || code=$?
    if [ "$code" -ne 0 ] || ! grep -qE "$line" "$folder/out"; then
        echo "$*: exit code $code, or no line \"$line\":"
        cat "$folder/out"
        broken=1
    fi
}

# has_no_tests WHEN
has_no_tests() {
    if [ -e "$project/build/host/tests_are_built" ]; then
        echo "run package built the tests$1"
        broken=1
    fi
}

shows '^run: building \(host\): 1 of 2, [0-9]+ s$' "$project/run" package
has_no_tests ""
shows '^run: still testing \(host\): 1 of 2 tests done, [0-9]+ s$' "$project/run" test
rm "$project/build/host/"{tests_are_built,quick,slow}
shows '^run: building \(host\): 1 of 2, [0-9]+ s$' "$project/run" package
has_no_tests " after run test"

# On a terminal one line is written again and again.
rm "$project/build/host/"{quick,slow}
shows $'\rrun: building \\(host\\): 1 of 2, [0-9]+ s' script -qec "'$project/run' package" /dev/null

export MISSING="g++ cmake"
shows '^run: installing packages: 3 of 61 downloaded, [0-9]+ s$' "$project/run" package
grep -qx 'run: missing packages: cmake g++' "$folder/out" || broken=1
grep -qx 'run: 61 packages, 71.3 MB to download, 224 MB on disk' "$folder/out" || broken=1
exit $broken
