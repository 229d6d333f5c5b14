# shellcheck shell=bash disable=SC2154,SC2016 # check.sh gives the variables; apt fills in its own
# Makes bare Debian systems in folders. check.sh includes this file.

# Prints the address, the suite and the component of each Debian archive of this machine's apt for the release.
debian_archives() {
    apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
        sed -nE "s/^Debian ${release}[^ ]* //p" | sort -u
}

# Gives the system this machine's archives, proxies, certificates and name servers.
configure_apt() {
    local root=$1 file
    debian_archives | sed 's/^/deb /' >"$root/etc/apt/sources.list"
    apt-config dump | grep -E '^Acquire::((http|https|ftp)::|Check-|Retries)' >"$root/etc/apt/apt.conf.d/00machine" || true
    for file in /etc/apt/auth.conf /etc/apt/auth.conf.d /etc/ssl/certs/ca-certificates.crt; do
        [ ! -e "$file" ] || { mkdir -p "$root${file%/*}" && cp -r "$file" "$root${file%/*}"; }
    done
    cp -L /etc/resolv.conf /etc/hosts "$root/etc/"
}

# remove_root FOLDER: nothing is mounted in it but in a command's own view; look nevertheless.
remove_root() {
    if grep -qF " $1/" /proc/mounts; then
        fail "something is mounted in $1; unmount it first"
    fi
    rm -rf --one-file-system "$1"
}

# Makes the archive of the bare system, which later runs take again.
make_base() {
    local mirror
    [ ! -e "$folder/base.tar" ] || return 0
    mirror=$(debian_archives | awk -v release="$release" '$2 == release { print $1; exit }')
    [ -n "$mirror" ] || fail "this machine's apt has no archive of Debian $release"
    remove_root "$folder/base"
    echo "bare-check: making a bare Debian $release"
    debootstrap --variant=minbase "$release" "$folder/base" "$mirror" >"$folder/base.log" 2>&1 || {
        tail -n 20 "$folder/base.log" >&2
        fail "debootstrap failed"
    }
    # A bare machine has no package lists yet.
    rm -rf "$folder"/base/var/lib/apt/lists/* "$folder"/base/var/cache/apt/archives/*.deb
    tar -C "$folder/base" -cf "$folder/base.tar.new" .
    mv "$folder/base.tar.new" "$folder/base.tar"
    remove_root "$folder/base"
}

# new_root NAME: makes a system with an ordinary user named viewer.
new_root() {
    echo "bare-check: unpacking the system for $1"
    remove_root "$folder/$1"
    mkdir -p "$folder/$1"
    tar -C "$folder/$1" -xf "$folder/base.tar"
    configure_apt "$folder/$1"
    in_root "$1" root "useradd --create-home viewer"
}

# in_root NAME USER COMMAND
in_root() {
    unshare --mount --pid --fork --kill-child "$here/enter.sh" "$folder/$1" "$2" "$3"
}
