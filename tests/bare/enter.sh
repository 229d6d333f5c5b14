#!/bin/bash
# Runs a command in a bare system. `unshare` starts it with mounts and processes of its own, so all of them end with it.
#   enter.sh ROOT USER COMMAND
set -euo pipefail
root=$1 user=$2 command=$3

mount -t proc proc "$root/proc"
mount --rbind /dev "$root/dev"
mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
home=$(sed -n "s/^$user:.*:\(.*\):[^:]*$/\1/p" "$root/etc/passwd")
environment=(HOME="$home" USER="$user" PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin)
for name in http_proxy https_proxy no_proxy; do
    [ -z "${!name:-}" ] || environment+=("$name=${!name}")
done
ids=$(sed -nE "s/^$user:[^:]*:([0-9]+:[0-9]+):.*/\1/p" "$root/etc/passwd")
# This shell stays as the first process, which has to wait for orphans.
code=0
env -i "${environment[@]}" chroot --userspec="$ids" "$root" /bin/bash -c "cd && $command" || code=$?
exit "$code"
