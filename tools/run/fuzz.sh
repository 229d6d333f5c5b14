# shellcheck shell=bash disable=SC2034,SC2154 # `run` gives and uses variables
# Builds and runs the fuzzers. `run` includes this file.

# Prints the names of the fuzzers, one on each line.
fuzzers() {
    local source
    for source in "$root"/fuzz/targets/*.cpp; do
        basename "$source" .cpp
    done
}

# The last figures of a fuzzer: executions, coverage and features.
far_fuzz() {
    awk '$1 ~ /^#[0-9]+$/ { runs = substr($1, 2); cov = ft = speed = 0
            for (i = 2; i < NF; ++i) {
                if ($i == "cov:") cov = $(i + 1)
                else if ($i == "ft:") ft = $(i + 1)
                else if ($i == "exec/s:") speed = $(i + 1) } }
        END { if (runs) printf "%d runs, %d/s, cov %d, ft %d", runs, speed, cov, ft }' "$1"
}

# fuzz_one NAME SECONDS: false if there is a finding.
fuzz_one() {
    local name=$1 folder=$root/build/fuzz log=$root/build/fuzz/$1.log findings=$root/build/fuzz/findings/$1 code=0
    local inputs=("$folder/corpus/$name" "$folder/fuzz/seeds/$name")
    mkdir -p "$findings" "${inputs[0]}"
    [ ! -d "$root/fuzz/corpus/$name" ] || inputs+=("$root/fuzz/corpus/$name")
    : >"$log"
    # Time limits of the wall clock only find what never ends: the oracles count processor time, whatever else runs.
    # Without the weights of the inputs, which take half of the time with these many small ones.
    watched "fuzzing $name" far_fuzz "$log" "$folder/bin/fuzz_$name" -max_total_time="$2" -entropic=0 -max_len=8192 \
        -timeout=1200 -report_slow_units=1200 -rss_limit_mb=3000 -dict="$folder/messages.dict" \
        -artifact_prefix="$findings/" "${inputs[@]}" || code=$?
    echo "run: $name: $(far_fuzz "$log")"
    [ "$code" -ne 0 ] || return 0
    grep -aE '^(fuzz:|==[0-9]+==|.*runtime error|SUMMARY|artifact_prefix)' "$log" || tail -n 20 "$log"
    echo "run: $name: a finding is in $findings, its report in $log"
    return 1
}

fuzz() {
    local seconds=60 known names found=() name
    mapfile -t known < <(fuzzers)
    names=("${known[@]}")
    if [ $# -gt 0 ] && [[ ! $1 =~ ^[0-9] ]]; then
        [[ " ${known[*]} " == *" $1 "* ]] || misuse "fuzz: unknown fuzzer $1; there are: ${known[*]}"
        names=("$1")
        shift
    fi
    if [ $# -gt 0 ]; then
        [[ $1 =~ ^[1-9][0-9]*$ ]] || misuse "fuzz: not a number of seconds: $1"
        seconds=$1
        shift
    fi
    [ $# -eq 0 ] || misuse "fuzz takes a name and a number of seconds, not also $1"
    need "${build_packages[@]}" "${clang_packages[@]}"
    build fuzz OFF fuzzers
    # The plain tests look for uses after return, which makes every call slower.
    export ASAN_OPTIONS=${ASAN_OPTIONS:-strict_string_checks=1:malloc_context_size=8}
    set_sanitizer_options
    for name in "${names[@]}"; do
        fuzz_one "$name" "$seconds" || found+=("$name")
    done
    [ ${#found[@]} -eq 0 ] || fail "findings: ${found[*]}"
}
