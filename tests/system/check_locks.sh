#!/bin/bash
# Checks that code takes locks with locks::Lock or locks::PosixLock, which clang understands. With any other guard it
# would compile unchecked.
#   check_locks.sh PROJECT
set -euo pipefail
cd "$1"

# The helpers for browsers and the examples are compiled by browsers, the minimal platform stands for a set maker's, and
# waits_for_lock.h asks from outside whether a lock is free.
others='^(locks/|src/.*/include/|examples/|tests/integration/minimal_platform/|tests/support/waits_for_lock.h)'
guards='(std::(lock_guard|unique_lock|scoped_lock|shared_lock)|boost::[a-z_:]*lock)\b|\bltGuard [a-z]\w*\('

sources=$(find bus platform frame-genrpc browser src text command_line si dtvservice tools tests locks examples \
    \( -name '*.h' -o -name '*.cpp' \) -print | grep -vE "$others")
count=$(wc -l <<<"$sources")
echo "$count files looked at"
if [ "$count" -lt 100 ] || xargs grep -nE "$guards" <<<"$sources"; then
    exit 1
fi
