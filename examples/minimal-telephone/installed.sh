#!/bin/sh
# Does what the page on porting says first: builds the example from installed files alone, and runs it with the installed
# library.
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
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name communications-service.pc)")
export PKG_CONFIG_PATH CMAKE_PREFIX_PATH="$prefix" PATH="$prefix/bin:$PATH"
cp -r "$prefix/share/doc/communications-service/examples/minimal-telephone" "$folder/source"
{
    cmake -S "$folder/source" -B "$folder/build" -G Ninja -DCMAKE_CXX_COMPILER="$cxx"
    cmake --build "$folder/build"
} >"$folder/log" 2>&1 || { cat "$folder/log" >&2; exit 1; }

library=$(pkg-config --variable=library communications-service)
telephone-check "$library" "$folder/build/minimal-telephone"
"$run" "$folder/build/minimal-telephone" "$library"
