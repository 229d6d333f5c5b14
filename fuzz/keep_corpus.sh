#!/usr/bin/env bash
# Adds to fuzz/corpus/NAME what `./run fuzz` has learnt: the fewest short inputs that reach the code which neither the
# seeds nor the corpus reach.
#   keep_corpus.sh [NAME...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

folder=$PWD/build/fuzz
known=$(mktemp -d)
trap 'rm -rf "$known"' EXIT
mapfile -t all < <(basename -s .cpp fuzz/targets/*.cpp)
[ $# -gt 0 ] || set -- "${all[@]}"
for name in "$@"; do
    kept=fuzz/corpus/$name
    mkdir -p "$kept" "$known/$name"
    cp "$folder/fuzz/seeds/$name"/* "$known/$name"
    find "$kept" -type f -exec cp {} "$known/$name" \;
    before=$(ls "$known/$name")
    "$folder/bin/fuzz_$name" -set_cover_merge=1 -use_counters=0 -max_len=1024 "$known/$name" "$folder/corpus/$name" \
        2>"$known/log" || { tail "$known/log" >&2 && exit 1; }
    comm -13 <(echo "$before") <(ls "$known/$name") | while read -r new; do
        cp "$known/$name/$new" "$kept"
    done
    echo "$name: $(find "$kept" -type f | wc -l) inputs"
done
