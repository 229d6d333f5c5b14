#!/bin/bash
# Checks that docs/integrating.md names, as code, each name of the platform contract that the library uses. A set maker
# can then write a platform from the document.
#   check_document.sh PROJECT
set -euo pipefail
cd "$1"
document=docs/integrating.md
library=(platform/idiom locks frame-genrpc browser src/platform_support/browserdvbapi)

# Prints sources without comments, string literals and preprocessor lines.
code() { cat "$@" | sed -E 's://.*$::; s:"[^"]*"::g; /^ *#/d'; }
words() { grep -oE '[A-Za-z_][A-Za-z0-9_]*' | sort -u; }

# Prints the names that the headers declare, without parameters, private members and one-line bodies.
declared() {
    code "$@" | tr '\n' ' ' |
        sed -E ':inner; s/\([^()]*\)//g; t inner; s/private:[^}]*(\{[^}]*\}[^}]*)*\};//g; s/\{ return [^}]*\}//g' | words
}

# Words that headers and library both use, but that are not part of the contract.
none_of_the_contract() {
    words <<'WORDS'
__attribute__ bool char class const constexpr default delete enum explicit extern int namespace nullptr operator override
protected public static struct using virtual void
std boost int32_t intptr_t pthread_mutex_t size_t string uint32_t uint8_t uintptr_t
id internal base name
WORDS
}

mapfile -t headers < <(find platform/include -name '*.h')
# The service side of the interface and the names of fields are not part of the library.
mapfile -t sources < <(find "${library[@]}" \( -name '*.h' -o -name '*.cpp' -o -name '*.inc' \) ! -name '*_stub.*' ! -path '*/fields/*')
used=$(comm -12 <(declared "${headers[@]}") <(code "${sources[@]}" | words) | comm -23 - <(none_of_the_contract))
named=$({
    sed -n '/^    /p' "$document"
    # shellcheck disable=SC2016 # backquotes of the document
    sed '/^    /d' "$document" | grep -oE '`[^`]+`'
} | words)

echo "$(wc -w <<<"$used") names of the contract are used"
[ "$(wc -w <<<"$used")" -gt 40 ] || exit 1
missing=$(comm -23 <(echo "$used") <(echo "$named"))
if [ -n "$missing" ]; then
    echo "$document does not name: $(tr '\n' ' ' <<<"$missing")"
    exit 1
fi
