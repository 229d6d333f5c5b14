#!/usr/bin/env bash
# Tries what README.md tells a new user, in bare Debian systems that contain nothing but the packages that Debian cannot
# do without. It prints how long each command took and how long it was silent.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
project=$(cd "$here/../.." && pwd)
release=bookworm
folder=$project/build/bare
quick=no
most_silence=5000 # milliseconds
failed=0
rows=()

fail() {
    echo "bare-check: $*" >&2
    exit 1
}

usage() {
    cat <<TEXT
usage: ./run bare-check [--quick] [--dir FOLDER]
Clones the last commit into bare Debian systems and runs the README's commands there, as root and as an ordinary user.
Then it installs the package in another system and uses it. It needs root, and downloads about 1 GB.
  --quick            leave out ./run test and ./run tv
  --dir FOLDER       make the systems and logs in FOLDER instead of build/bare; FOLDER/base.tar is kept for the next run
TEXT
}

# shellcheck source=tests/bare/roots.sh
. "$here/roots.sh"

# stamp START: puts the milliseconds since START, in microseconds, before each line, and adds a last line.
stamp() {
    local line
    while IFS= read -r line || [ -n "$line" ]; do
        echo "$(((${EPOCHREALTIME/[.,]/} - $1) / 1000)) $line"
    done
    echo "$(((${EPOCHREALTIME/[.,]/} - $1) / 1000)) (end)"
}

# add_row RESULT WHAT MILLISECONDS SILENCE CPU_SECONDS
add_row() {
    rows+=("$(printf '%-52s %8s %8s %8s   %s' "$2" "$3" "$4" "$5" "$1")")
    [ "$1" = passed ] || failed=1
}

tenths() {
    awk -v t="$1" 'BEGIN { printf "%.1f", t / 1000 }'
}

# step WHAT LOG CODE NAME USER COMMAND: runs the command, checks its exit code and that ./run was never silent for long.
step() {
    local what=$1 log=$folder/$2.log wanted=$3 code=0 result=passed silence
    shift 3
    echo "bare-check: $what"
    in_root "$1" "$2" "TIMEFORMAT='processor seconds: %U %S'; time timeout 3600 $3" 2>&1 </dev/null |
        stamp "${EPOCHREALTIME/[.,]/}" >"$log" || code=$?
    silence=$(awk '{ if ($1 - last > most) most = $1 - last; last = $1 } END { print most + 0 }' "$log")
    if [ "$code" -ne "$wanted" ]; then
        result="exit code $code"
        tail -n 30 "$log"
    elif [[ $what == ./run* ]] && [ "$silence" -gt $most_silence ]; then
        result="silent for too long"
    fi
    add_row "$result" "$what" "$(tenths "$(tail -n 1 "$log" | cut -d ' ' -f 1)")" "$(tenths "$silence")" \
        "$(awk '/processor seconds:/ { print $4 + $5 }' "$log")"
}

# clone NAME FOLDER USER: puts a fresh clone of the last commit into the system.
clone() {
    git clone --quiet --no-hardlinks "$project" "$folder/$1/$2/project"
    in_root "$1" root "chown -R $3: /$2/project"
}

prepare() {
    [ "$(id -u)" -eq 0 ] || fail "making bare systems needs root"
    command -v apt-get >/dev/null || fail "making bare systems needs a Debian machine with apt"
    unshare --mount --pid --fork true 2>/dev/null || fail "this machine does not allow mounts of one's own"
    if ! command -v debootstrap >/dev/null; then
        echo "bare-check: installing debootstrap"
        {
            apt-get -qq update
            apt-get -qq install -y --no-install-recommends debootstrap
        } >/dev/null || fail "apt-get could not install debootstrap"
    fi
    mkdir -p "$folder"
    folder=$(cd "$folder" && pwd)
    # The systems in the folder are removed and made anew, so it must be the check's own.
    [ -e "$folder/of-bare-check" ] || [ -z "$(ls -A "$folder")" ] ||
        fail "$folder has other files; give a new or an empty folder"
    touch "$folder/of-bare-check"
    # Every process in a system holds the lock, so no run removes a system that another still uses.
    exec 9>"$folder/lock"
    flock --nonblock 9 || fail "another check uses $folder"
    [ -z "$(git -C "$project" status --porcelain)" ] || echo "bare-check: only what is committed is checked"
    make_base
}

