#!/bin/sh
# Compares the dynamic symbol table of the library with the recorded lists: its exports, and its imports from the
# program that loads it. Usage: check_symbols.sh LIBRARY EXPORTED REQUIRED [NM]
set -eu
library=$1 exported=$2 required=$3 nm=${4:-nm}
found=$(mktemp -d)
trap 'rm -rf "$found"' EXIT
export LC_ALL=C

$nm -D --defined-only "$library" | awk '{ print $3 }' | sort -u >"$found/exported"

# Versioned symbols belong to the standard libraries; tools that instrument the code add their own.
$nm -D --undefined-only "$library" | awk '$1 == "U" && $2 !~ /@/ { print $2 }' |
    grep -Ev '^(__(asan|lsan|tsan|ubsan|sanitizer|gcov|llvm)_|llvm_gc|_ZT[ISV])' | sort -u >"$found/required"

if $nm -D "$library" | awk '$2 == "u"' | grep .; then
    echo "symbols of unique binding keep the library in memory" >&2
    exit 1
fi

result=0
for list in exported required; do
    eval "recorded=\$$list"
    if ! grep -v '^#' "$recorded" | sort | diff -u --label "recorded: $recorded" --label "$library" - "$found/$list"; then
        echo "the $list symbols differ from the record" >&2
        result=1
    fi
done
exit $result
