#!/bin/bash
# Makes the desktop's Debian package, unpacks it, and uses it: the demonstration must run, a browser's source must compile
# with the flags of pkg-config, and the package must depend on the packages of all libraries that its programs need.
# There is no package for a foreign processor, because a television gets the library with its firmware.
#   check_package.sh BUILD_FOLDER CPACK DEMO_SCRIPT EMULATOR_WORDS
set -euo pipefail
build=$1 cpack=$2 demo=$3 emulator=$4
if [ -n "$emulator" ]; then
    echo "no package of a foreign processor is made"
    exit 77
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

(cd "$build" && "$cpack" -B "$folder/made") >"$folder/log" 2>&1 || {
    cat "$folder/log"
    exit 1
}
package=$(echo "$folder"/made/*.deb)
dpkg-deb --field "$package" Package Version Architecture Depends
dpkg-deb --extract "$package" "$folder/root"
for file in $(cd "$build/share" && echo man/man1/*.1 bash-completion/completions/*) \
    doc/browserdvbapi/README.md doc/browserdvbapi/docs/tools.md; do
    [ -s "$folder/root/usr/share/$file" ] || { echo "the package lacks share/$file"; exit 1; }
done

# Each library that a program or library of the package needs comes with the package or with one that it depends on.
read -r -a depends < <(dpkg-deb --field "$package" Depends | sed -E 's/ *\([^)]*\)//g; s/,/ /g')
architecture=$(dpkg-architecture -q DEB_HOST_MULTIARCH)
needed=0
for file in "$folder"/root/usr/bin/* "$folder"/root/usr/lib/*.so; do
    for library in $(LC_ALL=C readelf -dW "$file" 2>/dev/null | sed -n 's/.*(NEEDED).*\[\(.*\)\].*/\1/p'); do
        needed=$((needed + 1))
        [ ! -e "$folder/root/usr/lib/$library" ] || continue
        owner=$(dpkg-query --search "*/$architecture/$library" | sed -n '1s/:.*//p')
        case " ${depends[*]} " in
        *" ${owner:-no package} "*) ;;
        *)
            echo "${file##*/} needs $library of ${owner:-no package}, but the package depends on: ${depends[*]}"
            exit 1
            ;;
        esac
    done
done
[ "$needed" -gt 10 ] # the loop has seen something

# Packing ends with an error where the packages of the needed libraries cannot be found.
if (cd "$build" && "$cpack" -B "$folder/bad" -D CPACK_DEBIAN_PACKAGE_SHLIBDEPS=OFF) >"$folder/log" 2>&1; then
    echo "a package without dependencies was made"
    exit 1
fi
grep -q "packing needs dpkg-shlibdeps" "$folder/log"
[ -z "$(find "$folder/bad" -name '*.deb')" ]
"$demo" "$folder/root/usr" "$folder/root/usr/share/dtv/sample.ts" | tail -n 7

read -r -a flags < <(PKG_CONFIG_PATH="$folder/root/usr/lib/pkgconfig" pkg-config --cflags --libs browserdvbapi)
cat >"$folder/browser.cpp" <<'SOURCE'
#include <dvb_api_interface.h>
#include <dvb_ait_section_interface.h>
#include <dvb_section_interface.h>
int main() {
    velmora::dtv::IDTVUnknown* found = nullptr;
    return DTVAPI_QueryInterface("no such interface", &found) == -1 ? 0 : 1;
}
SOURCE
c++ -std=c++17 "$folder/browser.cpp" -o "$folder/browser" "${flags[@]}" -Wl,-rpath-link,"$folder/root/usr/lib"
LD_LIBRARY_PATH="$folder/root/usr/lib" "$folder/browser"
echo "a browser of one line builds and runs"
