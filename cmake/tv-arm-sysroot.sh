#!/usr/bin/env bash
# Fills a folder with what the 32-bit ARM build needs besides Debian's cross compiler: unpacked armhf packages, and
# links to headers that are the same on every machine. It changes nothing outside the folder; apt uses package lists in
# it.
#   tv-arm-sysroot.sh FOLDER
set -euo pipefail
folder=$1

packages=(
    libuuid1 uuid-dev                      # session names
    zlib1g zlib1g-dev                      # compressed transport streams
    libedit2 libedit-dev libbsd0 libmd0 libtinfo6 # dvbshell's prompt, and what libedit needs
)
# The cross compiler's C library has no character tables, which broadcast texts need. Take them from this package.
tables_package=libc6
tables=./usr/lib/arm-linux-gnueabihf/gconv
# Headers without machine code, from the packages that the host build needs anyway.
headers=(boost bitstream nlohmann valijson)

stamp=$folder/complete-3 # change the number when the list above changes
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
# Ignore a list that cannot be downloaded. The download of the packages shows whether the others suffice.
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
