#!/usr/bin/env bash
# Counts the instructions of the television's build for a question and its answer, and for a section, in the browser and
# in the service. The emulator says each instruction that it runs; the difference between few and many leaves out start
# and end.
#   count_instructions.sh BUILD   a build of preset tv-arm with -DDTV_BUILD_BENCH=ON
set -euo pipefail

build=$(realpath "$1")
sysroot=$build/../tv-arm-sysroot
libraries=$sysroot/usr/lib/arm-linux-gnueabihf:$sysroot/lib/arm-linux-gnueabihf:/usr/arm-linux-gnueabihf/lib
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# emulated NAME PROGRAM [ARGUMENT...]: writes the number of instructions to the file NAME when the program has ended.
emulated() {
    local name=$1 program=$2
    shift 2
    rm -f "$folder/$name.log"
    mkfifo "$folder/$name.log"
    grep -c '^Trace' <"$folder/$name.log" >"$folder/$name" &
    echo $! >"$folder/$name.counter"
    exec qemu-arm -L /usr/arm-linux-gnueabihf -E "LD_LIBRARY_PATH=$libraries" -singlestep -d exec,nochain \
        -D "$folder/$name.log" "$build/bin/$program" "$@"
}

# counts WHAT COUNT BYTES: the instructions of browser and service.
counts() {
    local service
    export DTV_RUN_DIR=$folder/run DTV_LOG_LEVEL=off
    emulated service answering_service 0 "$3" &
    service=$!
    (emulated browser asking_browser "$1" "$2")
    kill "$service"
    wait "$service" || true
    for name in browser service; do
        while kill -0 "$(cat "$folder/$name.counter")" 2>/dev/null; do sleep 0.1; done
    done
    echo "$(cat "$folder/browser") $(cat "$folder/service")"
}

# each TITLE WHAT FEW MANY BYTES
each() {
    local few many
    read -ra few <<<"$(counts "$2" "$3" "$5")"
    read -ra many <<<"$(counts "$2" "$4" "$5")"
    echo "$1: browser $(((many[0] - few[0]) / ($4 - $3))), service $(((many[1] - few[1]) / ($4 - $3)))"
}

each "question and answer" questions 100 600 0
each "section of 1024 B" sections 100 2100 1024
each "section of 4096 B" sections 100 2100 4096
