#!/bin/sh
# Compares the library and the public classes with those of the last release. Nothing that release offered may be gone or
# changed, and nothing that it did not need may be needed: a telephone and its applications go on with a new library.
# Usage: check_release.sh ROOT LIBRARY SURFACE_LIBRARY NM [write VERSION]
#
# The record of a release is tests/abi/release: required_symbols.txt, library.abi (exported symbols), interfaces.abi.gz
# (classes). suppressions.abignore lists the changes that are permitted, each with its reason.
set -eu
root=${1%/} library=$2 surface=$3 nm=$4
record=$root/tests/abi/release
found=$(mktemp -d)
trap 'rm -rf "$found"' EXIT
export LC_ALL=C

# Versioned symbols belong to the standard libraries.
$nm -D --undefined-only "$library" | awk '$1 == "U" && $2 !~ /@/ { print $2 }' | sort -u >"$found/required"

if [ "${5:-}" = write ]; then
    # The record names no folder of the machine that wrote it.
    describe() { abidw --no-show-locs --no-parameter-names --no-comp-dir-path --no-corpus-path --no-elf-needed "$1" |
        sed "s|path='$root/|path='|"; }
    strip -o "$found/library.so" "$library"
    mkdir -p "$record"
    { echo "# Every symbol that version $6 imports from the program that loads it."; cat "$found/required"; } \
        >"$record/required_symbols.txt"
    describe "$found/library.so" >"$record/library.abi"
    describe "$surface" | gzip -9n >"$record/interfaces.abi.gz"
    # What follows the first empty line is about the former release.
    sed -i '/^$/,$d' "$record/suppressions.abignore"
    exit
fi

result=0
grep -v '^#' "$record/required_symbols.txt" | comm -13 - "$found/required" >"$found/new"
if [ -s "$found/new" ]; then
    echo "needed, but not by the last release:" >&2
    c++filt <"$found/new" >&2
    result=1
fi

suppressions=$record/suppressions.abignore
if awk '/^\[/ && before !~ /^#/ { exit 1 } { before = $0 }' "$suppressions"; then :; else
    echo "$suppressions: an entry has no reason before it" >&2
    result=1
fi
gzip -dc "$record/interfaces.abi.gz" >"$found/interfaces.abi"
for pair in "$record/library.abi $library" "$found/interfaces.abi $surface"; do
    # Its words are two paths.
    # shellcheck disable=SC2086
    abidiff --harmless --no-added-syms --suppressions "$suppressions" $pair || result=1
done
exit $result
