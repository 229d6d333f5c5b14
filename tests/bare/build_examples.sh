#!/bin/bash
# Builds the installed examples with CMake and with pkg-config, as an ordinary user in a bare system.
#   build_examples.sh EXAMPLES
set -euo pipefail
cp -r "$1" examples
cmake -S examples -B build
cmake --build build
for source in examples/*.cpp; do
    # shellcheck disable=SC2046 # one word a flag
    c++ -std=c++17 "$source" -o "${source##*/}.out" $(pkg-config --cflags --libs browserdvbapi)
    echo "built ${source##*/} with pkg-config"
done
