#!/bin/bash
# Follows docs/integrating.md with a platform that shares no code with the desktop's: builds an SDK, builds and installs
# the library against it, then builds a consumer against the installed files and runs it.
#   check_integration.sh PROJECT CMAKE EMULATOR_WORDS CMAKE_ARGUMENT...
set -euo pipefail
project=$1 cmake=$2
read -r -a emulator <<<"$3"
shift 3

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
here=$project/tests/integration

# quietly COMMAND...: prints the command's output only when it fails.
quietly() {
    "$@" >"$folder/log" 2>&1 || {
        echo "failed: $*"
        cat "$folder/log"
        exit 1
    }
}

build() {
    local source=$1 build=$2
    shift 2
    quietly "$cmake" -G Ninja -S "$source" -B "$build" "$@"
    quietly "$cmake" --build "$build"
}

build "$here/minimal_platform" "$folder/platform" "$@"
quietly "$cmake" --install "$folder/platform" --prefix "$folder/sdk"

build "$project" "$folder/library" -DDTV_PLATFORM_SDK="$folder/sdk" -DDTV_PLATFORM_LIBRARIES=tinyplatform \
    -DDTV_BUILD_SHELL=ON -DDTV_WERROR=ON "$@"
quietly "$cmake" --install "$folder/library" --prefix "$folder/kit"
(cd "$folder/kit" && find . ! -type d | sort)
"${READELF:-readelf}" -dW "$folder/kit/lib/libbrowserdvbapi.so" >"$folder/dynamic"
if grep -q libdtvplatform "$folder/dynamic"; then
    echo "the library needs the desktop's platform"
    exit 1
fi

build "$here/consumer" "$folder/consumer" -Dbrowserdvbapi_DIR="$folder/kit/lib/cmake/browserdvbapi" \
    -DTINY_SDK="$folder/sdk" "$@"
for run in 1 2 3; do
    echo "run $run"
    "${emulator[@]}" "$folder/consumer/consumer"
done

# The browser host that the checklists use must run on that platform too.
cp "$folder/sdk/lib/libtinyplatform.so" "$folder/kit/lib"
"${emulator[@]}" "$folder/kit/bin/dvbshell" --seconds 0 tune-numbers 12 1 1025 28106 0 | tee "$folder/log"
grep -qx 'tuneToService  sent' "$folder/log"

# Builds without CMake get the same flags from the pkg-config file.
flags=$(PKG_CONFIG_PATH="$folder/kit/lib/pkgconfig" pkg-config --cflags --libs browserdvbapi)
echo "pkg-config: ${flags//$folder/…}"
case $flags in
*"/include/browserdvbapi"*"-lbrowserdvbapi"*) ;;
*) exit 1 ;;
esac
grep -q '^Description: .*needs the headers of Boost' "$folder/kit/lib/pkgconfig/browserdvbapi.pc"

# refused ERROR ARGUMENT...: configuring must fail with that error, which names docs/integrating.md.
refused() {
    local error="$1; docs/integrating.md tells what an SDK holds"
    shift
    if "$cmake" -G Ninja -S "$project" -B "$folder/none" "$@" >"$folder/log" 2>&1; then
        echo "configured, but should have ended with: $error"
        exit 1
    fi
    tr -s ' \n' ' ' <"$folder/log" >"$folder/line"
    grep -qF "$error" "$folder/line" || {
        cat "$folder/log"
        echo "configuring did not end with: $error"
        exit 1
    }
}

# The error for a folder that is not an SDK names the missing file.
refused "$folder/include/frame/process_member.h is not there" -DDTV_PLATFORM_SDK="$folder" "$@"
refused "no library otherplatform is in $folder/sdk/lib" -DDTV_PLATFORM_SDK="$folder/sdk" \
    -DDTV_PLATFORM_LIBRARIES="tinyplatform;otherplatform" "$@"