# The commands of the README's beginning, for example "./run demo".
readme_commands() {
    grep -oE '^(    |`)\./run [a-z-]+' "$project/README.md" | grep -oE '\./run .*' | awk '!seen[$0]++'
}

# Runs the README's commands as root, on a machine without the packages.
check_root() {
    local command verb start cloned channel programs
    new_root root
    start=${EPOCHREALTIME/[.,]/}
    clone root root root
    cloned=$(((${EPOCHREALTIME/[.,]/} - start) / 1000))
    for command in $(readme_commands | tr ' ' :); do
        verb=${command#*:}
        case $quick:$verb in
        yes:test | *:tv) continue ;;
        esac
        step "./run $verb, as root" "root-$verb" 0 root root "project/run $verb"
    done
    # Without a screenshot it ends only when told.
    [ "$quick" = yes ] || step "./run tv --screenshot, as root" root-tv 0 root root "project/run tv --screenshot /tmp/tv.png"
    channel=$(awk '/ channel .*ccid:/ { print $1; exit }' "$folder/root-demo.log")
    add_row "$([ -n "$channel" ] && echo passed || echo "none")" "from clone to first channel" \
        "$(tenths $((cloned + ${channel:-0})))" "" ""
    programs=$(grep -oE 'build/host/bin/[a-z]+' "$project/README.md" | sort -u | sed 's:.*:project/& --help:' | paste -s -d ';')
    step "each program of the README, --help" root-programs 0 root root "bash -ec '$programs'"
}

# Runs the demonstration as a user who cannot install anything, and types the command that it prints as root.
check_user() {
    local advice verb
    new_root user
    clone user home/viewer viewer
    step "./run demo, as a user, without packages" user-refused 1 user viewer "project/run demo"
    advice=$(sed -nE 's/^[0-9]+   (apt-get .*)/\1/p' "$folder/user-refused.log")
    [ -n "$advice" ] || advice="echo no command was printed; false"
    step "the command that it prints" user-advice 0 user root "bash -c '$advice'"
    for verb in demo package; do
        step "./run $verb, as a user, with packages" "user-$verb" 0 user viewer "project/run $verb"
    done
}

# Installs the package in a system of its own and uses it there.
check_package() {
    local package before examples
    package=$(find "$folder/root/root/project/build/host" -maxdepth 1 -name '*.deb')
    [ -n "$package" ] || {
        add_row "none" "the package" "" "" ""
        return 0
    }
    new_root installed
    cp "$package" "$here/use_installed.sh" "$here/build_examples.sh" "$folder/installed/home/viewer/"
    before=$(packages_of installed)
    step "apt-get install ./${package##*/}" installed-install 0 installed root \
        "bash -c 'apt-get update && apt-get install -y --no-install-recommends /home/viewer/${package##*/}'"
    echo "bare-check: the package has $(du -k "$package" | cut -f 1) KiB and brings $(($(packages_of installed) - before)) packages"
    step "the installed programs" installed-programs 0 installed viewer ./use_installed.sh
    examples=$(find "$folder/installed/usr/share" -type d -name examples -path '*browserdvbapi*' -printf '/usr/share/%P\n')
    if [ -z "$examples" ]; then
        echo "bare-check: the package has no examples yet"
        return 0
    fi
    in_root installed root "apt-get -qq install -y --no-install-recommends g++ make cmake pkgconf libboost-dev" \
        >"$folder/installed-compiler.log" 2>&1 || fail "apt-get could not install the compiler"
    step "the installed examples" installed-examples 0 installed viewer "./build_examples.sh $examples"
}

packages_of() {
    grep -c '^Package: ' "$folder/$1/var/lib/dpkg/status"
}

while [ $# -gt 0 ]; do
    case $1 in
    --help | -h)
        usage
        exit 0
        ;;
    --quick) quick=yes ;;
    --dir)
        [ $# -ge 2 ] || fail "--dir needs a folder"
        folder=$2
        shift
        ;;
    *)
        echo "bare-check: unknown argument $1" >&2
        usage >&2
        exit 2
        ;;
    esac
    shift
done
prepare
before=$(tar -xOf "$folder/base.tar" ./var/lib/dpkg/status | grep -c '^Package: ')
check_root
echo "bare-check: the README's commands installed $(($(packages_of root) - before)) packages beside Debian's $before"
check_user
check_package
echo
printf '%-52s %8s %8s %8s\n' "" seconds silence "CPU s"
printf '%s\n' "${rows[@]}"
echo
echo "logs: $folder/*.log"
exit $failed
