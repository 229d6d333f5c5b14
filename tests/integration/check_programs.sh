#!/bin/bash
# Checks what each program says about itself: help, version, manual page, completion, and its answer to a wrong option.
#   check_programs.sh BUILD_FOLDER
set -euo pipefail
build=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
broken=0

complain() {
    echo "$*"
    broken=1
}

check() {
    local name=$1 program=$build/bin/$1 page=$build/share/man/man1/$1.1 code=0 option
    [[ $("$program" --version) =~ ^"$name "[0-9]+\.[0-9]+\.[0-9]+$ ]] || complain "$name --version"
    COLUMNS=80 "$program" --help >"$folder/help"
    [[ $(head -n 1 "$folder/help") == "usage: $name"* ]] || complain "$name --help has no usage line"
    "$program" --frobnicate >"$folder/output" 2>&1 || code=$?
    printf '%s: unknown option --frobnicate\ntry: %s --help\n' "$name" "$name" >"$folder/expected"
    if [ "$code" -ne 2 ] || ! diff "$folder/expected" "$folder/output"; then
        complain "$name --frobnicate: exit code $code"
    fi
    [ -z "$(groff -ww -z -man -Tutf8 "$page" 2>&1)" ] || complain "$page: $(groff -ww -z -man -Tutf8 "$page" 2>&1)"
    groff -man -Tascii -P-c -P-b -P-u "$page" >"$folder/page"
    bash -n "$build/share/bash-completion/completions/$name" || complain "the completion of $name is no script"
    while read -r option; do
        grep -qE -- "^ +$option\b" "$folder/page" || complain "$page lacks $option"
        grep -qF -- "'$option'" "$build/share/bash-completion/completions/$name" ||
            complain "the completion of $name lacks $option"
    done < <(grep -oE '^  --[a-z-]+' "$folder/help")
}

pages=("$build"/share/man/man1/*.1)
for page in "${pages[@]}"; do
    check "$(basename "$page" .1)"
done
echo "${#pages[@]} programs"
[ "${#pages[@]}" -ge 3 ] || broken=1
exit $broken
