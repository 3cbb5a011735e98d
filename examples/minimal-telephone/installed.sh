#!/bin/sh
# Builds the example from installed files alone, through the CMake package, and runs it with the installed library.
# Usage: installed.sh BUILD_FOLDER SOURCE_FOLDER CXX
set -eu
build=$1 source=$2 cxx=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
prefix=$folder/prefix

for component in runtime development; do
    cmake --install "$build" --prefix "$prefix" --component "$component" >"$folder/log"
done
mkdir "$folder/source"
cp "$source/main.cpp" "$source/CMakeLists.txt" "$folder/source/"
{
    cmake -S "$folder/source" -B "$folder/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx"
    cmake --build "$folder/build"
} >"$folder/log" 2>&1 || { cat "$folder/log" >&2; exit 1; }

library=$(find "$prefix" -name 'libcommunications_service.so')
"$prefix/bin/telephone-check" "$library" "$folder/build/minimal-telephone"
exec "$source/run.sh" "$folder/build/minimal-telephone" "$library"
