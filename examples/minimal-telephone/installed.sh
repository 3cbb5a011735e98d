#!/bin/sh
# Builds the example from installed files alone, through the CMake package, and runs it with the installed library.
# Usage: installed.sh BUILD_FOLDER CXX
set -eu
build=$1 cxx=$2
run=$(cd "$(dirname "$0")" && pwd)/run.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
prefix=$folder/prefix

for component in runtime development; do
    cmake --install "$build" --prefix "$prefix" --component "$component" >"$folder/log"
done
cp -r "$prefix/share/doc/communications-service/examples/minimal-telephone" "$folder/source"
{
    cmake -S "$folder/source" -B "$folder/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx"
    cmake --build "$folder/build"
} >"$folder/log" 2>&1 || { cat "$folder/log" >&2; exit 1; }

library=$(find "$prefix" -name 'libcommunications_service.so')
"$prefix/bin/telephone-check" "$library" "$folder/build/minimal-telephone"
"$run" "$folder/build/minimal-telephone" "$library"
