#!/usr/bin/env bash
# Puts together what the 32-bit ARM build needs beside Debian's cross compiler: the few libraries that Debian has only as
# armhf packages, unpacked into a folder, and links to headers that are the same on every machine. Nothing of the system
# is changed: packages are fetched with package lists of the folder's own.
#   tv-arm-sysroot.sh FOLDER
set -euo pipefail
folder=$1

packages=(
    libuuid1 uuid-dev                      # session names
    zlib1g zlib1g-dev                      # compressed transport streams
    libedit2 libedit-dev libbsd0 libmd0 libtinfo6 # dvbshell's prompt, and what libedit needs
)
# The C library is the cross compiler's, which comes without the character tables of broadcast texts.
tables_package=libc6
tables=./usr/lib/arm-linux-gnueabihf/gconv
# Headers without machine code, from the packages that the host build needs anyway.
headers=(boost bitstream nlohmann)

stamp=$folder/complete-2 # with another number where the list above changes
[ ! -e "$stamp" ] || exit 0
rm -rf "$folder"
mkdir -p "$folder/apt/lists/partial" "$folder/apt/cache/archives/partial" "$folder/packages" "$folder/usr/include"
folder=$(cd "$folder" && pwd)

options=(
    -o "APT::Architecture=armhf" -o "APT::Architectures::=armhf"
    -o "Dir::State::Lists=$folder/apt/lists" -o "Dir::Cache=$folder/apt/cache"
    -o "Dir::State::Status=$folder/apt/status" -o "APT::Sandbox::User="
    -o "Acquire::Languages=none" -o "Acquire::Retries=3"
)
touch "$folder/apt/status"
# A list that cannot be had leaves the others: what counts is whether the packages come.
apt-get -q "${options[@]}" update >"$folder/apt/log" 2>&1 || true
(cd "$folder/packages" && apt-get -q "${options[@]}" download "${packages[@]/%/:armhf}" "$tables_package:armhf" >>"$folder/apt/log" 2>&1) || {
    cat "$folder/apt/log" >&2
    echo "tv-arm-sysroot: apt-get could not download ${packages[*]} for armhf" >&2
    exit 1
}
for package in "$folder"/packages/*.deb; do
    case ${package##*/} in
    "$tables_package"_*) dpkg-deb --fsys-tarfile "$package" | tar --extract --directory "$folder" "$tables" ;;
    *) dpkg-deb --extract "$package" "$folder" ;;
    esac
done
for header in "${headers[@]}"; do
    ln -s "/usr/include/$header" "$folder/usr/include/$header"
done
rm -rf "$folder/apt" "$folder/packages"
touch "$stamp"
