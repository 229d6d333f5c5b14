#!/bin/bash
# Checks the entry script with wrong arguments, with --help, and for a user who cannot install packages. It must print
# what is wrong or the verb's help, end with the right exit code, and change nothing. It runs in a temporary folder whose
# name has blanks and which has a build folder.
#   check_run.sh PROJECT
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
copy="$folder/a project"
mkdir -p "$copy/build" "$copy/tools" "$copy/tests" "$copy/fuzz/targets" "$folder/bin"
: >"$copy/one.ts"
: >"$copy/fuzz/targets/ait.cpp"
: >"$copy/fuzz/targets/rtp.cpp"
cp "$1/run" "$copy/run"
cp -r "$1/tools/run" "$1/tools/demo.sh" "$1/tools/tv.sh" "$copy/tools"
cp -r "$1/tests/bare" "$copy/tests/bare"
verbs=(demo tv test build coverage soak fuzz package format lint accept-abi bare-check clean)
broken=0

# expect CODE FIRST_LINE ARGUMENT...
expect() {
    local code=$1 line=$2 given=0
    shift 2
    (cd / && "$copy/run" "$@") >"$folder/out" 2>&1 </dev/null || given=$?
    if [ "$given" -ne "$code" ] || [ "$(head -n 1 "$folder/out")" != "$line" ]; then
        echo "run $*: exit code $given instead of $code, or another first line than \"$line\":"
        head -n 3 "$folder/out"
        broken=1
    fi
    if [ ! -d "$copy/build" ] || [ -n "$(ls -A "$copy/build")" ]; then
        echo "run $*: touched the build folder"
        broken=1
        mkdir -p "$copy/build"
    fi
}

expect 2 "run: unknown verb frobnicate" frobnicate
expect 2 "run: demo: one file at most: two.ts" demo "$copy/one.ts" two.ts
expect 2 "run: demo: unknown option --sevice" demo --sevice 1:2:3
expect 2 "run: demo: --service needs a value" demo --service
expect 1 "run: demo: no such file: /nonexistent.ts" demo /nonexistent.ts
expect 2 "run: tv: one file at most: two.ts" tv "$copy/one.ts" two.ts
expect 2 "run: tv: unknown option --sevice" tv --sevice
expect 2 "run: tv: --screenshot needs a value" tv --screenshot
expect 2 "run: tv: --application needs an HTTP URL: file:///page.html" tv --application file:///page.html
expect 1 "run: tv: no such file: /nonexistent.ts" tv /nonexistent.ts
expect 2 "run: --preset needs a name" test --preset
expect 2 "run: unknown preset frobnicate" test --preset frobnicate
expect 2 "run: unknown preset frobnicate" test --preset=frobnicate
expect 2 "run: build takes --preset NAME" build frobnicate
expect 2 "run: build takes --preset NAME" build --preset
expect 2 "run: unknown preset frobnicate" build --preset frobnicate
expect 2 "run: lint takes --all" lint extra
expect 2 "run: lint takes --all" lint --all extra
expect 2 "run: soak takes MINUTES: long" soak long
expect 2 "run: soak takes MINUTES: 4" soak 3 4
expect 2 "run: fuzz: unknown fuzzer frobnicate; there are: ait rtp" fuzz frobnicate
expect 2 "run: fuzz: not a number of seconds: 0" fuzz rtp 0
expect 2 "run: fuzz: not a number of seconds: 5m" fuzz 5m
expect 2 "run: fuzz takes a name and a number of seconds, not also 5" fuzz rtp 60 5
for verb in help package format accept-abi clean; do
    expect 2 "run: $verb takes no argument: extra" "$verb" extra
done
(cd / && "$copy/run") >"$folder/out" || broken=1
for verb in "${verbs[@]}"; do
    if [ "$(grep -c "./run $verb\b" "$folder/out")" -ne 1 ]; then
        echo "run: $verb is not listed in one line"
        broken=1
    fi
    expect 0 "$(grep "./run $verb\b" "$folder/out" | sed -E 's/^(usage:)? +/usage: /; s/  .*//')" "$verb" --help
    (cd / && "$copy/run") >"$folder/out"
done
expect 0 "usage: ./run test [--preset NAME] [--all] [--browser] [ctest arguments]" test --preset asan -h

# A machine without any of the packages, and a user who may not use sudo.
cat >"$folder/bin/dpkg-query" <<'END'
#!/bin/sh
exit 1
END
cat >"$folder/bin/id" <<'END'
#!/bin/sh
echo 1000
END
cp "$folder/bin/dpkg-query" "$folder/bin/sudo"
chmod +x "$folder/bin"/*
export PATH="$folder/bin:$PATH"
for verb in demo test package; do
    expect 1 "run: packages are missing and this user cannot install them; please run:" "$verb"
    sed -n 2p "$folder/out" >"$folder/command_$verb"
    cmp "$folder/command_demo" "$folder/command_$verb" || broken=1
done
for package in cmake libgtest-dev dpkg-dev file; do
    if ! grep -qw -- "$package" "$folder/command_demo"; then
        echo "the command for the administrator lacks $package: $(cat "$folder/command_demo")"
        broken=1
    fi
done
exit $broken
