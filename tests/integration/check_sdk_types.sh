#!/bin/bash
# Checks that the library does not compile against a platform whose carriers or table types have the wrong layout, and
# that the error names the type and the fault.
#   check_sdk_types.sh PROJECT COMPILER
set -euo pipefail
project=$1 compiler=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
header=frame/endian_table.h

fail() {
    echo "$*"
    cat "$folder/log"
    exit 1
}

compile() {
    "$compiler" -std=c++17 -fsyntax-only -I "$folder/include" \
        "$project/frame-genrpc/app-browserdvbservice-proxy/src/endian_tables.cpp" >"$folder/log" 2>&1
}

fresh() {
    rm -rf "$folder/include"
    cp -r "$project/tests/integration/minimal_platform/include" "$folder/include"
}

# refused CHANGE ERROR: compiling must fail with ERROR after the sed command CHANGE has edited the header.
refused() {
    fresh
    sed -E -i "$1" "$folder/include/$header"
    if cmp -s "$folder/include/$header" "$project/tests/integration/minimal_platform/include/$header"; then
        echo "the header has nothing to change with $1"
        exit 1
    fi
    if compile; then
        fail "compiled with $1"
    fi
    grep -qF "$header: $2" "$folder/log" || fail "no such error with $1: $2"
    echo "refused: $2"
}

fresh
compile || fail "the platform as it is does not compile"

string=_ovxDeserString_struct
blob=_ovxDeserBlobUint8_struct
vector=_ovxDeserVectorU8_struct
refused "/$string/,/\};/s/uint32_t length/uint64_t length/" "$string::length has to be a std::uint32_t"
refused "/$vector/,/\};/s/uint32_t count/int32_t count/" "$vector::count has to be a std::uint32_t"
refused "/$vector/,/\};/s/(std::uint8_t\* data);/\1; std::uint32_t capacity;/" \
    "$vector has to be packed and to hold nothing but count and data"
refused "/$blob/,/\};/s/std::uint8_t\* data/std::uint32_t data/" "$blob::data has to be a pointer at offset 4"
refused "s/ovxEndianKind64 = 8/ovxEndianKind64 = 5/" "the kinds have to be 1, 2, 4 and 8 by width"
refused "s/(std::uint32_t word);/\1; void* text;/" "ovxEndianEntry has to be a 32-bit word and a pointer"
refused "s/(const ovxEndianEntry\* entries);/\1; const char* name;/" "ovxEndianTable has to be a 32-bit size and a pointer"
