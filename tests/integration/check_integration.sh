#!/bin/bash
# Does what docs/integrating.md tells a set maker to do, with a platform that shares nothing with the desktop's: builds the
# SDK, the library against it, installs, builds a consumer against what was installed, and runs it.
#   check_integration.sh PROJECT CMAKE EMULATOR_WORDS CMAKE_ARGUMENT...
set -euo pipefail
project=$1 cmake=$2
read -r -a emulator <<<"$3"
shift 3

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
here=$project/tests/integration

# quietly COMMAND...: its output only when it fails
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
    -DDTV_WERROR=ON "$@"
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

# The pkg-config file gives the same flags to those who do not use CMake.
flags=$(PKG_CONFIG_PATH="$folder/kit/lib/pkgconfig" pkg-config --cflags --libs browserdvbapi)
echo "pkg-config: ${flags//$folder/…}"
case $flags in
*"/include/browserdvbapi"*"-lbrowserdvbapi"*) ;;
*) exit 1 ;;
esac

# A folder that is no SDK is refused by what it lacks.
if "$cmake" -G Ninja -S "$project" -B "$folder/none" -DDTV_PLATFORM_SDK="$folder" "$@" >"$folder/log" 2>&1; then
    echo "a folder that is no SDK was taken for one"
    exit 1
fi
tr -s ' \n' ' ' <"$folder/log" >"$folder/line"
grep -q 'frame/process_member.h is not there' "$folder/line"
